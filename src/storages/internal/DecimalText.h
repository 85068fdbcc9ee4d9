// Decimal numbers in resource texts, read the three ways the resource files use them: a
// whole text that must be a number, the leading number of a text (as C's atoi), and a
// run of numbers between fixed separators (as the "%d" fields of scanf).
//
// Thread safety: pure functions. Nothing here throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace ResourceLib::internal {

// The whole text as a signed 32-bit decimal ("-12", "+7"); false for anything else,
// blanks, empty text and values out of range included.
bool ParseDecimal(std::wstring_view text, int32_t& value);

// The whole text as a number, or 0 when it is none.
int32_t DecimalOrZero(std::wstring_view text);

// Blanks skipped, an optional sign, then as many digits as follow; 0 without digits.
// Values beyond the 32-bit range saturate.
int32_t LeadingDecimal(std::wstring_view text);

// Reads `count` numbers from `text` the way scanf reads a format of `open`, then "%d"
// fields separated by `separator` (each number may be preceded by blanks; the literal
// characters must follow without blanks). Text after the last number is ignored. True when
// all `count` numbers were read.
bool ScanDecimals(std::wstring_view text, std::wstring_view open, wchar_t separator,
                  int32_t* values, std::size_t count);

}  // namespace ResourceLib::internal
