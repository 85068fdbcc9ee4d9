#include "app/ProductConfiguration.h"

#include <cwctype>

#include "system/CommandLine.h"
#include "system/FileHelpers.h"
#include "system/Language.h"
#include "system/ModuleResources.h"
#include "system/ModuleVersion.h"
#include "system/ProcessArguments.h"
#include "system/RegistryKey.h"

namespace {

constexpr const wchar_t* kBrandToken = L"/URLBrandSuffix/";

bool EqualsIgnoringCase(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::towlower(static_cast<wint_t>(a[i])) != std::towlower(static_cast<wint_t>(b[i])))
            return false;
    return true;
}

void ReplaceAll(std::wstring& text, const std::wstring& what, const std::wstring& with) {
    if (what.empty()) return;
    size_t at = 0;
    while ((at = text.find(what, at)) != std::wstring::npos) {
        text.replace(at, what.size(), with);
        at += with.size();  // the replacement is not scanned again
    }
}

std::wstring ReadString(Registry::Key&& key, const wchar_t* name) {
    return key.ReadString(name, L"");
}

// The process's arguments as they were while static objects were built: later changes to
// the process title must not change the configuration.
const std::vector<std::wstring>& StartupArguments() {
    static const std::vector<std::wstring> arguments = System::GetProcessArguments();
    return arguments;
}
[[maybe_unused]] const auto& startupArgumentsTaken = StartupArguments();

}  // namespace

ProductConfiguration::ProductConfiguration(const wchar_t* commandLine)
    : ProductConfiguration(commandLine ? System::CommandLineToArgv(commandLine)
                                       : std::vector<std::wstring>{}) {}

ProductConfiguration::ProductConfiguration(std::vector<std::wstring> arguments)
    : argumentCount(static_cast<int32_t>(arguments.size())), arguments(std::move(arguments)) {}

std::wstring ProductConfiguration::GetOptionValue(const std::wstring& name) const {
    for (size_t i = 1; i + 1 < arguments.size(); ++i)
        if (EqualsIgnoringCase(arguments[i], name)) return arguments[i + 1];
    return {};
}

bool ProductConfiguration::HasOption(const std::wstring& name) const {
    for (size_t i = 1; i < arguments.size(); ++i)
        if (EqualsIgnoringCase(arguments[i], name)) return true;
    return false;
}

std::wstring ProductConfiguration::GetNamedValue(const std::wstring& valueName, uint32_t entry) {
    {
        std::lock_guard lock(cacheLock);
        if (auto it = valueCache.find(valueName); it != valueCache.end()) return it->second;
    }
    // Resolved outside the lock: two threads may both resolve; the first to insert wins.
    std::wstring value = GetOptionValue(L"/" + valueName);
    if (value.empty()) value = System::LoadStringResource(entry);
    std::lock_guard lock(cacheLock);
    return valueCache.emplace(valueName, std::move(value)).first->second;
}

std::wstring ProductConfiguration::GetProductName() {
    return GetNamedValue(L"productName", kProductNameEntry);
}
std::wstring ProductConfiguration::GetProductCompanyName() {
    return GetNamedValue(L"productCompanyName", kProductCompanyNameEntry);
}
std::wstring ProductConfiguration::GetProductExecutable() {
    return GetNamedValue(L"productExecutable", kProductExecutableEntry);
}
std::wstring ProductConfiguration::GetBundleName() {
    return GetNamedValue(L"bundleName", kBundleNameEntry);
}
std::wstring ProductConfiguration::GetProductURL() {
    return ReplaceBrandToken(GetNamedValue(L"productURL", kProductURLEntry), GetBrandSuffix());
}

std::wstring ProductConfiguration::GetComponentName() const {
    std::wstring name = GetOptionValue(L"/componentName");
    return name.empty() ? L"Automatic Update" : name;
}

std::wstring ProductConfiguration::GetConfiguredLanguageName() const {
    std::wstring name = GetOptionValue(L"/languageName");
    return name.empty() ? System::GetUILanguageName() : name;
}

bool ProductConfiguration::IsSilent() const {
    return GetOptionValue(L"/isSilent") != L"0";
}

bool ProductConfiguration::IsRunWithProduct() const {
    return HasOption(L"/runWithProduct");
}

std::wstring ProductConfiguration::GetBrandSuffix() {
    const std::wstring value =
        ReadString(Registry::Key(Registry::HKEY_CURRENT_USER, L"Software\\" + GetProductName()),
                   L"SetupNameSuffix");
    return value == L"KAPRI" ? L"_01" : L"_" + value;
}

std::wstring ProductConfiguration::GetUserProductKeyPath() {
    return L"HKEY_CURRENT_USER\\Software\\" + GetBundleName() + L"\\" + GetProductName();
}

std::wstring ProductConfiguration::GetDownloadURL() {
    std::wstring url = GetOptionValue(L"/downloadURL");
    if (url.empty())
        url = ReadString(Registry::Key(Registry::HKEY_CURRENT_USER,
                                       L"Software\\" + GetBundleName() + L"\\" + GetProductName()),
                         L"DownloadURL");
    if (url.empty()) url = System::LoadStringResource(kDownloadURLEntry);
    return ReplaceBrandToken(url, GetBrandSuffix());
}

