#include "platform/internal/RegValueData.h"

#include <algorithm>

namespace Platform::internal {
namespace {

int HexDigit(wchar_t c) {
    if (c >= L'0' && c <= L'9') return c - L'0';
    if (c >= L'a' && c <= L'f') return c - L'a' + 10;
    if (c >= L'A' && c <= L'F') return c - L'A' + 10;
    return -1;
}

bool AllHexDigits(std::wstring_view digits) {
    return std::all_of(digits.begin(), digits.end(), [](wchar_t c) { return HexDigit(c) >= 0; });
}

void AppendUtf16(std::vector<uint8_t>& out, char32_t c) {
    auto put = [&out](uint32_t unit) {
        out.push_back(static_cast<uint8_t>(unit & 0xFF));
        out.push_back(static_cast<uint8_t>(unit >> 8));
    };
    if (c >= 0x10000 && c <= 0x10FFFF) {
        c -= 0x10000;
        put(0xD800 + (c >> 10));
        put(0xDC00 + (c & 0x3FF));
    } else {
        put(static_cast<uint32_t>(c) & 0xFFFF);
    }
}

}  // namespace

bool IsRegBlank(wchar_t c) {
    return c == L' ' || c == L'\t';
}

std::wstring_view TrimRegBlanks(std::wstring_view text) {
    while (!text.empty() && IsRegBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && IsRegBlank(text.back())) text.remove_suffix(1);
    return text;
}

bool OnlyCommentLeft(std::wstring_view rest) {
    rest = TrimRegBlanks(rest);
    return rest.empty() || rest.front() == L';';
}

std::size_t ReadQuoted(std::wstring_view text, std::size_t pos, std::wstring& out) {
    out.clear();
    for (std::size_t i = pos + 1; i < text.size(); ++i) {
        const wchar_t c = text[i];
        if (c == L'"') return i + 1;
        if (c == L'\\' && i + 1 < text.size() && (text[i + 1] == L'\\' || text[i + 1] == L'"')) {
            out.push_back(text[++i]);
            continue;
        }
        out.push_back(c);
    }
    return std::wstring_view::npos;
}

const char* DecodeStringData(std::wstring_view data, RegValue& value) {
    std::wstring text;
    const std::size_t end = ReadQuoted(data, 0, text);
    if (end == std::wstring_view::npos || !OnlyCommentLeft(data.substr(end)))
        return "string data without closing quote";
    value.type = kRegSz;
    for (wchar_t c : text) AppendUtf16(value.data, static_cast<char32_t>(c));
    AppendUtf16(value.data, 0);
    return nullptr;
}

const char* DecodeDwordData(std::wstring_view digits, RegValue& value) {
    digits = TrimRegBlanks(digits.substr(0, digits.find(L';')));
    if (digits.empty() || digits.size() > 8 || !AllHexDigits(digits)) return "bad dword data";
    uint32_t number = 0;
    for (wchar_t c : digits) number = number * 16 + static_cast<uint32_t>(HexDigit(c));
    value.type = kRegDword;
    for (int i = 0; i < 4; ++i) value.data.push_back(static_cast<uint8_t>(number >> (8 * i)));
    return nullptr;
}

const char* DecodeHexType(std::wstring_view& rest, RegValue& value) {
    value.type = kRegBinary;
    if (!rest.empty() && rest.front() == L'(') {
        const std::size_t close = rest.find(L')');
        const auto digits = rest.substr(1, close == rest.npos ? 0 : close - 1);
        if (close == rest.npos || digits.empty() || digits.size() > 8 || !AllHexDigits(digits))
            return "bad hex type";
        value.type = 0;
        for (wchar_t c : digits) value.type = value.type * 16 + static_cast<uint32_t>(HexDigit(c));
        rest = rest.substr(close + 1);
    }
    if (rest.empty() || rest.front() != L':') return "bad hex data";
    rest.remove_prefix(1);
    return nullptr;
}

const char* DecodeHexBytes(std::wstring_view text, std::vector<uint8_t>& data) {
    data.clear();
    std::size_t pos = 0;
    while (pos < text.size()) {
        std::size_t comma = text.find(L',', pos);
        if (comma == std::wstring_view::npos) comma = text.size();
        const std::wstring_view item = TrimRegBlanks(text.substr(pos, comma - pos));
        const bool last = comma == text.size();
        if (item.empty() && last && !data.empty()) break;  // a trailing comma
        if (item.empty() || item.size() > 2 || HexDigit(item[0]) < 0 ||
            (item.size() == 2 && HexDigit(item[1]) < 0))
            return "bad hex byte";
        int byte = HexDigit(item[0]);
        if (item.size() == 2) byte = byte * 16 + HexDigit(item[1]);
        data.push_back(static_cast<uint8_t>(byte));
        pos = comma + 1;
    }
    return nullptr;
}

}  // namespace Platform::internal
