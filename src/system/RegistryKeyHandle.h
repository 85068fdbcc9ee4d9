// Owner of one open registry key, with the registry view it was opened in and the
// transaction it belongs to.
//
// Thread safety: a record belongs to one thread at a time. Open and Create return an
// ErrorCode and never throw.
#pragma once

#include <cstdint>
#include <string_view>

#include "foundation/ErrorCode.h"
#include "system/RegistryRoots.h"

namespace Registry {

// A kernel transaction for transacted key access. With a null handle, plain access is used
// only when `allowPlain` is set.
struct TransactionContext {
    void* transaction = nullptr;
    bool allowPlain = false;
};

class KeyHandle {
public:
    KeyHandle() = default;
    explicit KeyHandle(const TransactionContext* transaction) : transaction_(transaction) {}
    ~KeyHandle();

    KeyHandle(const KeyHandle&) = delete;
    KeyHandle& operator=(const KeyHandle&) = delete;
    KeyHandle(KeyHandle&& other) noexcept;
    // Closes this record's own key first, unless both hold the same key.
    KeyHandle& operator=(KeyHandle&& other) noexcept;

    // Opens `subKey` of `parent` with `access`. On success the record closes the key it held
    // and takes the new one; the result is that of the close (normally S_OK). On failure the
    // record is unchanged and the Win32 error comes back as an ErrorCode. With a transaction,
    // the transacted open is looked up at run time; where it is missing the call fails with
    // ERROR_INVALID_FUNCTION (1).
    ErrorCode Open(HKEY parent, std::wstring_view subKey, uint32_t access);

    // As Open, but creates a missing key (which the read-only hives refuse with
    // ERROR_ACCESS_DENIED). `disposition` (may be null) receives 1 (created) or 2 (opened).
    ErrorCode Create(HKEY parent, std::wstring_view subKey, uint32_t access,
                     uint32_t* disposition = nullptr);

    // Closes the key, if any; returns the close's result.
    ErrorCode Reset();

    HKEY Get() const { return key_; }
    bool IsOpen() const { return key_ != nullptr; }
    explicit operator bool() const { return IsOpen(); }
    // The view bits (KEY_WOW64_64KEY, KEY_WOW64_32KEY) of the access the key was opened with.
    uint32_t ViewBits() const { return viewBits_; }
    const TransactionContext* Transaction() const { return transaction_; }

private:
    ErrorCode OpenOrCreate(bool create, HKEY parent, std::wstring_view subKey, uint32_t access,
                           uint32_t* disposition);
    ErrorCode Take(HKEY key, uint32_t access);

    HKEY key_ = nullptr;
    uint32_t viewBits_ = 0;
    const TransactionContext* transaction_ = nullptr;
};

}  // namespace Registry
