// The data part of a value line in a .reg file ("text", dword:..., hex(N):...) decoded into
// the bytes the registry stores, and the small lexical pieces the line reader shares with it.
//
// Thread safety: pure functions, any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RegistryHive.h"

namespace Platform::internal {

bool IsRegBlank(wchar_t c);
// Without the blanks and tabs at either end.
std::wstring_view TrimRegBlanks(std::wstring_view text);
// Only blanks or a comment (";...") may follow the data of a line.
bool OnlyCommentLeft(std::wstring_view rest);

// Reads a quoted text starting at text[pos] == '"'. Only \\ and \" are escapes, as the
// registry editor writes them; any other backslash stands for itself. Returns the position
// after the closing quote, or npos when the quote is missing.
std::size_t ReadQuoted(std::wstring_view text, std::size_t pos, std::wstring& out);

// Each decoder returns nullptr when `value` was filled, else the reason the line is skipped.

// `data` starts with the opening quote: a REG_SZ stored as zero-terminated UTF-16LE.
const char* DecodeStringData(std::wstring_view data, RegValue& value);

// The hex digits after "dword:" (a comment may follow): a REG_DWORD, little-endian.
const char* DecodeDwordData(std::wstring_view digits, RegValue& value);

// What follows "hex": an optional "(N)" type number (REG_BINARY without one) and the ':'.
// On success `rest` is left at the byte list after the ':'.
const char* DecodeHexType(std::wstring_view& rest, RegValue& value);

// A comma-separated list of hex bytes, continuation lines already joined and comments
// removed; one trailing comma is allowed.
const char* DecodeHexBytes(std::wstring_view text, std::vector<uint8_t>& data);

}  // namespace Platform::internal
