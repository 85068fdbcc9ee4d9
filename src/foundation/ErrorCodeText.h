// The text of an ErrorCode, as reports show it: "Code 0x80004005: Unspecified error",
// "Code 2: The system cannot find the file specified.". A wrapped Win32 error is shown by
// its Win32 number; a number without a system text ends after ": ".
//
// Thread safety: pure; any thread.
#pragma once

#include <string>

#include "foundation/ErrorCode.h"

namespace ErrorHandling {

std::wstring ErrorCodeText(ErrorCode code);

}  // namespace ErrorHandling
