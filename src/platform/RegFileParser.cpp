#include "platform/RegFileParser.h"

#include <algorithm>
#include <cstdint>

#include "platform/Utf16Text.h"
#include "platform/internal/RegValueData.h"

namespace Platform {
namespace {

using internal::IsRegBlank;
using internal::OnlyCommentLeft;
using internal::ReadQuoted;
using internal::TrimRegBlanks;

constexpr wchar_t kReplacement = 0xFFFD;

wchar_t FoldChar(wchar_t c) {
    // Enough of Unicode's simple upper-to-lower mapping for the scripts key names are
    // written in; deliberately independent of the process locale so that look-ups do not
    // change with LANG.
    if (c >= L'A' && c <= L'Z') return c + 32;
    if (c < 0xC0) return c;
    if ((c >= 0xC0 && c <= 0xDE && c != 0xD7) || (c >= 0x391 && c <= 0x3AB && c != 0x3A2) ||
        (c >= 0x410 && c <= 0x42F))
        return c + 32;
    if (c >= 0x400 && c <= 0x40F) return c + 80;
    if (c >= 0x100 && c <= 0x17F && c != 0x130 && c != 0x131 && c != 0x138 && c != 0x149 &&
        c != 0x17F) {
        // Latin Extended-A pairs upper/lower case as even/odd, shifted by one between 0x139
        // and 0x148 and again from 0x179.
        const bool shifted = (c >= 0x139 && c <= 0x148) || c >= 0x179;
        if ((c % 2 == 0) != shifted) return c + 1;
        return c;
    }
    return c;
}

bool StartsWithNoCase(std::wstring_view s, std::wstring_view prefix) {
    if (s.size() < prefix.size()) return false;
    for (size_t i = 0; i < prefix.size(); ++i)
        if (FoldChar(s[i]) != FoldChar(prefix[i])) return false;
    return true;
}

void DecodeUtf16Le(std::string_view bytes, std::wstring& out) {
    std::u16string units(bytes.size() / 2, u'\0');
    for (size_t i = 0; i < units.size(); ++i)
        units[i] = static_cast<char16_t>(static_cast<uint8_t>(bytes[2 * i]) |
                                         (static_cast<uint8_t>(bytes[2 * i + 1]) << 8));
    out += WideFromUtf16(units);
    if (bytes.size() % 2 != 0) out.push_back(kReplacement);
}

void DecodeUtf8(std::string_view bytes, std::wstring& out) {
    size_t i = 0;
    while (i < bytes.size()) {
        const auto b = static_cast<uint8_t>(bytes[i]);
        if (b < 0x80) {
            out.push_back(b);
            ++i;
            continue;
        }
        int length = 0;
        uint32_t cp = 0;
        uint32_t min = 0;
        if ((b & 0xE0) == 0xC0) {
            length = 2, cp = b & 0x1F, min = 0x80;
        } else if ((b & 0xF0) == 0xE0) {
            length = 3, cp = b & 0x0F, min = 0x800;
        } else if ((b & 0xF8) == 0xF0) {
            length = 4, cp = b & 0x07, min = 0x10000;
        }
        bool valid = length != 0 && i + length <= bytes.size();
        for (int k = 1; valid && k < length; ++k) {
            const auto cont = static_cast<uint8_t>(bytes[i + k]);
            if ((cont & 0xC0) != 0x80) valid = false;
            cp = (cp << 6) | (cont & 0x3F);
        }
        if (valid && (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))) valid = false;
        if (!valid) {
            out.push_back(kReplacement);
            ++i;
            continue;
        }
        out.push_back(static_cast<wchar_t>(cp));
        i += length;
    }
}

struct RootName {
    RegRoot root;
    std::wstring_view abbreviation;
    std::wstring_view fullName;
};

constexpr RootName kRoots[] = {
    {RegRoot::CurrentUser, L"HKCU", L"HKEY_CURRENT_USER"},
    {RegRoot::LocalMachine, L"HKLM", L"HKEY_LOCAL_MACHINE"},
    {RegRoot::ClassesRoot, L"HKCR", L"HKEY_CLASSES_ROOT"},
    {RegRoot::CurrentConfig, L"HKCC", L"HKEY_CURRENT_CONFIG"},
    {RegRoot::Users, L"HKUS", L"HKEY_USERS"},
    {RegRoot::DynData, L"HKDD", L"HKEY_DYN_DATA"},
    {RegRoot::PerformanceData, L"HKPD", L"HKEY_PERFORMANCE_DATA"},
    {RegRoot::PerformanceNlsText, L"HKPN", L"HKEY_PERFORMANCE_NLSTEXT"},
    {RegRoot::PerformanceText, L"HKPT", L"HKEY_PERFORMANCE_TEXT"},
};

bool EqualNoCase(std::wstring_view a, std::wstring_view b) {
    return a.size() == b.size() && StartsWithNoCase(a, b);
}

}  // namespace

