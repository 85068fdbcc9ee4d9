// Version information of a file: its version resource (VS_VERSIONINFO) and the string
// values in it, as the product's configuration asks for its "FileVersion". Also the
// bounded text formatter that builds the query paths.
//
// Nothing here throws for a missing or unreadable version resource: the record is empty,
// a value is null, and finally the text is "". Failures are reported at level
// GuardedError or Warning, which never throw.
// Thread safety: a record is private to its user; the free functions keep no state.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/VersionInfo.h"

namespace System {

// Used when a file has no translation table: language 0x0409, code page 1200 (0x04B0).
constexpr uint32_t kDefaultTranslation = 0x04B00409;

class ModuleVersion {
public:
    // Reads the version resource of the file at `modulePath`. An empty path is reported
    // ("((!!modulePath))") and leaves the record empty, as does a file without one.
    explicit ModuleVersion(const std::wstring& modulePath);

    // The string value `name` of the file's first translation (or of the default one),
    // as "\StringFileInfo\llllcccc\" + name; null when the record is empty (reported as
    // "((!m_verBuf.empty()))") or the value is missing. The pointer lives as long as the
    // record.
    const wchar_t* QueryString(const std::wstring& name) const;

    // QueryString("FileVersion"), or "" when it is null.
    std::wstring GetFileVersion() const;

    // The bytes of the version resource; empty when there is none.
    const std::vector<uint8_t>& GetBuffer() const { return m_verBuf; }

private:
    std::vector<uint8_t> m_verBuf;
    Platform::VersionInfo m_info;
    // Wide copies of the values handed out (the resource holds UTF-16 text).
    mutable std::map<std::wstring, std::wstring> m_strings;
};

// The "FileVersion" of the file at `path` with every "," replaced by "." (spaces stay:
// "1, 4, 1, 0" gives "1. 4. 1. 0"); "" when it has none.
std::wstring GetDottedFileVersion(const std::wstring& path);

// printf-style formatting (wide format; %ls for wide texts) into a buffer of 32768
// characters. A null format counts as "". A result that does not fit is cut to 32767
// characters followed by "... (truncated)"; a format that cannot be applied (a bad
// conversion or an argument that cannot be encoded) is reported at level Warning as
// "((hr))" and gives the format itself followed by "... (bad args)".
std::wstring FormatText(const wchar_t* format, ...);

}  // namespace System
