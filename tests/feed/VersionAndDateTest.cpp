#include <gtest/gtest.h>

#include "feed/FeedDate.h"
#include "feed/Version.h"

namespace {

TEST(FeedVersion, DottedNumbersUpToFourPartsMissingOnesZero) {
    const struct {
        const char* text;
        const char* parsed;  // nullptr: does not parse
    } cases[] = {
        {"2.1", "2.1.0.0"},      {" 1.2.3.4\n", "1.2.3.4"},
        {"10", "10.0.0.0"},      {"4294967295.0.0.1", "4294967295.0.0.1"},
        {"4294967296", nullptr}, {"1.2.3.4.5", nullptr},
        {"1..2", nullptr},       {"1.2.", nullptr},
        {".1", nullptr},         {"", nullptr},
        {"1.2b", nullptr},       {"-1", nullptr},
        {"v2", nullptr},
    };
    for (const auto& c : cases) {
        const auto version = Feed::ParseVersion(c.text);
        EXPECT_EQ(version.has_value(), c.parsed != nullptr) << c.text;
        if (version && c.parsed) {
            EXPECT_EQ(version->ToString(), c.parsed) << c.text;
        }
    }
    // Order is numeric, part by part, not textual.
    const char* ascending[] = {"1.9", "1.10", "1.10.0.1", "2", "10.0"};
    for (std::size_t i = 1; i < std::size(ascending); ++i)
        EXPECT_LT(*Feed::ParseVersion(ascending[i - 1]), *Feed::ParseVersion(ascending[i]))
            << ascending[i - 1] << " < " << ascending[i];
    EXPECT_EQ(*Feed::ParseVersion("2.1"), *Feed::ParseVersion("2.1.0.0"));
}

TEST(FeedDate, ReadsTheDatesRealFeedsWrite) {
    constexpr int64_t kNov24 = 1795514400;  // 2026-11-24 10:00:00 UTC
    const struct {
        const char* text;
        int64_t seconds;  // -1: not a date
    } cases[] = {
        {"Tue, 24 Nov 2026 10:00:00 +0000", kNov24},
        {"24 Nov 2026 10:00:00 GMT", kNov24},
        {"Tuesday, 24 November 2026 10:00 UTC", kNov24},
        {"tue, 24 nov 26 10:00:00 Z", kNov24},
        {"Tue, 24 Nov 2026 11:30:00 +0130", kNov24},
        {"Tue, 24 Nov 2026 05:00:00 EST", kNov24},
        {"Tue, 24 Nov 2026 02:00:00 PST", kNov24},
        {"Tue, 24 Nov 2026 12:00:00 +02:00", kNov24},
        {"Tue,  24 Nov 2026 10:00:00", kNov24},
        {"2026-11-24T10:00:00Z", kNov24},
        {"2026-11-24T11:00:00+01:00", kNov24},
        {"Thu, 01 Jan 1970 00:00:00 +0000", 0},
        {"Tue, 29 Feb 2028 00:00:00 +0000", 1835395200},
        {"Mon, 1 Mar 99 00:00:00 GMT", 920246400},
        {"Fri, 29 Feb 2026 00:00:00 +0000", -1},
        {"Tue, 31 Apr 2026 00:00:00 +0000", -1},
        {"Tue, 24 Nov 2026 24:00:00 +0000", -1},
        {"Tue, 24 Nov 2026 10:60:00 +0000", -1},
        {"Tue, 24 Foo 2026 10:00:00 +0000", -1},
        {"Tue, 24 Nov 2026 10:00:00 +2400", -1},
        {"Tue, 24 Nov 2026 10:00:00 CET", -1},
        {"Tue, 24 Nov 2026", -1},
        {"2026-13-01T00:00:00Z", -1},
        {"yesterday", -1},
        {"", -1},
    };
    for (const auto& c : cases) {
        const auto seconds = Feed::ParseFeedDate(c.text);
        EXPECT_EQ(seconds.value_or(-1), c.seconds) << c.text;
    }
    EXPECT_EQ(Feed::FormatFeedDate(kNov24), "2026-11-24 10:00:00 UTC");
    EXPECT_EQ(Feed::FormatFeedDate(1835395200 + 86399), "2028-02-29 23:59:59 UTC");
    EXPECT_EQ(Feed::FormatRssDate(kNov24), "Tue, 24 Nov 2026 10:00:00 +0000");
    EXPECT_EQ(Feed::FormatRssDate(920246400), "Mon, 01 Mar 1999 00:00:00 +0000");
}

}  // namespace
