#include "feed/Offer.h"

#include <algorithm>

#include "feed/FeedDate.h"

namespace Feed {

OfferDecision ChooseOffer(const Appcast& feed, const OfferContext& context) {
    OfferDecision decision;
    for (const FeedItem& item : feed.items)
        decision.newestPubDate = std::max(decision.newestPubDate, item.pubDate);
    if (feed.expires && *feed.expires < context.now) {
        decision.refused = "the feed expired on " + FormatFeedDate(*feed.expires) +
                           "; its publisher has to renew lumetta:expires";
        return decision;
    }
    if (decision.newestPubDate < context.state.newestPubDateSeen) {
        decision.refused = "the feed is older than one seen before (newest item " +
                           FormatFeedDate(decision.newestPubDate) + ", seen " +
                           FormatFeedDate(context.state.newestPubDateSeen) +
                           "): a replayed feed is not trusted";
        return decision;
    }

    const UpdateState& state = context.state;
    for (std::size_t i = 0; i < feed.items.size(); ++i) {
        const FeedItem& item = feed.items[i];
        std::string reason;
        const int64_t rolloutAt =
            item.pubDate + static_cast<int64_t>(state.rolloutGroup) * item.phasedRolloutInterval;
        if (!item.ignored.empty())
            reason = item.ignored;
        else if (*item.version <= context.installed)
            reason = "it is not newer than the installed " + context.installed.ToString();
        else if (!item.channel.empty() && item.channel != context.channel)
            reason = "it is for the channel \"" + item.channel + "\"";
        else if (item.critical)
            reason.clear();
        else if (item.version->ToString() == state.skippedVersion)
            reason = "the user skipped this version";
        else if (context.now < state.remindAfter)
            reason = "the user asked to be reminded later, not before " +
                     FormatFeedDate(state.remindAfter);
        else if (context.now < rolloutAt)
            reason = "its phased rollout reaches this user's group " +
                     std::to_string(state.rolloutGroup) + " on " + FormatFeedDate(rolloutAt);
        decision.reasons.push_back(reason);
        if (reason.empty() &&
            (!decision.offer || *feed.items[*decision.offer].version < *item.version))
            decision.offer = i;
    }
    for (std::size_t i = 0; i < feed.items.size(); ++i) {
        if (decision.reasons[i].empty())
            decision.reasons[i] = decision.offer == i ? "offered" : "a newer version is offered";
    }
    return decision;
}

}  // namespace Feed