std::wstring_view RegRootFullName(RegRoot root) {
    for (const auto& r : kRoots)
        if (r.root == root) return r.fullName;
    return {};
}

std::optional<RegRoot> RegRootFromName(std::wstring_view name) {
    for (const auto& r : kRoots)
        if (EqualNoCase(name, r.abbreviation) || EqualNoCase(name, r.fullName)) return r.root;
    return std::nullopt;
}

std::wstring FoldRegistryName(std::wstring_view name) {
    std::wstring folded(name);
    for (auto& c : folded) c = FoldChar(c);
    return folded;
}

std::optional<std::vector<std::wstring_view>> SplitRegistryPath(std::wstring_view path) {
    std::vector<std::wstring_view> parts;
    if (!path.empty() && path.back() == L'\\') path.remove_suffix(1);
    if (path.empty()) return parts;
    size_t start = 0;
    while (true) {
        const size_t sep = path.find(L'\\', start);
        const auto part =
            path.substr(start, sep == std::wstring_view::npos ? path.npos : sep - start);
        if (part.empty()) return std::nullopt;
        parts.push_back(part);
        if (sep == std::wstring_view::npos) break;
        start = sep + 1;
    }
    return parts;
}

const RegKeyNode* RegHive::FindKey(std::wstring_view path) const {
    const auto parts = SplitRegistryPath(path);
    if (!parts) return nullptr;
    std::wstring folded;
    for (const auto& part : *parts) {
        if (!folded.empty()) folded.push_back(L'\\');
        folded += FoldRegistryName(part);
    }
    const auto it = keys_.find(folded);
    return it == keys_.end() ? nullptr : &it->second;
}

const RegValue* RegHive::FindValue(const RegKeyNode& key, std::wstring_view name) {
    for (const auto& v : key.values)
        if (EqualNoCase(v.name, name)) return &v.value;
    return nullptr;
}

std::vector<std::wstring> RegHive::Subkeys(std::wstring_view path) const {
    std::vector<std::wstring> names;
    if (FindKey(path) == nullptr) return names;
    std::wstring prefix = FoldRegistryName(path);
    if (!prefix.empty() && prefix.back() == L'\\') prefix.pop_back();
    if (!prefix.empty()) prefix.push_back(L'\\');
    for (auto it = keys_.lower_bound(prefix); it != keys_.end(); ++it) {
        const std::wstring& key = it->first;
        if (key.compare(0, prefix.size(), prefix) != 0) break;
        if (key.size() == prefix.size()) continue;  // the root itself
        if (key.find(L'\\', prefix.size()) == std::wstring::npos) names.push_back(it->second.name);
    }
    return names;
}

std::wstring RegFileParser::DecodeText(std::string_view bytes) {
    std::wstring text;
    text.reserve(bytes.size());
    const auto byte = [&bytes](size_t i) { return static_cast<uint8_t>(bytes[i]); };
    if (bytes.size() >= 2 && byte(0) == 0xFF && byte(1) == 0xFE) {
        DecodeUtf16Le(bytes.substr(2), text);
    } else if (bytes.size() >= 3 && byte(0) == 0xEF && byte(1) == 0xBB && byte(2) == 0xBF) {
        DecodeUtf8(bytes.substr(3), text);
    } else if (bytes.size() >= 4 && byte(0) != 0 && byte(1) == 0 && byte(2) != 0 && byte(3) == 0) {
        // An export whose mark was lost (cut by an editor or a copy tool).
        DecodeUtf16Le(bytes, text);
    } else {
        DecodeUtf8(bytes, text);
    }
    return text;
}

