#include "platform/RegistryHive.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <tuple>

#include "platform/Environment.h"
#include "platform/RegistryKeys.h"
#include "support/HiveFolder.h"
#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"

namespace fs = std::filesystem;
using Platform::RegRoot;

namespace {

// A private hive folder named by LUMETTA_REGISTRY_DIR for the life of the test.
class HiveFolder : public ::testing::Test, protected TestSupport::HiveFolder {
protected:
    const fs::path& folder_ = Path();
};

std::vector<uint8_t> Dword(uint8_t v) {
    return {v, 0, 0, 0};
}

const std::string kLogHive =
    "Windows Registry Editor Version 5.00\n"
    "[HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl]\n"
    "\"Level\"=dword:00000002\n";

}  // namespace

TEST_F(HiveFolder, LooksUpValuesAndParsesOnlyWhenTheFileChanges) {
    ASSERT_TRUE(WriteHive("HKEY_CURRENT_USER.reg", kLogHive));
    const auto level = Platform::ReadRegistryValue(
        RegRoot::CurrentUser, L"Software\\Utility\\Debugging\\LogImpl", L"level");
    ASSERT_TRUE(level.has_value());
    EXPECT_EQ(level->type, Platform::kRegDword);
    EXPECT_EQ(level->data, Dword(2));

    // Unchanged file: no second parse.
    const uint64_t parses = Platform::RegistryHiveParseCount();
    EXPECT_TRUE(Platform::RegistryKeyExists(RegRoot::CurrentUser, L"software\\utility"));
    EXPECT_EQ(Platform::RegistryHiveParseCount(), parses);

    // A new file under the same name is read again.
    ASSERT_TRUE(
        WriteHive("HKEY_CURRENT_USER.reg",
                  kLogHive + "\"Level\"=dword:00000005\n[HKEY_CURRENT_USER\\Software\\More]\n"));
    EXPECT_EQ(Platform::ReadRegistryValue(RegRoot::CurrentUser,
                                          L"Software\\Utility\\Debugging\\LogImpl", L"Level")
                  ->data,
              Dword(5));
    EXPECT_EQ(Platform::RegistryHiveParseCount(), parses + 1);
    EXPECT_EQ(*Platform::ListRegistrySubkeys(RegRoot::CurrentUser, L"Software"),
              (std::vector<std::wstring>{L"More", L"Utility"}));

    // The same inode rewritten in place with another size counts as changed too.
    TestSupport::WriteFile(folder_ / "HKEY_CURRENT_USER.reg", kLogHive + "\"Extra\"=\"x\"\n");
    EXPECT_TRUE(Platform::ReadRegistryValue(RegRoot::CurrentUser,
                                            L"Software\\Utility\\Debugging\\LogImpl", L"Extra"));

    // Other roots have their own files; a missing file is an empty hive.
    EXPECT_FALSE(Platform::ReadRegistryValue(RegRoot::LocalMachine,
                                             L"Software\\Utility\\Debugging\\LogImpl", L"Level"));
    EXPECT_FALSE(Platform::ListRegistryValues(RegRoot::LocalMachine, L"Software").has_value());
    EXPECT_TRUE(Platform::ListRegistryValues(RegRoot::LocalMachine, L"")->empty());
    fs::remove(folder_ / "HKEY_CURRENT_USER.reg");
    EXPECT_FALSE(Platform::RegistryKeyExists(RegRoot::CurrentUser, L"Software"));
}

TEST_F(HiveFolder, UnreadableHivesAreEmpty) {
    // A folder in place of the file, and a file that may not be read.
    fs::create_directory(folder_ / "HKEY_LOCAL_MACHINE.reg");
    EXPECT_FALSE(Platform::RegistryKeyExists(RegRoot::LocalMachine, L"Software"));
    ASSERT_TRUE(WriteHive("HKEY_CURRENT_USER.reg", kLogHive));
    fs::permissions(folder_ / "HKEY_CURRENT_USER.reg", fs::perms::none);
    if (::access((folder_ / "HKEY_CURRENT_USER.reg").c_str(), R_OK) != 0) {  // not when root
        EXPECT_FALSE(Platform::RegistryKeyExists(RegRoot::CurrentUser, L"Software"));
    }
}

