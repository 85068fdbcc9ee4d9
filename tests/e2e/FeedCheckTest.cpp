#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestHarness.h"
#include "support/CommandOutput.h"
#include "support/HiveFolder.h"
#include "support/Minisign.h"

namespace {

using TestHarness::TempFolder;

std::string Item(const std::string& version, const std::string& date,
                 const std::string& extra = "") {
    return "<item><pubDate>" + date + "</pubDate><sparkle:version>" + version +
           "</sparkle:version>" + extra + "<enclosure url=\"http://127.0.0.1/setup-" + version +
           ".run\" length=\"5\" sparkle:os=\"linux\" lumetta:sha256=\"" + std::string(64, 'a') +
           "\"/></item>";
}

std::string Feed(const std::string& items, const std::string& channel = "") {
    return "<?xml version=\"1.0\"?><rss version=\"2.0\" "
           "xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
           "xmlns:lumetta=\"urn:lumetta:update:1\"><channel>" +
           channel + items + "</channel></rss>\n";
}

// lumetta-diag feed check against real servers: what is offered, and every reason a feed is
// refused before anything is downloaded.
TEST(FeedCheck, OffersOnlyFromATrustedCurrentFeed) {
    TempFolder www;
    TestHarness::HttpServers servers(www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();
    const TestSupport::HiveFolder registry;
    const auto mine = TestSupport::FixedMinisignKey("mine");
    const auto other = TestSupport::FixedMinisignKey("other");
    auto publish = [&](const std::string& name, const std::string& text) {
        TestHarness::WriteFile(www.File(name), text);
        return TestSupport::MinisignSign(mine, www.File(name), www.File(name + ".minisig"));
    };
    const std::string week = "Tue, 17 Nov 2026 10:00:00 +0000";
    ASSERT_TRUE(publish(
        "feed.xml",
        Feed(Item("2.0", week) + Item("2.1", week, "<sparkle:channel>beta</sparkle:channel>"))));
    ASSERT_TRUE(publish(
        "expired.xml", Feed(Item("2.0", week), "<lumetta:expires>" + week + "</lumetta:expires>")));
    ASSERT_TRUE(publish("huge.xml", Feed(std::string(1100000, ' '))));
    ASSERT_TRUE(publish("changed.xml", Feed(Item("2.0", week))));
    TestHarness::WriteFile(www.File("changed.xml"), Feed(Item("9.0", week)));

    const struct {
        const char* what;
        std::vector<std::string> args;
        int exitCode;
        std::string lastLine;
    } cases[] = {
        {"signed feed",
         {"/feedURL", "http://127.0.0.1/feed.xml"},
         0,
         "result update 2.0.0.0 http://127.0.0.1/setup-2.0.run"},
        {"beta channel",
         {"/feedURL", "http://127.0.0.1/feed.xml", "/channel", "beta"},
         0,
         "result update 2.1.0.0 http://127.0.0.1/setup-2.1.run"},
        {"up to date",
         {"/feedURL", "http://127.0.0.1/feed.xml", "/productVersion", "2.0"},
         0,
         "result up-to-date 2.0.0.0"},
        {"another key",
         {"/feedURL", "http://127.0.0.1/feed.xml", "/publicKey", other.publicKey},
         1,
         "result failed: the feed's signature http://127.0.0.1/feed.xml.minisig is not valid"},
        {"no key over http",
         {"/feedURL", "http://127.0.0.1/feed.xml", "/publicKey", ""},
         1,
         "result failed: without a public key the feed must come over https"},
        {"changed after signing",
         {"/feedURL", "http://127.0.0.1/changed.xml"},
         1,
         "the signature does not match the file"},
        {"huge", {"/feedURL", "http://127.0.0.1/huge.xml"}, 1, "is larger than 1048576 bytes"},
        {"expired",
         {"/feedURL", "http://127.0.0.1/expired.xml"},
         1,
         "result failed: the feed expired on 2026-11-17 10:00:00 UTC"},
        {"missing", {"/feedURL", "http://127.0.0.2/missing"}, 1, "the server answered 404"},
        {"redirect to a file",
         {"/feedURL", "http://127.0.0.2/tofile"},
         1,
         "file:///etc/passwd is not http:// or https://"},
        {"endless redirects", {"/feedURL", "http://127.0.0.2/loop"}, 1, "more than 5 redirects"},
        {"no feed", {}, 1, "result failed: no update feed is configured"},
    };
    for (const auto& c : cases) {
        // The first occurrence of an option counts: the case's own come first.
        std::vector<std::string> argv{LUMETTA_DIAG, "feed", "check"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        for (const char* more : {"/productName", "P", "/productVersion", "1.0", "/publicKey"})
            argv.push_back(more);
        argv.push_back(mine.publicKey);
        const auto run = TestSupport::RunProgram(argv);
        EXPECT_EQ(run.exitCode, c.exitCode) << c.what << "\n" << run.out;
        EXPECT_NE(run.out.find(c.lastLine), std::string::npos) << c.what << "\n" << run.out;
    }

    // The updater's own check needs no display and prints one line.
    const std::string updater = std::string("env -u DISPLAY -u WAYLAND_DISPLAY ") +
                                LUMETTA_UPDATER + " --check /productName P /publicKey " +
                                mine.publicKey + " /feedURL http://127.0.0.1/";
    const struct {
        std::string arguments;
        int exitCode;
        std::string out;
    } checks[] = {
        {"feed.xml /productVersion 1.0", 10, "update 2.0.0.0 http://127.0.0.1/setup-2.0.run\n"},
        {"feed.xml /productVersion 2.0", 0, "up-to-date 2.0\n"},
        {"expired.xml /productVersion 1.0", 1, ""},
    };
    for (const auto& c : checks) {
        const auto run = TestSupport::RunCommand(updater + c.arguments + " 2>/dev/null");
        EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.out;
        EXPECT_EQ(run.out, c.out) << c.arguments;
    }

    // A feed older than one already seen is a replay.
    ASSERT_TRUE(
        registry.WriteHive("HKEY_CURRENT_USER.reg",
                           "Windows Registry Editor Version 5.00\n\n"
                           "[HKEY_CURRENT_USER\\Software\\B\\P\\Update]\n"
                           "\"NewestPubDate\"=\"1795514400\"\n\"RolloutGroup\"=dword:00000003\n"));
    const auto replay = TestSupport::RunProgram(
        {LUMETTA_DIAG, "feed", "check", "/productName", "P", "/bundleName", "B", "/productVersion",
         "1.0", "/publicKey", mine.publicKey, "/feedURL", "http://127.0.0.1/feed.xml"});
    EXPECT_EQ(replay.exitCode, 1) << replay.out;
    EXPECT_NE(replay.out.find("rollout group: 3\n"), std::string::npos) << replay.out;
    EXPECT_NE(replay.out.find("result failed: the feed is older than one seen before"),
              std::string::npos)
        << replay.out;
}

}  // namespace
