// Reader of `.reg` files as people really produce them: the registry editor's UTF-16LE
// export with a byte-order mark and CRLF line ends, and hand-written UTF-8 files with or
// without a mark and with LF line ends.
//
// Understood: the header line ("Windows Registry Editor Version 5.00" or "REGEDIT4"), key
// lines "[HKEY_CURRENT_USER\Software\X]", key deletions "[-...]", values `"name"=...` and
// `@=...` (the default value), value deletions `"name"=-`, string data `"text"` with the
// escapes \\ and \", `dword:0000002a`, `hex:..`, `hex(N):..` for any type number N (hex(2)
// is REG_EXPAND_SZ as UTF-16LE bytes, hex(7) REG_MULTI_SZ, hex(b) REG_QWORD), hex data
// continued over several lines with a trailing "\", and comments after ";". A later line wins
// over an earlier one. Key and value names compare without regard to case.
//
// A malformed line is skipped (and listed in the issues) and the rest of the file still
// counts. Parsing never throws except std::bad_alloc.
//
// Thread safety: a RegHive is immutable after parsing and may be read from any thread.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/RegistryHive.h"

namespace Platform {

// One key of a hive: its own name as the file spells it and its values in file order.
struct RegKeyNode {
    std::wstring name;
    std::vector<RegNamedValue> values;
};

// A line that was skipped, with its 1-based physical line number.
struct RegParseIssue {
    size_t line = 0;
    std::string reason;
};

// The keys of one root as read from one file.
class RegFileParserState;

class RegHive {
public:
    // The key at `path` (components separated by "\", without the root name, one trailing
    // "\" allowed); nullptr when it does not exist. The empty path is the root key.
    const RegKeyNode* FindKey(std::wstring_view path) const;

    // A value of a key; nullptr when the value does not exist. The empty name is the
    // default value.
    static const RegValue* FindValue(const RegKeyNode& key, std::wstring_view name);

    // The names of the direct subkeys of `path`, in case-insensitive order.
    std::vector<std::wstring> Subkeys(std::wstring_view path) const;

    // Number of keys, the root included.
    size_t KeyCount() const { return keys_.size(); }

private:
    friend class RegFileParserState;

    // Keyed by the case-folded path without root; the root is the empty path.
    std::map<std::wstring, RegKeyNode> keys_;
};

class RegFileParser {
public:
    // Parses the raw bytes of a file and keeps the keys that belong to `root`; key lines
    // naming another (valid) root are ignored with their values. `issues`, when given,
    // receives the skipped lines.
    static RegHive Parse(std::string_view bytes, RegRoot root,
                         std::vector<RegParseIssue>* issues = nullptr);

    // The file's text as wide characters: UTF-16LE when it starts with FF FE (or looks like
    // UTF-16LE without a mark), else UTF-8 with an optional mark. Bytes that are not valid
    // in the encoding become U+FFFD.
    static std::wstring DecodeText(std::string_view bytes);
};

// The case folding used for key and value names.
std::wstring FoldRegistryName(std::wstring_view name);

// Splits "a\b\c" into {"a", "b", "c"}, ignoring one trailing "\"; nullopt when a component
// is empty (a leading or doubled "\"). The empty path gives no components.
std::optional<std::vector<std::wstring_view>> SplitRegistryPath(std::wstring_view path);

}  // namespace Platform