TEST(RegistryHivePath, FollowsTheUserAndSystemFolders) {
    const TestSupport::ScopedEnvironment saved{"LUMETTA_REGISTRY_DIR", "XDG_CONFIG_HOME", "HOME"};
    Platform::UnsetEnvironment("LUMETTA_REGISTRY_DIR");
    Platform::SetEnvironment("HOME", "/home/tester");

    Platform::SetEnvironment("XDG_CONFIG_HOME", "/cfg/");
    EXPECT_EQ(Platform::RegistryHivePath(RegRoot::CurrentUser),
              "/cfg/lumetta/registry/HKEY_CURRENT_USER.reg");
    Platform::SetEnvironment("XDG_CONFIG_HOME", "relative/ignored");
    EXPECT_EQ(Platform::RegistryHivePath(RegRoot::CurrentUser),
              "/home/tester/.config/lumetta/registry/HKEY_CURRENT_USER.reg");
    EXPECT_EQ(Platform::RegistryHivePath(RegRoot::LocalMachine),
              "/etc/lumetta/registry/HKEY_LOCAL_MACHINE.reg");
    Platform::SetEnvironment("LUMETTA_REGISTRY_DIR", "/portable");
    EXPECT_EQ(Platform::RegistryHivePath(RegRoot::LocalMachine),
              "/portable/HKEY_LOCAL_MACHINE.reg");
    EXPECT_EQ(Platform::RegistryHivePath(static_cast<RegRoot>(7)), "");
}

TEST_F(HiveFolder, KeyHandlesBehaveLikeTheRegistryFunctions) {
    ASSERT_TRUE(WriteHive("HKEY_LOCAL_MACHINE.reg",
                          "Windows Registry Editor Version 5.00\n"
                          "[HKEY_LOCAL_MACHINE\\Software\\Product]\n"
                          "\"InstallPath\"=\"/opt/product\"\n"));
    using Platform::HKEY;
    const HKEY hklm = Platform::PredefinedRegKey(RegRoot::LocalMachine);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(hklm), 0x80000002u);
    EXPECT_EQ(Platform::PredefinedRegRoot(hklm), RegRoot::LocalMachine);

    HKEY software = nullptr;
    ASSERT_EQ(Platform::RegOpenKeyEx(hklm, L"SOFTWARE", 0x20019, &software), 0u);
    HKEY product = nullptr;
    ASSERT_EQ(Platform::RegOpenKeyEx(software, L"product\\", 0x20019, &product), 0u);

    uint32_t type = 0;
    uint32_t size = 0;
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"InstallPath", &type, nullptr, &size), 0u);
    EXPECT_EQ(type, Platform::kRegSz);
    EXPECT_EQ(size, 26u);  // 12 characters and the terminator, two bytes each
    uint8_t small[4];
    size = sizeof(small);
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"InstallPath", &type, small, &size), 234u);
    EXPECT_EQ(size, 26u);
    uint8_t buffer[64];
    size = sizeof(buffer);
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"InstallPath", nullptr, buffer, &size), 0u);
    EXPECT_EQ(buffer[0], '/');
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"Missing", &type, buffer, &size), 2u);
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"InstallPath", &type, buffer, nullptr), 87u);

    // Missing, a bad path, and KEY_WRITE (the hive files are read-only).
    HKEY none = nullptr;
    for (const auto& [path, access, error] : {std::tuple{L"Software\\Missing", 0x20019u, 2u},
                                              {L"\\Software", 0x20019u, 161u},
                                              {L"Software", 0x20006u, 5u}}) {
        EXPECT_EQ(Platform::RegOpenKeyEx(hklm, path, access, &none), error) << path;
        EXPECT_EQ(none, nullptr);
    }
    uint32_t disposition = 0;
    EXPECT_EQ(Platform::RegCreateKeyEx(hklm, L"Software\\New", 0x20019, &none, &disposition), 5u);
    HKEY again = nullptr;
    EXPECT_EQ(Platform::RegCreateKeyEx(hklm, L"Software\\Product", 0x20019, &again, &disposition),
              0u);
    EXPECT_EQ(disposition, Platform::kRegOpenedExistingKey);
    HKEY same = nullptr;
    EXPECT_EQ(Platform::RegOpenKeyEx(hklm, nullptr, 0x20019, &same), 0u);
    EXPECT_EQ(same, hklm);

    // The key vanishes from a new version of the file while the handle is open.
    ASSERT_TRUE(WriteHive("HKEY_LOCAL_MACHINE.reg", "Windows Registry Editor Version 5.00\n"));
    size = sizeof(buffer);
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"InstallPath", &type, buffer, &size), 1018u);

    for (HKEY key : {product, software, again}) EXPECT_EQ(Platform::RegCloseKey(key), 0u);
    EXPECT_EQ(Platform::RegCloseKey(hklm), 0u);
    EXPECT_EQ(Platform::RegCloseKey(product), 6u);  // closed twice
    EXPECT_EQ(Platform::RegQueryValueEx(product, L"InstallPath", &type, buffer, &size), 6u);
}
