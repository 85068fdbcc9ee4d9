#include "system/RegistryRoots.h"

#include <locale>
#include <string>

namespace Registry {
namespace {

struct RootEntry {
    std::wstring_view abbreviation;
    std::wstring_view fullName;
    Platform::RegRoot root;
};

constexpr RootEntry kRoots[kRootCount] = {
    {L"HKCU", L"HKEY_CURRENT_USER", Platform::RegRoot::CurrentUser},
    {L"HKLM", L"HKEY_LOCAL_MACHINE", Platform::RegRoot::LocalMachine},
    {L"HKCR", L"HKEY_CLASSES_ROOT", Platform::RegRoot::ClassesRoot},
    {L"HKCC", L"HKEY_CURRENT_CONFIG", Platform::RegRoot::CurrentConfig},
    {L"HKUS", L"HKEY_USERS", Platform::RegRoot::Users},
    {L"HKDD", L"HKEY_DYN_DATA", Platform::RegRoot::DynData},
    {L"HKPD", L"HKEY_PERFORMANCE_DATA", Platform::RegRoot::PerformanceData},
    {L"HKPN", L"HKEY_PERFORMANCE_NLSTEXT", Platform::RegRoot::PerformanceNlsText},
    {L"HKPT", L"HKEY_PERFORMANCE_TEXT", Platform::RegRoot::PerformanceText},
};

// Alphabetical, as the exact look-up goes through them.
constexpr std::pair<std::wstring_view, Platform::RegRoot> kFullNames[] = {
    {L"HKEY_CLASSES_ROOT", Platform::RegRoot::ClassesRoot},
    {L"HKEY_CURRENT_CONFIG", Platform::RegRoot::CurrentConfig},
    {L"HKEY_CURRENT_USER", Platform::RegRoot::CurrentUser},
    {L"HKEY_DYN_DATA", Platform::RegRoot::DynData},
    {L"HKEY_LOCAL_MACHINE", Platform::RegRoot::LocalMachine},
    {L"HKEY_PERFORMANCE_DATA", Platform::RegRoot::PerformanceData},
    {L"HKEY_PERFORMANCE_NLSTEXT", Platform::RegRoot::PerformanceNlsText},
    {L"HKEY_PERFORMANCE_TEXT", Platform::RegRoot::PerformanceText},
    {L"HKEY_USERS", Platform::RegRoot::Users},
};

std::wstring Lowered(std::wstring_view text) {
    const std::locale locale;
    const auto& ctype = std::use_facet<std::ctype<wchar_t>>(locale);
    std::wstring lowered(text);
    ctype.tolower(lowered.data(), lowered.data() + lowered.size());
    return lowered;
}

}  // namespace

std::wstring_view GetRootAbbreviation(int index) {
    return index >= 0 && index < kRootCount ? kRoots[index].abbreviation : std::wstring_view();
}

std::wstring_view GetRootFullName(int index) {
    return index >= 0 && index < kRootCount ? kRoots[index].fullName : std::wstring_view();
}

HKEY GetRootHandle(int index) {
    return index >= 0 && index < kRootCount ? Platform::PredefinedRegKey(kRoots[index].root)
                                            : nullptr;
}

int FindRootIndex(std::wstring_view name) {
    const std::wstring lowered = Lowered(name);
    for (int i = 0; i < kRootCount; ++i) {
        if (lowered == Lowered(kRoots[i].abbreviation) || lowered == Lowered(kRoots[i].fullName))
            return i;
    }
    return kRootCount;
}

HKEY RootFromFullName(std::wstring_view name) {
    if (name.ends_with(L'\\')) name.remove_suffix(1);
    for (const auto& [fullName, root] : kFullNames)
        if (name == fullName) return Platform::PredefinedRegKey(root);
    return nullptr;
}

}  // namespace Registry
