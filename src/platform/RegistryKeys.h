// Key handles over the read-only hives, in the manner of RegOpenKeyExW, RegCreateKeyExW,
// RegQueryValueExW and RegCloseKey. The registry layer in `system` is written against these.
//
// Every function returns 0 or a Win32 error number: 2 (ERROR_FILE_NOT_FOUND) for a missing
// key or value, 5 (ERROR_ACCESS_DENIED) for write access or for creating a key that does
// not exist (the hives are read-only), 6 (ERROR_INVALID_HANDLE) for a handle that is not
// open, 87 (ERROR_INVALID_PARAMETER) for bad arguments, 161 (ERROR_BAD_PATHNAME) for a
// subkey path with an empty component, 234 (ERROR_MORE_DATA) when the caller's buffer is too
// small, 1018 (ERROR_KEY_DELETED) when the key of an open handle vanished from its hive.
//
// An open handle reads the hive as it is at each query, so a changed file is seen at once.
// Thread safety: any thread; one handle may be used from several threads, but must not be
// closed while another thread still uses it.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/RegistryHive.h"

namespace Platform {

struct RegKeyObject;
using HKEY = RegKeyObject*;

inline constexpr uint32_t kRegCreatedNewKey = 1;
inline constexpr uint32_t kRegOpenedExistingKey = 2;

// The predefined handle of a root (its numeric value is the RegRoot value).
HKEY PredefinedRegKey(RegRoot root);

// The root of a predefined handle; nullopt for any other handle value.
std::optional<RegRoot> PredefinedRegRoot(HKEY key);

// Opens the subkey `subKey` of `parent` (a predefined handle or an open one). A null or
// empty subkey opens the parent again; a predefined parent is then given back itself.
uint32_t RegOpenKeyEx(HKEY parent, const wchar_t* subKey, uint32_t access, HKEY* result);

// Opens the subkey when it exists (disposition kRegOpenedExistingKey); creating a new key
// fails with 5, as the hives are read-only. `disposition` may be null.
uint32_t RegCreateKeyEx(HKEY parent, const wchar_t* subKey, uint32_t access, HKEY* result,
                        uint32_t* disposition);

// Reads a value: `type` (may be null) receives its type; `size` the byte size. With a null
// `data`, only the size is asked for. A null or empty name is the default value.
uint32_t RegQueryValueEx(HKEY key, const wchar_t* name, uint32_t* type, uint8_t* data,
                         uint32_t* size);

// Closes an open handle. Closing a predefined handle does nothing and succeeds.
uint32_t RegCloseKey(HKEY key);

}  // namespace Platform
