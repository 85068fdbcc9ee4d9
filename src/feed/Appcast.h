// An update feed ("appcast"): RSS 2.0 with the Sparkle vocabulary that desktop updaters on
// other platforms read, and our own namespace for what that vocabulary lacks:
//
//   xmlns:sparkle="http://www.andymatuschak.org/xml-namespaces/sparkle"
//   xmlns:lumetta="urn:lumetta:update:1"
//
// doc/update-feed.md describes every element. Parsing keeps every item, each with the
// reason why it cannot be offered (empty when it can), so that a product maker sees why an
// item is left out; choosing among the usable ones is Feed::ChooseOffer's work.
//
// Thread safety: plain values and a pure function, from any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "feed/Version.h"

namespace Feed {

inline constexpr std::string_view kSparkleNamespace =
    "http://www.andymatuschak.org/xml-namespaces/sparkle";
inline constexpr std::string_view kLumettaNamespace = "urn:lumetta:update:1";
inline constexpr std::size_t kMaxFeedBytes = 1024 * 1024;

struct FeedItem {
    std::string title;
    std::string versionText;         // as the feed writes it
    std::optional<Version> version;  // nothing when it does not parse
    std::string shortVersion;        // for people: "2.1"
    int64_t pubDate = 0;             // seconds since the epoch, UTC
    std::string channel;             // empty: every user
    bool critical = false;
    int64_t phasedRolloutInterval = 0;  // seconds; 0: no phased rollout
    std::string installerArguments;     // empty: the setup gets none
    std::vector<int> successExitCodes{0};
    bool requiresAdmin = false;
    std::string description;       // HTML, as the feed has it
    std::string releaseNotesLink;  // instead of or beside the description
    std::string url;               // of the enclosure
    uint64_t length = 0;
    std::string sha256;  // 64 lower-case hex digits
    std::string os;      // the enclosure's sparkle:os; empty: any

    std::string ignored;  // why this item is never offered; empty: it may be
};

struct Appcast {
    std::string title;
    std::optional<int64_t> expires;  // lumetta:expires of the channel
    std::vector<FeedItem> items;     // in the feed's order
};

// Fails with a reason (and leaves `feed` empty) when `bytes` exceed kMaxFeedBytes, are not
// well-formed XML, carry a document type declaration (the door to entity expansion) or are
// not an RSS document with a channel. An item that lacks a required part or is for another
// platform is kept with the reason in `ignored`.
bool ParseAppcast(std::string_view bytes, Appcast* feed, std::string* reason);

}  // namespace Feed
