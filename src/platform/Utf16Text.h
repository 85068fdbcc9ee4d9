// UTF-16 text as the Windows resource format stores it, turned into the system's wide
// strings (UTF-32 here) and UTF-8, and the one UTF-8 encoder of the system. Unpaired
// surrogates and values that are no Unicode scalar value become U+FFFD; nothing fails.
//
// Thread safety: pure functions, any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Platform {

std::wstring WideFromUtf16(std::u16string_view text);
std::u16string Utf16FromWide(std::wstring_view text);
std::string Utf8FromUtf16(std::u16string_view text);
std::string Utf8FromWide(std::wstring_view text);

// Writes the UTF-8 form of one character to out[0..4) and returns its length (1 to 4).
// Never allocates, so that code short of memory may use it.
std::size_t EncodeUtf8(char32_t character, char* out) noexcept;

}  // namespace Platform
