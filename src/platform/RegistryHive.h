// The registry on Linux: read-only hives kept as `.reg` text files, the format that the
// Windows registry editor exports ("Windows Registry Editor Version 5.00").
//
// Where the hives lie: when LUMETTA_REGISTRY_DIR is set, every hive is the file
// "<ROOT FULL NAME>.reg" in that folder (for example "HKEY_CURRENT_USER.reg"). Otherwise
// HKEY_CURRENT_USER is "$XDG_CONFIG_HOME/lumetta/registry/HKEY_CURRENT_USER.reg" (default
// "~/.config/...") and every other root is "/etc/lumetta/registry/<ROOT FULL NAME>.reg".
// A missing or unreadable file is an empty hive. A hive file holds the keys of its own root;
// key lines naming another root are ignored.
//
// A hive is parsed once and parsed again only when its file changes (device, inode, size or
// modification time differ), so repeated look-ups are cheap.
//
// Key paths are given without the root name ("Software\\Utility"), with "\\" between
// components; key and value names compare without regard to case. The empty value name
// is the key's default value ("@" in the file).
//
// These functions depend on nothing but the C++ library, so the lowest layers (the
// diagnostic log) may use them. Thread safety: any thread. They never throw for a bad or
// missing hive; std::bad_alloc may escape.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

// The predefined root keys, with the numeric value of their predefined handles.
enum class RegRoot : uint32_t {
    ClassesRoot = 0x80000000,
    CurrentUser = 0x80000001,
    LocalMachine = 0x80000002,
    Users = 0x80000003,
    PerformanceData = 0x80000004,
    CurrentConfig = 0x80000005,
    DynData = 0x80000006,
    PerformanceText = 0x80000050,
    PerformanceNlsText = 0x80000060,
};

// Value types, numbered as the registry numbers them.
inline constexpr uint32_t kRegNone = 0;
inline constexpr uint32_t kRegSz = 1;
inline constexpr uint32_t kRegExpandSz = 2;
inline constexpr uint32_t kRegBinary = 3;
inline constexpr uint32_t kRegDword = 4;
inline constexpr uint32_t kRegMultiSz = 7;
inline constexpr uint32_t kRegQword = 11;

// One value as stored: its type and raw bytes (strings as UTF-16LE, normally with their
// terminating zero; a DWORD as 4 little-endian bytes).
struct RegValue {
    uint32_t type = kRegNone;
    std::vector<uint8_t> data;

    bool operator==(const RegValue&) const = default;
};

// A value with its name as the hive file spells it.
struct RegNamedValue {
    std::wstring name;
    RegValue value;
};

// The full name of a root ("HKEY_CURRENT_USER"); empty for a value that names no root.
std::wstring_view RegRootFullName(RegRoot root);

// The root whose full name or abbreviation ("HKCU", "HKLM", "HKCR", "HKCC", "HKUS", "HKDD",
// "HKPD", "HKPN", "HKPT") equals `name`, ignoring case; nullopt for any other text.
std::optional<RegRoot> RegRootFromName(std::wstring_view name);

// The file that holds the hive of `root` (UTF-8 path), by the rules above.
std::string RegistryHivePath(RegRoot root);

// The value `valueName` of the key `keyPath`; nullopt when the key or the value does not
// exist.
std::optional<RegValue> ReadRegistryValue(RegRoot root, std::wstring_view keyPath,
                                          std::wstring_view valueName);

// Whether the key exists. A key exists when the hive names it or one of its subkeys; the
// empty path (the root itself) always exists.
bool RegistryKeyExists(RegRoot root, std::wstring_view keyPath);

// The values of a key in the order of the hive file; nullopt when the key does not exist.
std::optional<std::vector<RegNamedValue>> ListRegistryValues(RegRoot root,
                                                             std::wstring_view keyPath);

// The names of the direct subkeys of a key, in case-insensitive order; nullopt when the key
// does not exist.
std::optional<std::vector<std::wstring>> ListRegistrySubkeys(RegRoot root,
                                                             std::wstring_view keyPath);

// A line of a hive file that could not be understood and was skipped, or (line 0) a hive
// file that exists but cannot be read.
struct RegHiveProblem {
    std::string file;  // UTF-8 path
    size_t line = 0;   // 1-based
    std::string reason;

    bool operator==(const RegHiveProblem&) const = default;
};

// The problems of the hive file of `root` as it is now, read afresh: every skipped line, or
// one problem when the file exists but cannot be read. A missing file has none.
std::vector<RegHiveProblem> CheckRegistryHive(RegRoot root);

// The skipped lines of the hive files that look-ups have parsed since the last call (each
// parse once, a file parsed again replacing its older lines), so that a higher layer can
// report them. Cheap when there are none.
std::vector<RegHiveProblem> TakeRegistryHiveProblems();

// How many times hive files have been parsed in this process; lets tests see that an
// unchanged file is not parsed again.
uint64_t RegistryHiveParseCount();

}  // namespace Platform
