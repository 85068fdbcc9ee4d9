// Texts of Win32 error numbers and HRESULTs, and the translation of errno values into
// Win32 error numbers. Linux has no FormatMessageW; this is our own table of the messages
// the updater can produce, in the system's English wording.
//
// Thread safety: all functions are pure and may be called from any thread.
#pragma once

#include <cstdint>

namespace Platform {

// The message for a Win32 error number (1..65535) or an HRESULT (given as its unsigned
// bit pattern), ending in "\r\n" as the Windows message table gives it; nullptr when the
// number has no text.
const char* SystemMessageText(uint32_t number);

// The nearest Win32 error number for an errno value; 0 stays 0, and an errno without a
// closer match becomes ERROR_GEN_FAILURE (31).
uint32_t Win32ErrorFromErrno(int errnoValue);

// The Win32 error number for the calling thread's current errno.
uint32_t LastWin32Error();

}  // namespace Platform
