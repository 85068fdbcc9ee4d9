#include "system/RegistryKeyHandle.h"

#include <dlfcn.h>

#include <string>
#include <utility>

#include "system/internal/HiveProblemLog.h"

namespace Registry {
namespace {

constexpr uint32_t kErrorInvalidFunction = 1;

using OpenTransactedFn = uint32_t (*)(HKEY, const wchar_t*, uint32_t, uint32_t, HKEY*, void*,
                                      void*);
using CreateTransactedFn = uint32_t (*)(HKEY, const wchar_t*, uint32_t, wchar_t*, uint32_t,
                                        uint32_t, void*, HKEY*, uint32_t*, void*, void*);

// The transacted functions are looked up at each call in an already loaded registry
// library, never loaded for the purpose. Linux has no kernel transaction manager, so
// normally nothing is found and the caller gets ERROR_INVALID_FUNCTION.
void* FindTransactedFunction(const char* name) {
    void* library = dlopen("Advapi32.dll", RTLD_NOW | RTLD_NOLOAD);
    if (library == nullptr) return nullptr;
    void* function = dlsym(library, name);
    dlclose(library);
    return function;
}

void CloseKey(HKEY key) {
    if (key != nullptr) Platform::RegCloseKey(key);
}

}  // namespace

KeyHandle::~KeyHandle() {
    CloseKey(key_);
}

KeyHandle::KeyHandle(KeyHandle&& other) noexcept
    : key_(std::exchange(other.key_, nullptr)),
      viewBits_(std::exchange(other.viewBits_, 0)),
      transaction_(other.transaction_) {}

KeyHandle& KeyHandle::operator=(KeyHandle&& other) noexcept {
    if (this == &other) return *this;
    if (key_ != other.key_) CloseKey(key_);
    key_ = std::exchange(other.key_, nullptr);
    viewBits_ = std::exchange(other.viewBits_, 0);
    transaction_ = other.transaction_;
    return *this;
}

ErrorCode KeyHandle::Reset() {
    const HKEY key = std::exchange(key_, nullptr);
    viewBits_ = 0;
    if (key == nullptr) return ErrorCode();
    return ErrorCode::FromWin32(Platform::RegCloseKey(key));
}

ErrorCode KeyHandle::Take(HKEY key, uint32_t access) {
    const ErrorCode closed = Reset();
    key_ = key;
    viewBits_ = access & KEY_WOW64_RES;
    return closed;
}

ErrorCode KeyHandle::Open(HKEY parent, std::wstring_view subKey, uint32_t access) {
    return OpenOrCreate(false, parent, subKey, access, nullptr);
}

ErrorCode KeyHandle::Create(HKEY parent, std::wstring_view subKey, uint32_t access,
                            uint32_t* disposition) {
    return OpenOrCreate(true, parent, subKey, access, disposition);
}

ErrorCode KeyHandle::OpenOrCreate(bool create, HKEY parent, std::wstring_view subKey,
                                  uint32_t access, uint32_t* disposition) {
    const std::wstring name(subKey);
    HKEY key = nullptr;
    uint32_t result = 0;
    uint32_t localDisposition = 0;
    const bool transacted = transaction_ != nullptr && transaction_->transaction != nullptr;
    if (transaction_ != nullptr && !transacted && !transaction_->allowPlain) {
        result = kErrorInvalidFunction;
    } else if (transacted) {
        if (create) {
            auto fn = reinterpret_cast<CreateTransactedFn>(
                FindTransactedFunction("RegCreateKeyTransactedW"));
            result = fn ? fn(parent, name.c_str(), 0, nullptr, 0, access, nullptr, &key,
                             &localDisposition, transaction_->transaction, nullptr)
                        : kErrorInvalidFunction;
        } else {
            auto fn =
                reinterpret_cast<OpenTransactedFn>(FindTransactedFunction("RegOpenKeyTransactedW"));
            result =
                fn ? fn(parent, name.c_str(), 0, access, &key, transaction_->transaction, nullptr)
                   : kErrorInvalidFunction;
        }
    } else if (create) {
        result = Platform::RegCreateKeyEx(parent, name.c_str(), access, &key, &localDisposition);
    } else {
        result = Platform::RegOpenKeyEx(parent, name.c_str(), access, &key);
    }
    internal::LogHiveProblems();
    if (result != 0) return ErrorCode::FromWin32(result);
    if (create && disposition != nullptr) *disposition = localDisposition;
    return Take(key, access);
}

}  // namespace Registry
