// The application's resource holder and its manager over real resource folders.
#include <gtest/gtest.h>

#include "resourcelib/AppResourcesManager.h"
#include "resourcelib/ManagerImpl.h"
#include "resourcelib/ResourceManagerHolder.h"
#include "support/HiveFolder.h"
#include "support/TestFiles.h"

#include <boost/make_shared.hpp>

#include <filesystem>
#include <sstream>
#include <string>

namespace {

using AppResources::Manager;
using AppResources::ResourceManagerHolder;
using TestSupport::TempFolder;

void WriteFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    ASSERT_TRUE(TestSupport::WriteFile(path, content));
}

// Metadata with English as the default language, then `more`, under `base` when one is named.
std::string MetadataXml(const std::string& base = "", const std::string& more = "") {
    return "<ResourceLib>" + (base.empty() ? "" : "<Base root=\"" + base + "\"/>") +
           "<Languages><Language name=\"en\" title=\"English\" locale=\"1033\" default=\"1\"/>" +
           more + "</Languages></ResourceLib>";
}

// Each of the names (separated by spaces) with the text "<name> text {ProductName}".
std::string StringsXml(const std::string& names) {
    std::istringstream in(names);
    std::string xml = "<ResourceLib><Resources>", name;
    while (in >> name)
        xml += "<String name=\"" + name + "\" value=\"" + name + " text {ProductName}\"/>";
    return xml + "</Resources></ResourceLib>";
}

// Every text the updater registers, in StringID order.
const std::string kAllNames =
    "PreparingForDownload ConnectingToDownloadServer DownloadingComponents InstallingComponents "
    "InstallationComplete InstallationFailed ComputerMustBeRestarted ProductInstallation "
    "LaunchProduct CancelInstallation Error Close";

// en (complete) and de (without "Error" and "Close").
void WriteTwoLanguages(const TempFolder& folder) {
    WriteFile(folder / "Metadata.xml",
              MetadataXml("", "<Language name=\"de\" title=\"Deutsch\" locale=\"1031\"/>"));
    WriteFile(folder / "en" / "Resources.xml", StringsXml(kAllNames));
    WriteFile(folder / "de" / "Resources.xml",
              StringsXml(kAllNames.substr(0, kAllNames.find("Error"))));
}

boost::shared_ptr<Manager> NewManager() {
    return boost::make_shared<Manager>(boost::make_shared<ResourceLib::ManagerImpl>());
}

TEST(AppResources, TextsComeByIdWithTheProductParametersFilledIn) {
    TempFolder folder("lumetta-appres");
    WriteTwoLanguages(folder);
    auto params = boost::make_shared<ResourceManagerHolder::ResManagerExtraParamsProvider>();
    params->SetParam(L"ProductName", L"Lumetta");
    params->SetParam(L"{x}", L"ignored");
    params->SetParam(L"42", L"ignored");
    EXPECT_EQ(params->GetParam(L"productname"), L"Lumetta");
    EXPECT_EQ(params->GetParam(L"42"), L"");

    auto manager = NewManager();
    const std::wstring dir = folder.Path().wstring();
    ASSERT_TRUE(manager->Initialize(dir.c_str(), params, -1, false));
    EXPECT_EQ(manager->GetString(AppResources::StringID_Close), L"Close text Lumetta");
    // A second set-up is refused and changes nothing.
    EXPECT_FALSE(manager->Initialize(dir.c_str(), params, -1, false));
    EXPECT_EQ(manager->GetDirectory(), dir);
}

TEST(AppResources, TheCheckNamesEachLanguageAndTextThatIsMissing) {
    TempFolder folder("lumetta-appres");
    WriteTwoLanguages(folder);
    TestSupport::HiveFolder hives;
    const std::wstring dir = folder.Path().wstring();

    // Off: missing texts do not fail the set-up.
    EXPECT_TRUE(NewManager()->Initialize(dir.c_str(), nullptr, -1, false));

    ASSERT_TRUE(hives.WriteHive("HKEY_CURRENT_USER.reg",
                                "Windows Registry Editor Version 5.00\r\n\r\n"
                                "[HKEY_CURRENT_USER\\Software\\ResourceLib]\r\n"
                                "\"DisplayErrors\"=dword:00000001\r\n"));
    // Placeholders are resolved during the check too: an unknown one would count as missing.
    auto params = boost::make_shared<ResourceManagerHolder::ResManagerExtraParamsProvider>();
    params->SetParam(L"ProductName", L"Lumetta");
    auto manager = NewManager();
    EXPECT_FALSE(manager->Initialize(dir.c_str(), params, -1, false));
    EXPECT_EQ(manager->CheckResources(),
              L"-->Deutsch (de):\nStringID_Error (10)\nStringID_Close (11)\n");
    // The check switches back to the default language.
    EXPECT_EQ(manager->GetResourceManager()->GetLanguageName(), L"en");
}

TEST(AppResources, AMissingFolderFallsBackAndABaseFolderBecomesTheParent) {
    auto lost = NewManager();
    EXPECT_TRUE(lost->Initialize(L"/nonexistent/lumetta", nullptr, -1, false));
    EXPECT_TRUE(lost->GetDirectory().ends_with(L"/Resources")) << lost->GetDirectory();

    TempFolder folder("lumetta-appres");
    WriteFile(folder / "Metadata.xml", MetadataXml());
    WriteFile(folder / "en" / "Resources.xml", StringsXml("Error"));
    WriteFile(folder / "child" / "Metadata.xml", MetadataXml(".."));
    WriteFile(folder / "child" / "en" / "Resources.xml", StringsXml("Close"));
    auto child = NewManager();
    const std::wstring dir = (folder / "child").wstring();
    ASSERT_TRUE(child->Initialize(dir.c_str(), nullptr, -1, false));
    EXPECT_EQ(child->GetString(AppResources::StringID_Close), L"Close text {ProductName}");
    EXPECT_EQ(child->GetString(AppResources::StringID_Error), L"Error text {ProductName}");
}

TEST(AppResources, TheHolderInitialisesOnceAndHandsOutEmptyTextsAfterShutdown) {
    TempFolder folder("lumetta-appres");
    WriteTwoLanguages(folder);
    ResourceManagerHolder holder;
    holder.GetExtraParams()->SetParam(L"ProductName", L"Lumetta");
    ASSERT_TRUE(holder.Initialize(folder.Path().wstring()));
    auto first = holder.GetManager();
    EXPECT_EQ(first->GetString(AppResources::StringID_Error), L"Error text Lumetta");
    EXPECT_FALSE(holder.Initialize(folder.Path().wstring()));
    EXPECT_EQ(holder.GetManager(), first);

    holder.Shutdown();
    EXPECT_FALSE(holder.Initialize(folder.Path().wstring()));
    auto after = holder.GetManager();
    EXPECT_NE(after, first);
    EXPECT_EQ(after->GetString(AppResources::StringID_Error), L"");
}

}  // namespace
