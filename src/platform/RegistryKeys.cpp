#include "platform/RegistryKeys.h"

#include <cstring>
#include <mutex>
#include <string>
#include <unordered_set>

#include "platform/internal/HiveStore.h"

namespace Platform {

struct RegKeyObject {
    RegRoot root;
    std::wstring path;  // components joined by "\", no trailing "\"; empty for the root
};

namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorInvalidHandle = 6;
constexpr uint32_t kErrorInvalidParameter = 87;
constexpr uint32_t kErrorBadPathname = 161;
constexpr uint32_t kErrorMoreData = 234;
constexpr uint32_t kErrorKeyDeleted = 1018;

// Access bits that ask for a change: KEY_SET_VALUE, KEY_CREATE_SUB_KEY, KEY_CREATE_LINK,
// DELETE, WRITE_DAC, WRITE_OWNER.
constexpr uint32_t kWriteAccess = 0x2 | 0x4 | 0x20 | 0x10000 | 0x40000 | 0x80000;

constexpr RegRoot kAllRoots[] = {
    RegRoot::ClassesRoot, RegRoot::CurrentUser,     RegRoot::LocalMachine,
    RegRoot::Users,       RegRoot::PerformanceData, RegRoot::CurrentConfig,
    RegRoot::DynData,     RegRoot::PerformanceText, RegRoot::PerformanceNlsText,
};

// Open handles; a handle that is not in this set is rejected instead of dereferenced.
std::mutex& HandleLock() {
    static std::mutex lock;
    return lock;
}

std::unordered_set<const RegKeyObject*>& OpenHandles() {
    static std::unordered_set<const RegKeyObject*> handles;
    return handles;
}

// The root and path a handle stands for; false for a handle that is neither predefined
// nor open.
bool Resolve(HKEY key, RegRoot& root, std::wstring& path) {
    if (auto predefined = PredefinedRegRoot(key)) {
        root = *predefined;
        path.clear();
        return true;
    }
    std::lock_guard guard(HandleLock());
    if (OpenHandles().count(key) == 0) return false;
    root = key->root;
    path = key->path;
    return true;
}

uint32_t Open(HKEY parent, const wchar_t* subKey, uint32_t access, HKEY* result, bool create,
              uint32_t* disposition) {
    if (result == nullptr) return kErrorInvalidParameter;
    *result = nullptr;
    RegRoot root{};
    std::wstring path;
    if (!Resolve(parent, root, path)) return kErrorInvalidHandle;
    if (!create && (access & kWriteAccess) != 0) return kErrorAccessDenied;

    const std::wstring_view sub = subKey ? std::wstring_view(subKey) : std::wstring_view();
    const auto parts = SplitRegistryPath(sub);
    if (!parts) return kErrorBadPathname;
    if (parts->empty() && PredefinedRegRoot(parent)) {
        *result = parent;
        if (disposition) *disposition = kRegOpenedExistingKey;
        return 0;
    }
    for (const auto& part : *parts) {
        if (!path.empty()) path.push_back(L'\\');
        path.append(part);
    }
    if (!RegistryKeyExists(root, path)) return create ? kErrorAccessDenied : kErrorFileNotFound;
    if (create && (access & kWriteAccess) != 0) return kErrorAccessDenied;

    auto* key = new RegKeyObject{root, std::move(path)};
    {
        std::lock_guard guard(HandleLock());
        OpenHandles().insert(key);
    }
    *result = key;
    if (disposition) *disposition = kRegOpenedExistingKey;
    return 0;
}

}  // namespace

HKEY PredefinedRegKey(RegRoot root) {
    return reinterpret_cast<HKEY>(static_cast<uintptr_t>(root));
}

std::optional<RegRoot> PredefinedRegRoot(HKEY key) {
    const auto value = reinterpret_cast<uintptr_t>(key);
    for (RegRoot root : kAllRoots)
        if (value == static_cast<uintptr_t>(root)) return root;
    return std::nullopt;
}

uint32_t RegOpenKeyEx(HKEY parent, const wchar_t* subKey, uint32_t access, HKEY* result) {
    return Open(parent, subKey, access, result, false, nullptr);
}

uint32_t RegCreateKeyEx(HKEY parent, const wchar_t* subKey, uint32_t access, HKEY* result,
                        uint32_t* disposition) {
    return Open(parent, subKey, access, result, true, disposition);
}

uint32_t RegQueryValueEx(HKEY key, const wchar_t* name, uint32_t* type, uint8_t* data,
                         uint32_t* size) {
    if (data != nullptr && size == nullptr) return kErrorInvalidParameter;
    RegRoot root{};
    std::wstring path;
    if (!Resolve(key, root, path)) return kErrorInvalidHandle;

    const auto hive = internal::LoadHive(root);
    const RegKeyNode* node = hive->FindKey(path);
    if (node == nullptr) return path.empty() ? kErrorFileNotFound : kErrorKeyDeleted;
    const RegValue* value =
        RegHive::FindValue(*node, name ? std::wstring_view(name) : std::wstring_view());
    if (value == nullptr) return kErrorFileNotFound;

    if (type) *type = value->type;
    const auto needed = static_cast<uint32_t>(value->data.size());
    if (data == nullptr) {
        if (size) *size = needed;
        return 0;
    }
    if (*size < needed) {
        *size = needed;
        return kErrorMoreData;
    }
    if (needed != 0) std::memcpy(data, value->data.data(), needed);
    *size = needed;
    return 0;
}

uint32_t RegCloseKey(HKEY key) {
    if (PredefinedRegRoot(key)) return 0;
    {
        std::lock_guard guard(HandleLock());
        if (OpenHandles().erase(key) == 0) return kErrorInvalidHandle;
    }
    delete key;
    return 0;
}

}  // namespace Platform
