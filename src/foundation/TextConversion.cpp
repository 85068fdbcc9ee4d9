#include "foundation/TextConversion.h"

#include <cstring>
#include <cwchar>

#include "platform/Utf16Text.h"

namespace STLHelpers {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes one UTF-8 sequence at text[0..length), as a strict decoder does: overlong forms,
// surrogates and truncated sequences give U+FFFD for the longest ill-formed prefix.
char32_t DecodeOne(const unsigned char* text, std::size_t length, std::size_t* consumed) {
    const unsigned char lead = text[0];
    *consumed = 1;
    if (lead < 0x80) return lead;
    std::size_t extra;
    char32_t cp;
    unsigned char lowest = 0x80, highest = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        extra = 1;
        cp = lead & 0x1F;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        extra = 2;
        cp = lead & 0x0F;
        if (lead == 0xE0) lowest = 0xA0;
        if (lead == 0xED) highest = 0x9F;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        extra = 3;
        cp = lead & 0x07;
        if (lead == 0xF0) lowest = 0x90;
        if (lead == 0xF4) highest = 0x8F;
    } else {
        return kReplacement;
    }
    for (std::size_t i = 1; i <= extra; ++i) {
        if (i >= length) return kReplacement;
        const unsigned char c = text[i];
        if (c < lowest || c > highest) return kReplacement;
        lowest = 0x80;
        highest = 0xBF;
        cp = (cp << 6) | (c & 0x3F);
        *consumed = i + 1;
    }
    return cp;
}

}  // namespace

std::wstring Utf8ToWide(const char* text, std::ptrdiff_t length) {
    if (text == nullptr) return {};
    const std::size_t n = length < 0 ? std::strlen(text) : static_cast<std::size_t>(length);
    std::wstring out;
    out.reserve(n);
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    for (std::size_t i = 0; i < n;) {
        std::size_t consumed;
        out.push_back(static_cast<wchar_t>(DecodeOne(bytes + i, n - i, &consumed)));
        i += consumed;
    }
    return out;
}

std::string WideToUtf8(const wchar_t* text, std::ptrdiff_t length) {
    if (text == nullptr) return {};
    const std::size_t n = length < 0 ? std::wcslen(text) : static_cast<std::size_t>(length);
    std::string out;
    out.reserve(n);
    char buf[4];
    for (std::size_t i = 0; i < n; ++i)
        out.append(buf, Platform::EncodeUtf8(static_cast<char32_t>(text[i]), buf));
    return out;
}

bool AppendUtf8(wchar_t ch, char* out, std::size_t capacity, std::size_t* used) {
    char buf[4];
    const std::size_t n = Platform::EncodeUtf8(static_cast<char32_t>(ch), buf);
    if (*used + n > capacity) return false;
    std::memcpy(out + *used, buf, n);
    *used += n;
    return true;
}

}  // namespace STLHelpers
