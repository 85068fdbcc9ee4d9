// A registry path given as text, root name included: "HKLM\Software\X" or
// "HKEY_CURRENT_USER\Software". Unlike Key, abbreviated root names are accepted.
//
// Thread safety: one thread at a time. Nothing here throws except std::bad_alloc.
#pragma once

#include <string>
#include <string_view>

#include "system/RegPathConvention.h"
#include "system/RegistryRoots.h"

namespace Registry {

class KeyPath {
public:
    KeyPath() = default;
    explicit KeyPath(std::wstring_view text) { Add(text); }

    // While there is no root, `text` is split into components; a first component that names
    // a root (FindRootIndex: full or abbreviated, any case) sets the root and is dropped, and
    // the rest are appended one by one. Once a root is set, `text` is appended whole.
    KeyPath& Add(std::wstring_view text);
    KeyPath& operator/=(std::wstring_view text) { return Add(text); }

    HKEY GetRoot() const { return root_; }
    // The subkey path, without root name.
    const std::wstring& GetPath() const { return path_; }
    // "HKEY_LOCAL_MACHINE\Software\X"; just the path when there is no root.
    std::wstring GetFullPath() const;
    const RegPathConvention& GetConvention() const { return convention_; }

    // Reads in the forced 64-bit view when set (both views read the same hives here).
    void SetView64(bool view64) { view64_ = view64; }
    bool GetView64() const { return view64_; }

    // The string value `name` of this key (see Key::ReadString), or `defaultValue`.
    std::wstring ReadString(std::wstring_view name, std::wstring_view defaultValue) const;

private:
    std::wstring path_;
    RegPathConvention convention_;
    HKEY root_ = nullptr;
    bool view64_ = false;
};

}  // namespace Registry
