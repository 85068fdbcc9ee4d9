#include "system/RegistryKeyPath.h"

#include <vector>

#include "system/RegistryKey.h"

namespace Registry {

KeyPath& KeyPath::Add(std::wstring_view text) {
    if (root_ != nullptr) {
        convention_.Append(path_, text);
        return *this;
    }
    std::vector<std::wstring> components;
    if (!convention_.Split(text, components)) return *this;
    size_t first = 0;
    if (!components.empty()) {
        const int index = FindRootIndex(components.front());
        if (index < kRootCount) {
            root_ = GetRootHandle(index);
            first = 1;
        }
    }
    for (size_t i = first; i < components.size(); ++i) convention_.Append(path_, components[i]);
    return *this;
}

std::wstring KeyPath::GetFullPath() const {
    if (root_ == nullptr) return path_;
    std::wstring full;
    for (int i = 0; i < kRootCount; ++i)
        if (GetRootHandle(i) == root_) full = GetRootFullName(i);
    if (!path_.empty()) convention_.Append(full, path_);
    return full;
}

std::wstring KeyPath::ReadString(std::wstring_view name, std::wstring_view defaultValue) const {
    Key key(root_, path_);
    return key.ReadString(name, defaultValue, !view64_);
}

}  // namespace Registry