// The state of one parse: the hive being built and the key that value lines go to.
class RegFileParserState {
public:
    RegFileParserState(RegHive& hive, RegRoot root, std::vector<RegParseIssue>* issues)
        : hive_(hive), root_(root), issues_(issues) {}

    void Run(const std::wstring& text);

private:
    void Issue(size_t line, std::string reason) {
        if (issues_ != nullptr) issues_->push_back({line, std::move(reason)});
    }
    void KeyLine(std::wstring_view line, size_t lineNo);
    // Handles a value line, pulling continuation lines from `lines` at `next`.
    void ValueLine(std::wstring_view line, size_t lineNo,
                   const std::vector<std::wstring_view>& lines, size_t& next);
    static void SkipContinuation(std::wstring_view line,
                                 const std::vector<std::wstring_view>& lines, size_t& next);
    bool ParseHex(std::wstring data, RegValue& value, size_t lineNo,
                  const std::vector<std::wstring_view>& lines, size_t& next);

    RegHive& hive_;
    RegRoot root_;
    std::vector<RegParseIssue>* issues_;
    // The folded path of the current key; nullopt when value lines have nowhere to go.
    std::optional<std::wstring> current_;
    bool foreignRoot_ = false;
};

void RegFileParserState::Run(const std::wstring& text) {
    std::vector<std::wstring_view> lines;
    const std::wstring_view all(text);
    size_t start = 0;
    for (size_t i = 0; i <= all.size(); ++i) {
        if (i == all.size() || all[i] == L'\n' || all[i] == L'\r') {
            lines.push_back(all.substr(start, i - start));
            if (i + 1 < all.size() && all[i] == L'\r' && all[i + 1] == L'\n') ++i;
            start = i + 1;
        }
    }
    hive_.keys_[std::wstring()].name = std::wstring(RegRootFullName(root_));

    bool headerSeen = false;
    size_t index = 0;
    while (index < lines.size()) {
        const size_t lineNo = index + 1;
        const std::wstring_view line = TrimRegBlanks(lines[index++]);
        if (line.empty() || line.front() == L';') continue;
        if (!headerSeen) {
            headerSeen = true;
            if (line == L"Windows Registry Editor Version 5.00" || line == L"REGEDIT4") continue;
            Issue(lineNo, "missing header line");
        }
        if (line.front() == L'[') {
            KeyLine(line, lineNo);
        } else if (line.front() == L'"' || line.front() == L'@') {
            ValueLine(line, lineNo, lines, index);
        } else {
            Issue(lineNo, "not a key or value line");
        }
    }
}

void RegFileParserState::KeyLine(std::wstring_view line, size_t lineNo) {
    current_.reset();
    foreignRoot_ = false;
    const size_t close = line.rfind(L']');
    if (close == std::wstring_view::npos || !OnlyCommentLeft(line.substr(close + 1))) {
        Issue(lineNo, "key line without closing bracket");
        return;
    }
    std::wstring_view body = line.substr(1, close - 1);
    const bool remove = !body.empty() && body.front() == L'-';
    if (remove) body.remove_prefix(1);
    const size_t sep = body.find(L'\\');
    const auto root = RegRootFromName(body.substr(0, sep));
    if (!root) {
        Issue(lineNo, "unknown root key");
        return;
    }
    if (*root != root_) {
        foreignRoot_ = true;  // belongs to another hive; its values are ignored quietly
        return;
    }
    const auto parts = SplitRegistryPath(sep == std::wstring_view::npos ? std::wstring_view()
                                                                        : body.substr(sep + 1));
    if (!parts) {
        Issue(lineNo, "empty key name");
        return;
    }
    std::wstring folded;
    if (remove) {
        if (parts->empty()) {
            Issue(lineNo, "a root key cannot be deleted");
            return;
        }
        for (const auto& part : *parts) {
            if (!folded.empty()) folded.push_back(L'\\');
            folded += FoldRegistryName(part);
        }
        auto& keys = hive_.keys_;
        keys.erase(folded);
        const std::wstring prefix = folded + L'\\';
        auto it = keys.lower_bound(prefix);
        while (it != keys.end() && it->first.compare(0, prefix.size(), prefix) == 0)
            it = keys.erase(it);
        return;
    }
    // Creating a key makes its parents exist, as in the registry itself.
    for (const auto& part : *parts) {
        if (!folded.empty()) folded.push_back(L'\\');
        folded += FoldRegistryName(part);
        auto& node = hive_.keys_[folded];
        if (node.name.empty()) node.name = std::wstring(part);
    }
    current_ = std::move(folded);
}

