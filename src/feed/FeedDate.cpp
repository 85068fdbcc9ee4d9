#include "feed/FeedDate.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "feed/internal/Text.h"

namespace Feed {
namespace {

using internal::EqualsNoCase;

constexpr std::array<std::string_view, 12> kMonths = {
    "january", "february", "march",     "april",   "may",      "june",
    "july",    "august",   "september", "october", "november", "december"};

struct Zone {
    std::string_view name;
    int minutes;
};
constexpr Zone kZones[] = {{"GMT", 0},       {"UTC", 0},       {"UT", 0},        {"Z", 0},
                           {"EST", -5 * 60}, {"EDT", -4 * 60}, {"CST", -6 * 60}, {"CDT", -5 * 60},
                           {"MST", -7 * 60}, {"MDT", -6 * 60}, {"PST", -8 * 60}, {"PDT", -7 * 60}};

// Digits only, at most `maxDigits` of them.
std::optional<int> Number(std::string_view text, std::size_t maxDigits) {
    if (text.empty() || text.size() > maxDigits) return std::nullopt;
    int value = 0;
    for (const char ch : text) {
        if (ch < '0' || ch > '9') return std::nullopt;
        value = value * 10 + (ch - '0');
    }
    return value;
}

std::optional<int> Month(std::string_view word) {
    for (std::size_t i = 0; i < kMonths.size(); ++i) {
        if (EqualsNoCase(word, kMonths[i]) ||
            (word.size() == 3 && EqualsNoCase(word, kMonths[i].substr(0, 3))) ||
            (i == 8 && EqualsNoCase(word, "sept")))
            return static_cast<int>(i) + 1;
    }
    return std::nullopt;
}

bool IsLeap(int64_t year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysIn(int64_t year, int month) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

// Days from 1970-01-01 to the given day of the proleptic Gregorian calendar.
int64_t DaysFromEpoch(int64_t year, int month, int day) {
    year -= month <= 2;
    const int64_t era = (year >= 0 ? year : year - 399) / 400;
    const int64_t yearOfEra = year - era * 400;
    const int64_t dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// "HH:MM" or "HH:MM:SS" into seconds of the day.
std::optional<int> TimeOfDay(std::string_view text) {
    int values[3] = {0, 0, 0};
    std::size_t count = 0;
    while (count < 3) {
        const std::size_t colon = text.find(':');
        const auto value = Number(text.substr(0, colon), 2);
        if (!value) return std::nullopt;
        values[count++] = *value;
        if (colon == std::string_view::npos) break;
        text.remove_prefix(colon + 1);
        if (count == 3) return std::nullopt;
    }
    if (count < 2 || values[0] > 23 || values[1] > 59 || values[2] > 60) return std::nullopt;
    return values[0] * 3600 + values[1] * 60 + std::min(values[2], 59);
}

// "+hhmm", "-hh:mm" or a zone name, as minutes east of UTC.
std::optional<int> ZoneOffset(std::string_view text) {
    for (const Zone& zone : kZones)
        if (EqualsNoCase(text, zone.name)) return zone.minutes;
    if (text.size() < 5 || (text[0] != '+' && text[0] != '-')) return std::nullopt;
    std::string digits(text.substr(1));
    if (digits.size() == 5 && digits[2] == ':') digits.erase(2, 1);
    const auto hhmm = Number(digits, 4);
    if (!hhmm || digits.size() != 4 || *hhmm / 100 > 23 || *hhmm % 100 > 59) return std::nullopt;
    const int minutes = *hhmm / 100 * 60 + *hhmm % 100;
    return text[0] == '-' ? -minutes : minutes;
}

std::optional<int64_t> Combine(int64_t year, int month, int day, int seconds, int zoneMinutes) {
    if (month < 1 || month > 12 || day < 1 || day > DaysIn(year, month)) return std::nullopt;
    return DaysFromEpoch(year, month, day) * 86400 + seconds - zoneMinutes * 60;
}

// 2026-11-24T10:00:00Z, 2026-11-24T10:00:00+01:00, 2026-11-24 10:00:00 (UTC).
std::optional<int64_t> ParseIso(std::string_view text) {
    if (text.size() < 16 || text[4] != '-' || text[7] != '-' ||
        (text[10] != 'T' && text[10] != ' '))
        return std::nullopt;
    const auto year = Number(text.substr(0, 4), 4);
    const auto month = Number(text.substr(5, 2), 2);
    const auto day = Number(text.substr(8, 2), 2);
    std::string_view rest = text.substr(11);
    const std::size_t zoneAt = rest.find_first_of("Zz+-");
    const auto seconds = TimeOfDay(rest.substr(0, zoneAt));
    int zone = 0;
    if (zoneAt != std::string_view::npos) {
        const std::string_view name = rest.substr(zoneAt);
        const auto offset = EqualsNoCase(name, "Z") ? std::optional<int>(0) : ZoneOffset(name);
        if (!offset) return std::nullopt;
        zone = *offset;
    }
    if (!year || !month || !day || !seconds) return std::nullopt;
    return Combine(*year, *month, *day, *seconds, zone);
}

}  // namespace

namespace {

struct Civil {
    int64_t year, month, day, second;  // second of the day
    int64_t weekday;                   // 0: Sunday
};

// The inverse of DaysFromEpoch (proleptic Gregorian calendar).
Civil CivilFrom(int64_t seconds) {
    int64_t days = seconds / 86400;
    int64_t second = seconds % 86400;
    if (second < 0) {
        second += 86400;
        --days;
    }
    const int64_t weekday = ((days % 7) + 11) % 7;  // 1970-01-01 was a Thursday
    days += 719468;
    const int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const int64_t dayOfEra = days - era * 146097;
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t monthIndex = (5 * dayOfYear + 2) / 153;
    const int64_t month = monthIndex < 10 ? monthIndex + 3 : monthIndex - 9;
    return {yearOfEra + era * 400 + (month <= 2), month,
            dayOfYear - (153 * monthIndex + 2) / 5 + 1, second, weekday};
}

}  // namespace

std::string FormatFeedDate(int64_t seconds) {
    const Civil c = CivilFrom(seconds);
    char text[96];
    std::snprintf(text, sizeof text, "%04lld-%02lld-%02lld %02lld:%02lld:%02lld UTC",
                  static_cast<long long>(c.year), static_cast<long long>(c.month),
                  static_cast<long long>(c.day), static_cast<long long>(c.second / 3600),
                  static_cast<long long>(c.second / 60 % 60), static_cast<long long>(c.second % 60));
    return text;
}

std::string FormatRssDate(int64_t seconds) {
    static constexpr const char* kWeekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    const Civil c = CivilFrom(seconds);
    std::string month(kMonths[c.month - 1].substr(0, 3));
    month[0] = static_cast<char>(month[0] - 'a' + 'A');
    char text[96];
    std::snprintf(text, sizeof text, "%s, %02lld %s %04lld %02lld:%02lld:%02lld +0000",
                  kWeekdays[c.weekday], static_cast<long long>(c.day), month.c_str(),
                  static_cast<long long>(c.year), static_cast<long long>(c.second / 3600),
                  static_cast<long long>(c.second / 60 % 60), static_cast<long long>(c.second % 60));
    return text;
}

std::optional<int64_t> ParseFeedDate(std::string_view text) {
    text = internal::Trim(text);
    if (text.size() > 64) return std::nullopt;
    if (text.size() >= 10 && text[4] == '-') return ParseIso(text);

    std::vector<std::string_view> words;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = text.find_first_of(" \t,", at);
        if (end != at) words.push_back(text.substr(at, end - at));
        if (end == std::string_view::npos) break;
        at = end + 1;
    }
    // An optional weekday comes first; it is not checked against the date, as readers
    // of RSS do not check it either.
    if (!words.empty() && !Number(words[0], 2)) words.erase(words.begin());
    if (words.size() < 4 || words.size() > 5) return std::nullopt;

    const auto day = Number(words[0], 2);
    const auto month = Month(words[1]);
    auto year = Number(words[2], 4);
    const auto seconds = TimeOfDay(words[3]);
    const auto zone = words.size() == 5 ? ZoneOffset(words[4]) : std::optional<int>(0);
    if (!day || !month || !year || !seconds || !zone || words[2].size() == 3) return std::nullopt;
    // RFC 822's two-digit years: 00-49 this century, 50-99 the last, as RFC 2822 advises.
    if (words[2].size() == 2) *year += *year < 50 ? 2000 : 1900;
    return Combine(*year, *month, *day, *seconds, *zone);
}

}  // namespace Feed
