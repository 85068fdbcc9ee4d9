// Run-time look-up of functions in shared libraries, the stand-in for LoadLibraryW and
// GetProcAddress.
//
// Thread safety: any thread.
#pragma once

#include <cstdint>

namespace Platform {

// Opens a loaded or loadable shared library by file name ("libc.so.6"); nullptr on
// failure, with *win32Error set (126 when it cannot be found).
void* LoadSharedLibrary(const char* fileName, uint32_t* win32Error);

// The address of an exported function; nullptr when the library has none by that name.
void* FindSharedLibraryFunction(void* library, const char* name);

}  // namespace Platform
