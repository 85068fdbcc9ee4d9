// A registry key by root and subkey path that opens itself on the first read and keeps the
// open handles until its root or path changes. The value readers never fail: on any
// problem they return the caller's default.
//
//   Registry::Key key(L"HKEY_LOCAL_MACHINE\\Software\\Product");
//   std::wstring folder = key.ReadString(L"InstallPath", L"");
//
// Thread safety: a Key is used by one thread (each user builds its own). Nothing here
// throws except std::bad_alloc.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/ErrorCode.h"
#include "system/RegistryKeyHandle.h"

namespace Registry {

class Key {
public:
    Key() = default;
    // "HKEY_LOCAL_MACHINE\Software\X": the text before the first "\" must be a full root
    // name (RootFromFullName); the rest is the subkey path. An abbreviated or unknown root
    // leaves the key without root, so its reads return their defaults.
    explicit Key(std::wstring_view fullPath);
    Key(HKEY root, std::wstring_view subPath);

    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    Key(Key&&) = default;
    Key& operator=(Key&&) = default;

    // Each closes every cached handle.
    void SetRoot(HKEY root);
    void SetPath(std::wstring_view subPath);

    HKEY GetRoot() const { return root_; }
    const std::wstring& GetPath() const { return path_; }
    // The result of the last open.
    ErrorCode GetLastError() const { return lastError_; }

    // Mode 0 opens the subkey, mode 1 creates it (or opens an existing one); other modes give
    // an empty record. KEY_WOW64_64KEY is added to `access` unless `defaultView`. A key
    // without root or with an empty path gives an empty record without touching the
    // registry.
    KeyHandle Open(int mode, uint32_t access, bool defaultView);

    // The REG_DWORD value `name` (read into 4 zeroed bytes, so a shorter one is
    // zero-extended), or `defaultValue` when the read fails (also for data longer than 4
    // bytes) or the value has another type.
    uint32_t ReadDword(std::wstring_view name, uint32_t defaultValue, bool defaultView = true);

    // The REG_SZ or REG_EXPAND_SZ value `name` (references not expanded), or `defaultValue`.
    // A value whose byte size is odd or whose last character is not zero is rejected.
    std::wstring ReadString(std::wstring_view name, std::wstring_view defaultValue,
                            bool defaultView = true);

private:
    // The cached handle of a view, opening it on first use; nullptr when the open failed.
    HKEY ReadHandle(bool defaultView);
    void CloseAll();

    HKEY root_ = nullptr;
    std::wstring path_;
    ErrorCode lastError_;
    // Three records per view: [0] default view, [1] forced 64-bit view.
    KeyHandle handles_[2][3];
};

}  // namespace Registry