std::wstring ProductConfiguration::GetProductVersion() {
    return System::GetDottedFileVersion(System::GetModuleFolder() + GetProductExecutable());
}

std::wstring ProductConfiguration::GetShortProductVersion() {
    return ShortVersionOf(GetProductVersion());
}

std::wstring ProductConfiguration::ShortVersionOf(const std::wstring& version) {
    std::vector<std::wstring> pieces;
    size_t start = 0;
    while (start <= version.size()) {
        size_t end = version.find(L'.', start);
        if (end == std::wstring::npos) end = version.size();
        if (end > start) pieces.push_back(version.substr(start, end - start));
        start = end + 1;
    }
    return pieces.size() >= 2 ? pieces[0] + L"." + pieces[1] : version;
}

std::wstring ProductConfiguration::GetProductNameWithoutSpaces() {
    std::wstring name = GetProductName();
    std::erase(name, L' ');
    return name;
}

ProductInfo ProductConfiguration::GetProductInfo() {
    ProductInfo info;
    info.productName = GetProductNameWithoutSpaces();
    info.fullProductName = GetProductName();
    info.productVersion = GetProductVersion();
    info.shortProductVersion = GetShortProductVersion();
    info.companyName = GetProductCompanyName();
    info.extraParameters.emplace_back(L"ComponentName", GetComponentName());
    return info;
}

std::wstring ProductConfiguration::GetUpdateMutexName() {
    return GetProductName() + L"_UpdateMutex";
}
std::wstring ProductConfiguration::GetExtrasMutexName() {
    return GetProductName() + L"_ExtrasMutex";
}
std::wstring ProductConfiguration::GetExitEventName() {
    return GetProductName() + L"_ExitEvent";
}

std::wstring ProductConfiguration::GetInstallPath() {
    return ReadString(Registry::Key(L"HKEY_LOCAL_MACHINE\\Software\\" + GetProductName()),
                      L"InstallPath");
}

std::wstring ProductConfiguration::GetPublicKey() {
    std::wstring key = GetOptionValue(L"/publicKey");
    if (key.empty())
        key = ReadString(Registry::Key(L"HKEY_LOCAL_MACHINE\\Software\\" + GetProductName()),
                         L"UpdatePublicKey");
    if (key.empty()) key = System::LoadStringResource(kPublicKeyEntry);
    return key;
}

ConfiguredValue ProductConfiguration::FromOptionOrRegistry(const std::wstring& option,
                                                           const std::vector<std::wstring>& keys,
                                                           const wchar_t* name) {
    if (std::wstring value = GetOptionValue(option); !value.empty())
        return {value, L"command line " + option};
    for (const std::wstring& key : keys) {
        if (std::wstring value = ReadString(Registry::Key(key), name); !value.empty())
            return {value, key + L"\\" + name};
    }
    return {};
}

ConfiguredValue ProductConfiguration::GetFeedURL() {
    return FromOptionOrRegistry(
        L"/feedURL",
        {GetUserProductKeyPath(), L"HKEY_LOCAL_MACHINE\\Software\\" + GetProductName()},
        L"UpdateFeedURL");
}

ConfiguredValue ProductConfiguration::GetInstalledVersion() {
    if (std::wstring version = GetOptionValue(L"/productVersion"); !version.empty())
        return {version, L"command line /productVersion"};
    std::wstring folder = GetInstallPath();
    if (!folder.empty() && folder.back() != L'/') folder += L'/';
    if (folder.empty()) folder = System::GetModuleFolder();
    const std::wstring executable = folder + GetProductExecutable();
    std::wstring version = System::GetDottedFileVersion(executable);
    if (version.empty()) return {};
    return {version, L"version resource of " + executable};
}

ConfiguredValue ProductConfiguration::GetUpdateChannel() {
    return FromOptionOrRegistry(L"/channel", {GetUserProductKeyPath()}, L"UpdateChannel");
}

std::wstring ProductConfiguration::ExpandPlaceholders(const std::wstring& text) {
    const std::pair<const wchar_t*, std::wstring> values[] = {
        {L"{ProductName}", GetProductName()},
        {L"{ProductVersion}", GetProductVersion()},
        {L"{ShortProductVersion}", GetShortProductVersion()},
        {L"{ProductURL}", GetProductURL()},
        {L"{ComponentName}", GetComponentName()},
    };
    std::wstring result = text;
    for (const auto& [placeholder, value] : values) ReplaceAll(result, placeholder, value);
    return result;
}

std::wstring ProductConfiguration::ReplaceBrandToken(const std::wstring& text,
                                                     const std::wstring& suffix) {
    std::wstring result = text;
    ReplaceAll(result, kBrandToken, suffix);
    return result;
}

ProductConfiguration& GetProductConfiguration() {
    static ProductConfiguration configuration(StartupArguments());
    return configuration;
}
