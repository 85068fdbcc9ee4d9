// Registry root keys by name, the key handle type and the access constants the registry
// layer uses. The registry is read-only: the hives are `.reg` files (see
// platform/RegistryHive.h for where they lie).
//
// Thread safety: everything here is pure and may be called from any thread.
#pragma once

#include <cstdint>
#include <string_view>

#include "platform/RegistryKeys.h"

namespace Registry {

using HKEY = Platform::HKEY;

// The predefined handles, written out (rather than asked of the platform) so that they are
// constants before any dynamic initialisation runs; they equal Platform::PredefinedRegKey.
inline const HKEY HKEY_CLASSES_ROOT = reinterpret_cast<HKEY>(uintptr_t{0x80000000});
inline const HKEY HKEY_CURRENT_USER = reinterpret_cast<HKEY>(uintptr_t{0x80000001});
inline const HKEY HKEY_LOCAL_MACHINE = reinterpret_cast<HKEY>(uintptr_t{0x80000002});
inline const HKEY HKEY_USERS = reinterpret_cast<HKEY>(uintptr_t{0x80000003});
inline const HKEY HKEY_PERFORMANCE_DATA = reinterpret_cast<HKEY>(uintptr_t{0x80000004});
inline const HKEY HKEY_CURRENT_CONFIG = reinterpret_cast<HKEY>(uintptr_t{0x80000005});
inline const HKEY HKEY_DYN_DATA = reinterpret_cast<HKEY>(uintptr_t{0x80000006});
inline const HKEY HKEY_PERFORMANCE_TEXT = reinterpret_cast<HKEY>(uintptr_t{0x80000050});
inline const HKEY HKEY_PERFORMANCE_NLSTEXT = reinterpret_cast<HKEY>(uintptr_t{0x80000060});

inline constexpr uint32_t KEY_READ = 0x20019;
inline constexpr uint32_t KEY_WOW64_64KEY = 0x100;
inline constexpr uint32_t KEY_WOW64_32KEY = 0x200;
inline constexpr uint32_t KEY_WOW64_RES = 0x300;

inline constexpr uint32_t REG_NONE = 0;
inline constexpr uint32_t REG_SZ = 1;
inline constexpr uint32_t REG_EXPAND_SZ = 2;
inline constexpr uint32_t REG_BINARY = 3;
inline constexpr uint32_t REG_DWORD = 4;
inline constexpr uint32_t REG_MULTI_SZ = 7;
inline constexpr uint32_t REG_QWORD = 11;

// Number of known roots; FindRootIndex gives it for "no root".
inline constexpr int kRootCount = 9;

// Index 0..8 in look-up order: HKCU, HKLM, HKCR, HKCC, HKUS, HKDD, HKPD, HKPN, HKPT.
std::wstring_view GetRootAbbreviation(int index);
std::wstring_view GetRootFullName(int index);
HKEY GetRootHandle(int index);

// The first index whose abbreviation or full name equals `name`, both sides lowered with
// the current locale's tolower; kRootCount when none does.
int FindRootIndex(std::wstring_view name);

// The predefined handle of the full root name `name` (one trailing "\" is ignored),
// compared exactly; nullptr when it names no root. Abbreviations are not accepted here.
HKEY RootFromFullName(std::wstring_view name);

// The numeric value of a handle, for printing and comparing with predefined values.
inline uint32_t HandleValue(HKEY key) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(key));
}

}  // namespace Registry
