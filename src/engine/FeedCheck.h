// Engine::CheckFeed: the first step of a managed update. Fetches the update feed, makes sure
// it can be trusted, and chooses what to offer, without touching the product.
//
// Trust: with a public key, "<feed URL>.minisig" must be a valid minisign signature of the
// feed's bytes by that key, and the feed (with the length and SHA-256 of every setup in it)
// is then trusted whatever the transport; without a key, the feed must have come over https
// with a verified certificate chain on every hop, and so must the setup it names.
//
// Thread safety: any thread. Failure: ok false with the reason in words, never an exception
// (std::bad_alloc aside).
#pragma once

#include <atomic>
#include <string>

#include "feed/Appcast.h"
#include "feed/Offer.h"

namespace Engine {

struct FeedCheckSettings {
    std::string feedUrl;
    std::string publicKey;  // the base64 line of a minisign key; empty: https is the trust
    Feed::OfferContext context;
};

struct FeedCheckResult {
    bool ok = false;
    std::string reason;            // why the feed was refused, when not ok
    std::string trust;             // how the feed was trusted, when ok
    Feed::Appcast feed;            // when it parsed
    Feed::OfferDecision decision;  // when ok
};

inline constexpr std::size_t kMaxFeedSignatureSize = 64 * 1024;

FeedCheckResult CheckFeed(const FeedCheckSettings& settings,
                          const std::atomic<bool>* stop = nullptr);

}  // namespace Engine
