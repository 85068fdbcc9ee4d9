#include "engine/FeedCheck.h"

#include "engine/DocumentFetch.h"
#include "engine/SetupSignature.h"

namespace Engine {
namespace {

bool IsHttps(const std::string& url) {
    return url.rfind("https://", 0) == 0;
}

// The signature's address: ".minisig" after the path, before any query or fragment.
std::string SignatureAddress(const std::string& url) {
    const std::size_t end = url.find_first_of("?#", url.find("://") + 3);
    if (end == std::string::npos) return url + ".minisig";
    return url.substr(0, end) + ".minisig" + url.substr(end);
}

bool Verify(const std::string& body, const std::string& signatureText, const std::string& key,
            std::string* keyId, std::string* reason) {
    SignaturePublicKey publicKey;
    SetupSignature signature;
    if (!ParsePublicKey(key, &publicKey, reason) ||
        !ParseSignature(signatureText, &signature, reason))
        return false;
    SignatureCheck check(publicKey, signature);
    check.Add(body.data(), body.size());
    *keyId = KeyIdText(publicKey.keyId);
    return check.Finish(reason);
}

}  // namespace

FeedCheckResult CheckFeed(const FeedCheckSettings& settings, const std::atomic<bool>* stop) {
    FeedCheckResult result;
    if (settings.feedUrl.empty()) {
        result.reason = "no update feed is configured";
        return result;
    }
    const FetchedDocument feed = FetchDocument(settings.feedUrl, Feed::kMaxFeedBytes, stop);
    if (!feed.ok) {
        result.reason = "the feed could not be fetched: " + feed.reason;
        return result;
    }
    if (settings.publicKey.empty()) {
        if (!feed.allHttps) {
            result.reason = "without a public key the feed must come over https, and " +
                            feed.finalUrl + " did not";
            return result;
        }
        result.trust = "https with a verified certificate, no public key configured";
    } else {
        const std::string address = SignatureAddress(settings.feedUrl);
        const FetchedDocument signature = FetchDocument(address, kMaxFeedSignatureSize, stop);
        if (!signature.ok) {
            result.reason = "the feed's signature could not be fetched: " + signature.reason;
            return result;
        }
        std::string keyId, why;
        if (!Verify(feed.body, signature.body, settings.publicKey, &keyId, &why)) {
            result.reason = "the feed's signature " + address + " is not valid: " + why;
            return result;
        }
        result.trust = "signed by key " + keyId;
    }
    if (!Feed::ParseAppcast(feed.body, &result.feed, &result.reason)) return result;
    if (settings.publicKey.empty()) {
        // Nothing but the transport binds the setups then: the same rule holds for them.
        for (Feed::FeedItem& item : result.feed.items) {
            if (item.ignored.empty() && !IsHttps(item.url))
                item.ignored = "without a public key its setup must come over https";
        }
    }
    result.decision = Feed::ChooseOffer(result.feed, settings.context);
    if (!result.decision.refused.empty()) {
        result.reason = result.decision.refused;
        return result;
    }
    result.ok = true;
    return result;
}

}  // namespace Engine