void RegFileParserState::ValueLine(std::wstring_view line, size_t lineNo,
                                   const std::vector<std::wstring_view>& lines, size_t& next) {
    std::wstring name;
    size_t pos = 0;
    if (line.front() == L'@') {
        pos = 1;
    } else {
        pos = ReadQuoted(line, 0, name);
        if (pos == std::wstring_view::npos) {
            Issue(lineNo, "value name without closing quote");
            return;
        }
    }
    while (pos < line.size() && IsRegBlank(line[pos])) ++pos;
    if (pos >= line.size() || line[pos] != L'=') {
        Issue(lineNo, "value line without '='");
        return;
    }
    const std::wstring_view data = TrimRegBlanks(line.substr(pos + 1));

    RegValue value;
    bool remove = false;
    const char* issue = nullptr;
    if (!data.empty() && data.front() == L'-' && OnlyCommentLeft(data.substr(1))) {
        remove = true;
    } else if (!data.empty() && data.front() == L'"') {
        issue = internal::DecodeStringData(data, value);
    } else if (StartsWithNoCase(data, L"dword:")) {
        issue = internal::DecodeDwordData(data.substr(6), value);
    } else if (StartsWithNoCase(data, L"hex")) {
        std::wstring_view rest = data.substr(3);
        issue = internal::DecodeHexType(rest, value);
        if (issue != nullptr) {
            SkipContinuation(line, lines, next);
        } else if (!ParseHex(std::wstring(rest), value, lineNo, lines, next)) {
            return;
        }
    } else {
        issue = "unknown value data";
    }
    if (issue != nullptr) {
        Issue(lineNo, issue);
        return;
    }

    if (foreignRoot_) return;
    if (!current_) {
        Issue(lineNo, "value outside a key");
        return;
    }
    auto& values = hive_.keys_[*current_].values;
    const auto it = std::find_if(values.begin(), values.end(), [&name](const RegNamedValue& v) {
        return EqualNoCase(v.name, name);
    });
    if (remove) {
        if (it != values.end()) values.erase(it);
    } else if (it != values.end()) {
        it->name = std::move(name);
        it->value = std::move(value);
    } else {
        values.push_back({std::move(name), std::move(value)});
    }
}

void RegFileParserState::SkipContinuation(std::wstring_view line,
                                          const std::vector<std::wstring_view>& lines,
                                          size_t& next) {
    // The continuation lines belong to the broken value, not to the key.
    auto continues = [](std::wstring_view l) {
        l = TrimRegBlanks(l.substr(0, l.find(L';')));
        return !l.empty() && l.back() == L'\\';
    };
    bool more = continues(line);
    while (more && next < lines.size()) more = continues(lines[next++]);
}

bool RegFileParserState::ParseHex(std::wstring data, RegValue& value, size_t lineNo,
                                  const std::vector<std::wstring_view>& lines, size_t& next) {
    // Gather the continued lines first, so that a bad byte anywhere drops the whole value
    // and its continuation lines are not read as lines of their own.
    std::wstring all;
    while (true) {
        std::wstring_view part = data;
        const size_t comment = part.find(L';');
        part = TrimRegBlanks(part.substr(0, comment));
        const bool continued = !part.empty() && part.back() == L'\\';
        if (continued) part.remove_suffix(1);
        all += part;
        if (!continued || next >= lines.size()) break;
        data = std::wstring(lines[next++]);
    }
    if (const char* issue = internal::DecodeHexBytes(all, value.data)) {
        Issue(lineNo, issue);
        return false;
    }
    return true;
}

RegHive RegFileParser::Parse(std::string_view bytes, RegRoot root,
                             std::vector<RegParseIssue>* issues) {
    RegHive hive;
    RegFileParserState state(hive, root, issues);
    state.Run(DecodeText(bytes));
    return hive;
}

}  // namespace Platform
