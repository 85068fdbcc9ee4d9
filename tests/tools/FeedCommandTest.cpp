#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "feed/Appcast.h"
#include "support/CommandOutput.h"
#include "support/HiveFolder.h"
#include "support/TestFiles.h"

namespace {

std::map<std::string, std::string> Values(const std::string& out) {
    std::map<std::string, std::string> values;
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
        const size_t colon = line.find(": ");
        values[line.substr(0, colon)] = colon == std::string::npos ? "" : line.substr(colon + 2);
    }
    return values;
}

// What the product maker pastes into the feed is an item the updater can offer, bound to
// the file by the length and SHA-256 that sha256sum computes.
TEST(FeedCommand, ItemDescribesTheFileAsTheUpdaterReadsIt) {
    const TestSupport::TempFolder folder{"lumetta-diag-feed"};
    const std::string setup = (folder / "setup.run").string();
    ASSERT_TRUE(TestSupport::WriteFile(setup, std::string(3 << 20, 's') + "end"));
    ASSERT_TRUE(TestSupport::WriteFile(folder / "notes.html", "<p>a]]>b & c</p>"));
    const auto sum = TestSupport::RunProgram({"sha256sum", setup});
    ASSERT_EQ(sum.exitCode, 0) << sum.out;

    const auto run = TestSupport::RunProgram({LUMETTA_DIAG, "feed", "item", setup, "--version",
                                              "2.1", "--url", "https://example.org/a?x=1&y=2",
                                              "--notes", (folder / "notes.html").string()});
    ASSERT_EQ(run.exitCode, 0) << run.out;
    Feed::Appcast feed;
    std::string reason;
    ASSERT_TRUE(Feed::ParseAppcast(
        "<rss xmlns:sparkle=\"http://www.andymatuschak.org/xml-namespaces/sparkle\" "
        "xmlns:lumetta=\"urn:lumetta:update:1\"><channel>" +
            run.out + "</channel></rss>",
        &feed, &reason))
        << reason << "\n"
        << run.out;
    ASSERT_EQ(feed.items.size(), 1u);
    const Feed::FeedItem& item = feed.items[0];
    EXPECT_EQ(item.ignored, "") << run.out;
    EXPECT_EQ(item.sha256, sum.out.substr(0, 64));
    EXPECT_EQ(item.length, (3u << 20) + 3);
    EXPECT_EQ(item.url, "https://example.org/a?x=1&y=2");
    EXPECT_EQ(item.version->ToString(), "2.1.0.0");
    EXPECT_EQ(item.description, "<p>a]]>b & c</p>");

    const struct {
        std::vector<std::string> args;
        const char* says;
    } refused[] = {
        {{setup, "--version", "2.x", "--url", "u"}, "\"2.x\" is not up to four dotted numbers"},
        {{setup + ".absent", "--version", "2", "--url", "u"}, "cannot be opened"},
        {{setup, "--version", "2", "--url", "u", "--notes", setup + ".absent"}, "cannot be read"},
    };
    for (const auto& c : refused) {
        std::vector<std::string> argv{LUMETTA_DIAG, "feed", "item"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const auto bad = TestSupport::RunProgram(argv);
        EXPECT_EQ(bad.exitCode, 1) << bad.out;
        EXPECT_NE(bad.out.find(c.says), std::string::npos) << bad.out;
    }
}

TEST(FeedCommand, ConfigShowsTheManagedSettingsWithWhereTheyCameFrom) {
    const TestSupport::HiveFolder registry;
    ASSERT_TRUE(registry.WriteHive("HKEY_LOCAL_MACHINE.reg",
                                   "Windows Registry Editor Version 5.00\n\n"
                                   "[HKEY_LOCAL_MACHINE\\Software\\P]\n"
                                   "\"UpdateFeedURL\"=\"https://machine/feed.xml\"\n"));
    const auto machine = Values(
        TestSupport::RunProgram({LUMETTA_DIAG, "config", "/productName", "P", "/bundleName", "B"})
            .out);
    EXPECT_EQ(machine.at("feedURL"), "https://machine/feed.xml");
    EXPECT_EQ(machine.at("feedURLFrom"), "HKEY_LOCAL_MACHINE\\Software\\P\\UpdateFeedURL");
    EXPECT_EQ(machine.at("channel") + machine.at("channelFrom"), "");

    ASSERT_TRUE(registry.WriteHive("HKEY_CURRENT_USER.reg",
                                   "Windows Registry Editor Version 5.00\n\n"
                                   "[HKEY_CURRENT_USER\\Software\\B\\P]\n"
                                   "\"UpdateFeedURL\"=\"https://user/feed.xml\"\n"
                                   "\"UpdateChannel\"=\"beta\"\n"));
    const auto user = Values(
        TestSupport::RunProgram({LUMETTA_DIAG, "config", "/productName", "P", "/bundleName", "B"})
            .out);
    EXPECT_EQ(user.at("feedURL"), "https://user/feed.xml");
    EXPECT_EQ(user.at("feedURLFrom"), "HKEY_CURRENT_USER\\Software\\B\\P\\UpdateFeedURL");
    EXPECT_EQ(user.at("channel"), "beta");

    const auto given =
        Values(TestSupport::RunProgram({LUMETTA_DIAG, "config", "/productName", "P", "/bundleName",
                                        "B", "/feedURL", "http://c", "/channel", "nightly",
                                        "/productVersion", "3.1"})
                   .out);
    EXPECT_EQ(given.at("feedURL") + " " + given.at("feedURLFrom"),
              "http://c command line /feedURL");
    EXPECT_EQ(given.at("channel") + " " + given.at("channelFrom"), "nightly command line /channel");
    EXPECT_EQ(given.at("installedVersion") + " " + given.at("installedVersionFrom"),
              "3.1 command line /productVersion");
}

}  // namespace
