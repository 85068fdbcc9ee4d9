// The application's texts, by id. The texts live in the resource files; the ids are
// registered as string resources under the names below.
#pragma once

#include <cstdint>

namespace AppResources {

enum StringID : int32_t {
    StringID_PreparingForDownload = 0,
    StringID_ConnectingToDownloadServer = 1,
    StringID_DownloadingComponents = 2,
    StringID_InstallingComponents = 3,
    StringID_InstallationComplete = 4,
    StringID_InstallationFailed = 5,
    StringID_ComputerMustBeRestarted = 6,
    StringID_ProductInstallation = 7,
    StringID_LaunchProduct = 8,
    StringID_CancelInstallation = 9,
    StringID_Error = 10,
    StringID_Close = 11,
};
constexpr int32_t kStringIDCount = 12;

struct StringIDInfo {
    const wchar_t* resourceName;  // the registered string resource name
    const wchar_t* enumerator;    // as the resource check reports it
};

// Indexed by StringID.
inline constexpr StringIDInfo kStringIDs[kStringIDCount] = {
    {L"PreparingForDownload", L"StringID_PreparingForDownload"},
    {L"ConnectingToDownloadServer", L"StringID_ConnectingToDownloadServer"},
    {L"DownloadingComponents", L"StringID_DownloadingComponents"},
    {L"InstallingComponents", L"StringID_InstallingComponents"},
    {L"InstallationComplete", L"StringID_InstallationComplete"},
    {L"InstallationFailed", L"StringID_InstallationFailed"},
    {L"ComputerMustBeRestarted", L"StringID_ComputerMustBeRestarted"},
    {L"ProductInstallation", L"StringID_ProductInstallation"},
    {L"LaunchProduct", L"StringID_LaunchProduct"},
    {L"CancelInstallation", L"StringID_CancelInstallation"},
    {L"Error", L"StringID_Error"},
    {L"Close", L"StringID_Close"},
};

}  // namespace AppResources
