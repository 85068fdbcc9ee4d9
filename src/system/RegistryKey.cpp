#include "system/RegistryKey.h"

#include <array>
#include <cstring>

#include "system/internal/HiveProblemLog.h"

namespace Registry {
namespace {

constexpr uint32_t kErrorInvalidData = 13;
constexpr size_t kStringBufferChars = 32768;

}  // namespace

Key::Key(std::wstring_view fullPath) {
    const size_t sep = fullPath.find(L'\\');
    if (sep == std::wstring_view::npos) {
        root_ = RootFromFullName(fullPath);
    } else {
        root_ = RootFromFullName(fullPath.substr(0, sep));
        path_ = fullPath.substr(sep + 1);
    }
}

Key::Key(HKEY root, std::wstring_view subPath) : root_(root), path_(subPath) {}

void Key::CloseAll() {
    for (auto& view : handles_)
        for (auto& handle : view) handle.Reset();
}

void Key::SetRoot(HKEY root) {
    CloseAll();
    root_ = root;
}

void Key::SetPath(std::wstring_view subPath) {
    CloseAll();
    path_ = subPath;
}

KeyHandle Key::Open(int mode, uint32_t access, bool defaultView) {
    KeyHandle handle;
    if (root_ == nullptr || path_.empty() || (mode != 0 && mode != 1)) return handle;
    if (!defaultView) access |= KEY_WOW64_64KEY;
    lastError_ =
        mode == 0 ? handle.Open(root_, path_, access) : handle.Create(root_, path_, access);
    return handle;
}

HKEY Key::ReadHandle(bool defaultView) {
    auto& view = handles_[defaultView ? 0 : 1];
    if (view[0]) return view[0].Get();
    if (view[2]) return view[2].Get();
    view[0] = Open(0, KEY_READ, defaultView);
    return view[0].Get();
}

uint32_t Key::ReadDword(std::wstring_view name, uint32_t defaultValue, bool defaultView) {
    const HKEY key = ReadHandle(defaultView);
    if (key == nullptr) return defaultValue;
    const std::wstring valueName(name);
    uint32_t type = 0;
    // Zeroed: a REG_DWORD shorter than 4 bytes fills only its first bytes. A longer one
    // does not fit, and the read fails.
    uint8_t data[4] = {};
    uint32_t size = sizeof(data);
    uint32_t result = Platform::RegQueryValueEx(key, valueName.c_str(), &type, data, &size);
    internal::LogHiveProblems();
    if (result == 0 && type != REG_DWORD) result = kErrorInvalidData;
    if (result != 0) return defaultValue;
    uint32_t value = 0;
    std::memcpy(&value, data, sizeof(value));
    return value;
}

std::wstring Key::ReadString(std::wstring_view name, std::wstring_view defaultValue,
                             bool defaultView) {
    const HKEY key = ReadHandle(defaultView);
    if (key == nullptr) return std::wstring(defaultValue);
    const std::wstring valueName(name);
    // The registry's wide characters are UTF-16 code units, two bytes each.
    std::array<uint8_t, kStringBufferChars * 2> buffer{};
    uint32_t type = 0;
    uint32_t size = static_cast<uint32_t>(buffer.size());
    uint32_t result =
        Platform::RegQueryValueEx(key, valueName.c_str(), &type, buffer.data(), &size);
    internal::LogHiveProblems();
    if (result == 0) {
        const bool stringType = type == REG_SZ || type == REG_EXPAND_SZ;
        // Evenness first: a one-byte value has no last character to look at.
        const bool whole = size % 2 == 0;
        const bool terminated =
            whole && (size == 0 || (buffer[size - 2] == 0 && buffer[size - 1] == 0));
        if (!stringType || !whole || !terminated) result = kErrorInvalidData;
    }
    if (result != 0) return std::wstring(defaultValue);

    std::wstring text;
    const size_t units = size / 2;
    text.reserve(units);
    for (size_t i = 0; i < units; ++i) {
        const uint32_t unit = buffer[2 * i] | (uint32_t{buffer[2 * i + 1]} << 8);
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units) {
            const uint32_t low = buffer[2 * i + 2] | (uint32_t{buffer[2 * i + 3]} << 8);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                text.push_back(
                    static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00)));
                ++i;
                continue;
            }
        }
        text.push_back(static_cast<wchar_t>(unit));
    }
    // The value ends with its terminator; the text ends at the first zero, as the
    // registry's C strings do.
    const size_t end = text.find(L'\0');
    if (end != std::wstring::npos) text.resize(end);
    return text;
}

}  // namespace Registry
