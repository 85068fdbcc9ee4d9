#include "system/Environment.h"

#include "foundation/Check.h"
#include "foundation/Exceptions.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"

namespace System {
namespace {

constexpr uint32_t kErrorEnvVarNotFound = 203;
constexpr uint32_t kErrorInsufficientBuffer = 122;
constexpr uint32_t kErrorAlreadyExists = 183;

std::size_t ReadLimit(const std::wstring& name) {
    return name == kDelayedLogDataVariable ? std::wstring::npos : kEnvironmentValueLimit;
}

// The value, or "" with the Win32 error that a failed read leaves behind.
std::wstring ReadVariable(const std::wstring& name, uint32_t& lastError) {
    lastError = 0;
    const auto raw = Platform::GetEnvironment(STLHelpers::WideToUtf8(name));
    if (!raw) {
        lastError = kErrorEnvVarNotFound;
        return {};
    }
    std::wstring value = STLHelpers::Utf8ToWide(*raw);
    if (value.size() > ReadLimit(name)) {
        lastError = kErrorInsufficientBuffer;
        return {};
    }
    return value;
}

}  // namespace

bool GetEnvironmentValue(const std::wstring& name, std::wstring& value) {
    CHECK_ERROR(!name.empty());
    uint32_t lastError = 0;
    value = ReadVariable(name, lastError);
    if (!value.empty()) return true;
    if (lastError != kErrorEnvVarNotFound && lastError != kErrorInsufficientBuffer &&
        lastError != 0) {
        const Win32Error lerr{lastError};
        CHECK_ERROR(lerr);
    }
    return false;
}

bool SetEnvironmentValue(const std::wstring& name, const std::wstring& value, bool removeFirst) {
    const std::string narrowName = STLHelpers::WideToUtf8(name);
    if (removeFirst) Platform::UnsetEnvironment(narrowName);
    const uint32_t error = Platform::SetEnvironment(narrowName, STLHelpers::WideToUtf8(value));
    if (error == 0) return true;
    if (error != kErrorAlreadyExists) {
        const Win32Error lerr{error};
        CHECK_ERROR(lerr);
    }
    return false;
}

bool RemoveEnvironmentVariable(const std::wstring& name) {
    return Platform::UnsetEnvironment(STLHelpers::WideToUtf8(name)) == 0;
}

std::wstring GetEnvironmentString(const std::wstring& name) {
    if (name.empty()) return {};
    try {
        std::wstring value;
        GetEnvironmentValue(name, value);
        return value;
    } catch (const ErrorHandling::ErrorException&) {
        return {};
    }
}

}  // namespace System
