// Conversions between UTF-8 (the system's narrow text) and wide text (UTF-32 here).
// Invalid input is not an error: ill-formed UTF-8 sequences and wide values that are no
// Unicode scalar value become U+FFFD, as the platform converters do without flags.
//
// Thread safety: pure functions, any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace STLHelpers {

// The length -1 means the text is zero-terminated and is measured here. A null text with
// a length other than 0 cannot be converted: the result is empty.
std::wstring Utf8ToWide(const char* text, std::ptrdiff_t length = -1);
std::string WideToUtf8(const wchar_t* text, std::ptrdiff_t length = -1);

inline std::wstring Utf8ToWide(std::string_view text) {
    return Utf8ToWide(text.data(), static_cast<std::ptrdiff_t>(text.size()));
}
inline std::string WideToUtf8(std::wstring_view text) {
    return WideToUtf8(text.data(), static_cast<std::ptrdiff_t>(text.size()));
}

// Appends the UTF-8 form of one wide character to out[0..capacity) at *used, writing
// nothing when it does not fit whole. Returns false when it did not fit. Never allocates;
// the exception types build their messages with it.
bool AppendUtf8(wchar_t ch, char* out, std::size_t capacity, std::size_t* used);

}  // namespace STLHelpers
