#include "platform/Utf16Text.h"

#include <cstdint>

namespace Platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

template <class Sink>
void DecodeUtf16(std::u16string_view text, Sink&& sink) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char32_t unit = text[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
            text[i + 1] <= 0xDFFF) {
            sink(0x10000 + ((unit - 0xD800) << 10) + (char32_t(text[i + 1]) - 0xDC00));
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            sink(kReplacement);
        } else {
            sink(unit);
        }
    }
}

}  // namespace

std::wstring WideFromUtf16(std::u16string_view text) {
    std::wstring out;
    out.reserve(text.size());
    DecodeUtf16(text, [&](char32_t c) { out.push_back(static_cast<wchar_t>(c)); });
    return out;
}

std::u16string Utf16FromWide(std::wstring_view text) {
    std::u16string out;
    out.reserve(text.size());
    for (wchar_t wc : text) {
        auto c = static_cast<uint32_t>(wc);
        if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacement;
        if (c >= 0x10000) {
            c -= 0x10000;
            out.push_back(static_cast<char16_t>(0xD800 + (c >> 10)));
            out.push_back(static_cast<char16_t>(0xDC00 + (c & 0x3FF)));
        } else {
            out.push_back(static_cast<char16_t>(c));
        }
    }
    return out;
}

std::string Utf8FromUtf16(std::u16string_view text) {
    std::string out;
    out.reserve(text.size());
    char bytes[4];
    DecodeUtf16(text, [&](char32_t c) { out.append(bytes, EncodeUtf8(c, bytes)); });
    return out;
}

std::string Utf8FromWide(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    char bytes[4];
    for (wchar_t c : text) out.append(bytes, EncodeUtf8(static_cast<char32_t>(c), bytes));
    return out;
}

std::size_t EncodeUtf8(char32_t c, char* out) noexcept {
    if (c > 0x10FFFF || (c >= 0xD800 && c <= 0xDFFF)) c = kReplacement;
    if (c < 0x80) {
        out[0] = static_cast<char>(c);
        return 1;
    }
    if (c < 0x800) {
        out[0] = static_cast<char>(0xC0 | (c >> 6));
        out[1] = static_cast<char>(0x80 | (c & 0x3F));
        return 2;
    }
    if (c < 0x10000) {
        out[0] = static_cast<char>(0xE0 | (c >> 12));
        out[1] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
        out[2] = static_cast<char>(0x80 | (c & 0x3F));
        return 3;
    }
    out[0] = static_cast<char>(0xF0 | (c >> 18));
    out[1] = static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out[2] = static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out[3] = static_cast<char>(0x80 | (c & 0x3F));
    return 4;
}

}  // namespace Platform
