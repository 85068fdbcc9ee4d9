// Dates of update feeds: RSS writes RFC 822 dates ("Tue, 24 Nov 2026 10:00:00 +0000"); real
// feeds also write them without the weekday or the seconds, with full or lower-case month and
// day names, two-digit years, zone names (GMT, UTC, UT, Z, EST ... PDT), "+01:00" offsets or
// no zone at all (read as UTC), and some write ISO 8601 ("2026-11-24T10:00:00Z").
//
// Thread safety: a pure function, from any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Feed {

// Seconds since 1970-01-01 00:00:00 UTC, or nothing when `text` is not such a date or names
// a day that does not exist (31 Feb, hour 24, ...).
std::optional<int64_t> ParseFeedDate(std::string_view text);

// "2026-11-24 10:00:00 UTC", for messages.
std::string FormatFeedDate(int64_t seconds);
// "Tue, 24 Nov 2026 10:00:00 +0000", as RSS writes dates.
std::string FormatRssDate(int64_t seconds);

}  // namespace Feed
