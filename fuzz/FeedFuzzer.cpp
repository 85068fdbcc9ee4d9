// libFuzzer target for the update feed: any bytes must be refused with a reason or parsed
// into items, each usable or with the reason it is not; choosing an offer from what parsed
// must end in a decision with one reason per item, never a crash.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "feed/Appcast.h"
#include "feed/FeedDate.h"
#include "feed/Offer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    Feed::ParseFeedDate(text);
    Feed::ParseVersion(text);

    Feed::Appcast feed;
    std::string reason;
    if (!Feed::ParseAppcast(text, &feed, &reason)) {
        if (reason.empty() || !feed.items.empty()) std::abort();
        return 0;
    }
    Feed::OfferContext context;
    context.installed = Feed::Version{{1, 0, 0, 0}};
    context.now = 1795514400;
    context.state.rolloutGroup = static_cast<uint32_t>(size % Feed::kRolloutGroups);
    const Feed::OfferDecision decision = Feed::ChooseOffer(feed, context);
    if (decision.refused.empty() && decision.reasons.size() != feed.items.size()) std::abort();
    if (decision.offer && !feed.items[*decision.offer].ignored.empty()) std::abort();
    for (const Feed::FeedItem& item : feed.items) Feed::FormatFeedDate(item.pubDate);
    return 0;
}
