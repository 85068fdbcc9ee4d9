#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "feed/Appcast.h"
#include "feed/Offer.h"

namespace {

const std::string kSha(64, 'a');
constexpr int64_t kNov24 = 1795514400;  // Tue, 24 Nov 2026 10:00:00 +0000
constexpr int64_t kDay = 86400;

std::string FeedOf(const std::string& items, const std::string& channelExtra = "") {
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
           "xmlns:lumetta=\"urn:lumetta:update:1\"><channel><title>Example</title>" +
           channelExtra + items + "</channel></rss>";
}

// An item for Linux with everything required; `extra` goes inside the item and
// `enclosureExtra` inside the enclosure.
std::string Item(const std::string& version, const std::string& date, const std::string& extra = "",
                 const std::string& enclosureExtra = "") {
    return "<item><title>Example " + version + "</title><pubDate>" + date +
           "</pubDate><sparkle:version>" + version + "</sparkle:version>" + extra +
           "<enclosure url=\"https://example.org/" + version +
           ".run\" length=\"3214362\" type=\"application/octet-stream\" sparkle:os=\"linux\" "
           "lumetta:sha256=\"" +
           kSha + "\" " + enclosureExtra + "/></item>";
}

Feed::Appcast Parse(const std::string& text) {
    Feed::Appcast feed;
    std::string reason;
    EXPECT_TRUE(Feed::ParseAppcast(text, &feed, &reason)) << reason;
    return feed;
}

TEST(Appcast, ReadsEveryElementOfAnItem) {
    const Feed::Appcast feed = Parse(FeedOf(
        Item("2.1.0.0", "Tue, 24 Nov 2026 10:00:00 +0000",
             "<sparkle:shortVersionString>2.1</sparkle:shortVersionString>"
             "<sparkle:channel>beta</sparkle:channel><sparkle:criticalUpdate/>"
             "<sparkle:phasedRolloutInterval>86400</sparkle:phasedRolloutInterval>"
             "<sparkle:installerArguments>--quiet --no-desktop-icon</sparkle:installerArguments>"
             "<lumetta:successExitCodes>0 10</lumetta:successExitCodes><lumetta:requiresAdmin/>"
             "<description><![CDATA[<h3>What's new</h3>]]></description>"),
        "<lumetta:expires>Tue, 01 Dec 2026 00:00:00 +0000</lumetta:expires>"));
    ASSERT_EQ(feed.items.size(), 1u);
    const Feed::FeedItem& item = feed.items[0];
    EXPECT_EQ(item.ignored, "");
    EXPECT_EQ(feed.title, "Example");
    EXPECT_EQ(feed.expires, kNov24 + 6 * kDay + 14 * 3600);
    EXPECT_EQ(item.version->ToString(), "2.1.0.0");
    EXPECT_EQ(item.shortVersion, "2.1");
    EXPECT_EQ(item.pubDate, kNov24);
    EXPECT_EQ(item.channel, "beta");
    EXPECT_TRUE(item.critical);
    EXPECT_EQ(item.phasedRolloutInterval, kDay);
    EXPECT_EQ(item.installerArguments, "--quiet --no-desktop-icon");
    EXPECT_EQ(item.successExitCodes, (std::vector<int>{0, 10}));
    EXPECT_TRUE(item.requiresAdmin);
    EXPECT_EQ(item.description, "<h3>What's new</h3>");
    EXPECT_EQ(item.url, "https://example.org/2.1.0.0.run");
    EXPECT_EQ(item.length, 3214362u);
    EXPECT_EQ(item.sha256, kSha);

    // The defaults, and the version and arguments where older feeds put them.
    const Feed::FeedItem plain =
        Parse(
            FeedOf("<item><pubDate>24 Nov 2026 10:00:00 GMT</pubDate><enclosure url=\"http://h/s\" "
                   "length=\"1\" sparkle:version=\"3\" sparkle:installerArguments=\"/S\" "
                   "lumetta:sha256=\"" +
                   std::string(64, 'F') + "\"/></item>"))
            .items.at(0);
    EXPECT_EQ(plain.ignored, "");
    EXPECT_EQ(plain.version->ToString(), "3.0.0.0");
    EXPECT_EQ(plain.installerArguments, "/S");
    EXPECT_EQ(plain.sha256, std::string(64, 'f'));
    EXPECT_EQ(plain.successExitCodes, (std::vector<int>{0}));
    EXPECT_FALSE(plain.critical || plain.requiresAdmin);
    EXPECT_EQ(plain.channel, "");
}

TEST(Appcast, KeepsUnusableItemsWithTheReason) {
    const std::string date = "Tue, 24 Nov 2026 10:00:00 +0000";
    const struct {
        const char* what;
        std::string item;
        const char* ignored;
    } cases[] = {
        {"for Windows",
         "<item><pubDate>" + date +
             "</pubDate><sparkle:version>2</sparkle:version><enclosure url=\"u\" length=\"1\" "
             "sparkle:os=\"windows\" lumetta:sha256=\"" +
             kSha + "\"/></item>",
         "another platform (windows)"},
        {"macOS, no hash",
         "<item><pubDate>" + date +
             "</pubDate><enclosure url=\"u\" length=\"1\" "
             "sparkle:version=\"2\"/></item>",
         "nothing binds its file"},
        {"no enclosure", "<item><pubDate>" + date + "</pubDate></item>", "no enclosure"},
        {"no url",
         "<item><pubDate>" + date +
             "</pubDate><sparkle:version>2</sparkle:version>"
             "<enclosure length=\"1\" lumetta:sha256=\"" +
             kSha + "\"/></item>",
         "no url"},
        {"short hash",
         "<item><pubDate>" + date +
             "</pubDate><sparkle:version>2</sparkle:version>"
             "<enclosure url=\"u\" length=\"1\" lumetta:sha256=\"abc\"/></item>",
         "64 hex"},
        {"no version",
         "<item><pubDate>" + date +
             "</pubDate><enclosure url=\"u\" length=\"1\" "
             "lumetta:sha256=\"" +
             kSha + "\"/></item>",
         "no sparkle:version"},
        {"bad version", Item("2.x", date), "\"2.x\" does not parse"},
        {"no date", Item("2", ""), "no pubDate"},
        {"bad date", Item("2", "soon"), "\"soon\" is not a date"},
        {"bad exit codes",
         Item("2", date, "<lumetta:successExitCodes>0 x</lumetta:successExitCodes>"),
         "exit statuses"},
        {"bad interval",
         Item("2", date, "<sparkle:phasedRolloutInterval>-5</sparkle:phasedRolloutInterval>"),
         "not a number of seconds"},
    };
    for (const auto& c : cases) {
        const Feed::Appcast feed = Parse(FeedOf(c.item));
        ASSERT_EQ(feed.items.size(), 1u) << c.what;
        EXPECT_NE(feed.items[0].ignored.find(c.ignored), std::string::npos)
            << c.what << ": " << feed.items[0].ignored;
    }
    // One enclosure per platform in one item: Linux's is taken.
    const Feed::FeedItem both =
        Parse(FeedOf("<item><pubDate>" + date +
                     "</pubDate><sparkle:version>2</sparkle:version>"
                     "<enclosure url=\"win\" length=\"1\" sparkle:os=\"windows\"/>"
                     "<enclosure url=\"lin\" length=\"2\" sparkle:os=\"linux\" lumetta:sha256=\"" +
                     kSha + "\"/></item>"))
            .items.at(0);
    EXPECT_EQ(both.ignored, "");
    EXPECT_EQ(both.url, "lin");
}

std::string Sample(const char* name) {
    std::ifstream file(std::string(LUMETTA_FEED_SAMPLES) + "/" + name);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(Appcast, TheDocumentedExampleIsUsableAndAFeedForOtherPlatformsOffersNothing) {
    const Feed::Appcast example = Parse(Sample("linux.xml"));
    ASSERT_EQ(example.items.size(), 2u);
    EXPECT_EQ(example.items[0].ignored + example.items[1].ignored, "");
    EXPECT_EQ(example.items[1].releaseNotesLink, "https://example.org/notes/2.0.html");

    const Feed::Appcast other = Parse(Sample("other-platforms.xml"));
    ASSERT_EQ(other.items.size(), 2u);
    EXPECT_TRUE(other.items[0].critical) << "sparkle:tags holds it in newer feeds";
    Feed::OfferContext context;
    context.now = 1795514400;
    const Feed::OfferDecision decision = Feed::ChooseOffer(other, context);
    EXPECT_FALSE(decision.offer);
    EXPECT_EQ(decision.reasons[0], "its enclosure has no lumetta:sha256: nothing binds its file");
    EXPECT_EQ(decision.reasons[1], "it is for another platform (windows)");
}

TEST(Appcast, RefusesWhatIsNotAFeed) {
    const std::string good = FeedOf(Item("2", "Tue, 24 Nov 2026 10:00:00 +0000"));
    const struct {
        const char* what;
        std::string text;
        const char* reason;
    } cases[] = {
        {"empty", "", "not well-formed"},
        {"truncated", good.substr(0, good.size() / 2), "not well-formed"},
        {"huge", FeedOf(std::string(Feed::kMaxFeedBytes, ' ')), "larger than 1 MiB"},
        {"entity expansion",
         "<?xml version=\"1.0\"?><!DOCTYPE rss [<!ENTITY a \"aaaaaaaa\"><!ENTITY b "
         "\"&a;&a;&a;&a;&a;&a;&a;&a;\">]><rss><channel><title>&b;</title></channel></rss>",
         "document type declaration"},
        {"external entity",
         "<?xml version=\"1.0\"?><!DOCTYPE rss SYSTEM \"file:///etc/passwd\"><rss><channel/></rss>",
         "document type declaration"},
        {"not RSS", "<feed><channel/></feed>", "not an RSS document"},
        {"no channel", "<rss version=\"2.0\"/>", "not an RSS document"},
        {"bad expiry", FeedOf("", "<lumetta:expires>never</lumetta:expires>"), "expires"},
    };
    for (const auto& c : cases) {
        Feed::Appcast feed;
        feed.title = "left over";
        std::string reason;
        EXPECT_FALSE(Feed::ParseAppcast(c.text, &feed, &reason)) << c.what;
        EXPECT_NE(reason.find(c.reason), std::string::npos) << c.what << ": " << reason;
        EXPECT_TRUE(feed.items.empty() && feed.title.empty()) << c.what;
    }
}

// Three releases: 2.0 (a week old), 2.1 beta, 2.2 phased over a day per group.
class OfferTest : public testing::Test {
protected:
    Feed::Appcast feed = Parse(FeedOf(
        Item("2.0", "Tue, 17 Nov 2026 10:00:00 +0000") +
        Item("2.1", "Tue, 24 Nov 2026 10:00:00 +0000", "<sparkle:channel>beta</sparkle:channel>") +
        Item("2.2", "Tue, 24 Nov 2026 10:00:00 +0000",
             "<sparkle:phasedRolloutInterval>86400</sparkle:phasedRolloutInterval>")));
    Feed::OfferContext Context(const char* installed, uint32_t group = 0) {
        Feed::OfferContext context;
        context.installed = *Feed::ParseVersion(installed);
        context.state.rolloutGroup = group;
        context.now = kNov24 + 3600;
        return context;
    }
    std::string Offered(const Feed::OfferContext& context) {
        const Feed::OfferDecision decision = Feed::ChooseOffer(feed, context);
        EXPECT_EQ(decision.reasons.size(), decision.refused.empty() ? feed.items.size() : 0u);
        if (!decision.refused.empty()) return "refused: " + decision.refused;
        return decision.offer ? feed.items[*decision.offer].versionText : "nothing";
    }
};

TEST_F(OfferTest, TheHighestEligibleVersionAboveTheInstalledOne) {
    auto with = [this](auto change, const char* installed = "1.0", uint32_t group = 0) {
        Feed::OfferContext context = Context(installed, group);
        change(context);
        return Offered(context);
    };
    auto same = [](Feed::OfferContext&) {};
    EXPECT_EQ(with(same), "2.2") << "group 0 gets a phased release at once";
    EXPECT_EQ(with(same, "1.0", 1), "2.0") << "group 1 a day later";
    EXPECT_EQ(with([](auto& c) { c.now += kDay; }, "1.0", 1), "2.2");
    EXPECT_EQ(with([](auto& c) { c.now = kNov24 + 6 * kDay - 1; }, "1.0", 6), "2.0");
    EXPECT_EQ(with(same, "2.0"), "2.2");
    EXPECT_EQ(with(same, "2.0", 3), "nothing") << "nothing newer reached group 3 yet";
    EXPECT_EQ(with(same, "2.2"), "nothing");
    EXPECT_EQ(with(same, "2.2.0.1"), "nothing");
    EXPECT_EQ(with([](auto& c) { c.channel = "beta"; }, "2.0", 3), "2.1");
    EXPECT_EQ(with([](auto& c) { c.channel = "nightly"; }, "2.0", 3), "nothing");
    EXPECT_EQ(with([](auto& c) { c.state.skippedVersion = "2.2.0.0"; }), "2.0");
    EXPECT_EQ(with([](auto& c) { c.state.remindAfter = c.now + 1; }), "nothing");
    EXPECT_EQ(with([](auto& c) { c.state.remindAfter = c.now; }), "2.2");

    // A critical release ignores the skip, the reminder and the rollout, not the channel.
    feed.items[1].critical = feed.items[2].critical = true;
    EXPECT_EQ(with([](auto& c) { c.state.skippedVersion = "2.2.0.0"; }, "1.0", 6), "2.2");
    EXPECT_EQ(with([](auto& c) { c.state.remindAfter = c.now + 1; }), "2.2");
    feed.items[2].ignored = "unusable";
    EXPECT_EQ(with(same), "2.0") << "the beta stays with its channel";
}

TEST_F(OfferTest, ExpiredAndReplayedFeedsAreRefusedWithTheReasonForEveryItemOtherwise) {
    Feed::OfferContext context = Context("2.0", 3);
    const Feed::OfferDecision decision = Feed::ChooseOffer(feed, context);
    EXPECT_EQ(decision.newestPubDate, kNov24);
    ASSERT_EQ(decision.reasons.size(), 3u);
    EXPECT_EQ(decision.reasons[0], "it is not newer than the installed 2.0.0.0");
    EXPECT_EQ(decision.reasons[1], "it is for the channel \"beta\"");
    EXPECT_EQ(decision.reasons[2],
              "its phased rollout reaches this user's group 3 on 2026-11-27 10:00:00 UTC");

    context.state.newestPubDateSeen = kNov24;
    EXPECT_EQ(Offered(context), "nothing") << "the same feed again is no replay";
    context.state.newestPubDateSeen = kNov24 + 1;
    EXPECT_NE(Offered(context).find("refused: the feed is older than one seen"), std::string::npos);
    context.state.newestPubDateSeen = 0;
    feed.expires = context.now;
    EXPECT_EQ(Offered(context), "nothing");
    feed.expires = context.now - 1;
    EXPECT_NE(Offered(context).find("refused: the feed expired on 2026-11-24 10:59:59 UTC"),
              std::string::npos);
}

}  // namespace
