// Which item of a feed to offer, with the reason for every item that is not offered.
//
// The offer is the eligible item with the highest version above the installed one. Eligible:
// usable (nothing in FeedItem::ignored), its channel absent or the configured one, not the
// version the user skipped, not inside "remind me later", and past its phased rollout for the
// user's group (an item with interval I reaches group g at pubDate + g * I). A critical item
// ignores the skip, the reminder and the rollout. A whole feed is refused when it has expired
// (lumetta:expires) or when its newest pubDate is older than the newest one already seen (a
// replayed old feed that would hide a newer release).
//
// Thread safety: plain values and pure functions, from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "feed/Appcast.h"
#include "feed/Version.h"

namespace Feed {

inline constexpr uint32_t kRolloutGroups = 7;
inline constexpr int64_t kRemindLaterSeconds = 24 * 60 * 60;

// What the updater keeps per user and product between runs.
struct UpdateState {
    uint32_t rolloutGroup = 0;   // 0 .. kRolloutGroups - 1
    std::string skippedVersion;  // Version::ToString() of the skipped one; empty: none
    int64_t remindAfter = 0;     // stay quiet until then (seconds since the epoch)
    int64_t newestPubDateSeen = 0;
};

struct OfferContext {
    Version installed;
    std::string channel;  // empty: only items without a channel
    UpdateState state;
    int64_t now = 0;  // seconds since the epoch
};

struct OfferDecision {
    std::string refused;               // the whole feed is refused: why; empty otherwise
    std::optional<std::size_t> offer;  // index into the feed's items
    std::vector<std::string> reasons;  // one per item: "offered" or why it is not
    int64_t newestPubDate = 0;         // of the feed, to keep in UpdateState
};

OfferDecision ChooseOffer(const Appcast& feed, const OfferContext& context);

// A group for a user who has none yet, from any random number.
inline uint32_t RolloutGroupFrom(uint64_t random) {
    return static_cast<uint32_t>(random % kRolloutGroups);
}

}  // namespace Feed
