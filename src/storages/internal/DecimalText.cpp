#include "storages/internal/DecimalText.h"

#include <algorithm>
#include <cwctype>
#include <limits>

namespace ResourceLib::internal {

namespace {

bool IsDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

// Reads an optional sign and digits at `pos` (no blanks). Magnitudes beyond 2^32 are
// held at 2^32, which is enough to tell values outside the 32-bit range. Returns false,
// with `pos` unchanged, when no digit follows.
bool ReadNumber(std::wstring_view text, std::size_t& pos, int64_t& value) {
    std::size_t at = pos;
    bool negative = false;
    if (at < text.size() && (text[at] == L'+' || text[at] == L'-')) negative = text[at++] == L'-';
    if (at >= text.size() || !IsDigit(text[at])) return false;
    constexpr int64_t kCap = int64_t(1) << 32;
    int64_t magnitude = 0;
    for (; at < text.size() && IsDigit(text[at]); ++at) {
        magnitude = std::min(kCap, magnitude * 10 + (text[at] - L'0'));
    }
    value = negative ? -magnitude : magnitude;
    pos = at;
    return true;
}

int32_t Saturate(int64_t value) {
    return int32_t(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                       std::numeric_limits<int32_t>::max()));
}

void SkipBlanks(std::wstring_view text, std::size_t& pos) {
    while (pos < text.size() && std::iswspace(static_cast<wint_t>(text[pos]))) ++pos;
}

}  // namespace

bool ParseDecimal(std::wstring_view text, int32_t& value) {
    std::size_t pos = 0;
    int64_t number = 0;
    if (!ReadNumber(text, pos, number) || pos != text.size()) return false;
    if (number != Saturate(number)) return false;
    value = int32_t(number);
    return true;
}

int32_t DecimalOrZero(std::wstring_view text) {
    int32_t value = 0;
    return ParseDecimal(text, value) ? value : 0;
}

int32_t LeadingDecimal(std::wstring_view text) {
    std::size_t pos = 0;
    SkipBlanks(text, pos);
    int64_t value = 0;
    return ReadNumber(text, pos, value) ? Saturate(value) : 0;
}

bool ScanDecimals(std::wstring_view text, std::wstring_view open, wchar_t separator,
                  int32_t* values, std::size_t count) {
    if (text.substr(0, open.size()) != open) return false;
    std::size_t pos = open.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0) {
            if (pos >= text.size() || text[pos] != separator) return false;
            ++pos;
        }
        SkipBlanks(text, pos);
        int64_t value = 0;
        if (!ReadNumber(text, pos, value)) return false;
        values[i] = Saturate(value);
    }
    return true;
}

}  // namespace ResourceLib::internal
