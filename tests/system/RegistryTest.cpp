#include <gtest/gtest.h>

#include "support/HiveFolder.h"
#include "system/RegistryKey.h"
#include "system/RegistryKeyPath.h"
#include "system/RegistryRoots.h"

using namespace Registry;

namespace {

// Hives written by the test into a folder that LUMETTA_REGISTRY_DIR names.
class RegistryHives : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(hives_.Path().empty());
        Write("HKEY_LOCAL_MACHINE.reg",
              "Windows Registry Editor Version 5.00\n"
              "[HKEY_LOCAL_MACHINE\\Software\\Product]\n"
              "\"InstallPath\"=\"/opt/product\"\n"
              "\"Number\"=dword:0000002a\n"
              "\"Text\"=\"42\"\n"
              "\"Expand\"=hex(2):25,00,48,00,4f,00,4d,00,45,00,25,00,00,00\n"
              "\"Unterminated\"=hex(1):41,00,42,00\n"
              "\"OddSize\"=hex(1):41,00,00\n"
              "\"OneByte\"=hex(1):41\n"
              "\"EmptySz\"=hex(1):\n"
              "\"ShortDword\"=hex(4):01,02\n"
              "\"LongDword\"=hex(4):01,02,03,04,05\n"
              "\"Qword\"=hex(b):01,00,00,00,00,00,00,00\n");
        Write("HKEY_CURRENT_USER.reg",
              "Windows Registry Editor Version 5.00\n"
              "[HKEY_CURRENT_USER\\Software\\ResourceLib]\n"
              "\"DisplayErrors\"=dword:00000001\n");
    }
    void Write(const std::string& name, const std::string& text) {
        ASSERT_TRUE(hives_.WriteHive(name, text));
    }

    TestSupport::HiveFolder hives_;
};

}  // namespace

TEST(RegistryRoots, LookUpByNameAndByFullName) {
    // Abbreviations and full names, without regard to case; the full-name form is exact.
    EXPECT_EQ(FindRootIndex(L"hklm"), 1);
    EXPECT_EQ(FindRootIndex(L"HKEY_Local_Machine"), 1);
    EXPECT_EQ(FindRootIndex(L"HKLMX"), kRootCount);
    EXPECT_EQ(FindRootIndex(L""), kRootCount);
    EXPECT_EQ(HandleValue(RootFromFullName(L"HKEY_USERS\\")), 0x80000003u);
    for (const wchar_t* bad : {L"hkey_users", L"HKLM", L"HKEY_USERS\\\\"})
        EXPECT_EQ(RootFromFullName(bad), nullptr);
    // The written-out handles agree with the platform's.
    for (int i = 0; i < kRootCount; ++i)
        EXPECT_EQ(RootFromFullName(GetRootFullName(i)), GetRootHandle(i)) << i;
    EXPECT_EQ(HKEY_LOCAL_MACHINE, Platform::PredefinedRegKey(Platform::RegRoot::LocalMachine));
}

TEST_F(RegistryHives, KeysReadValuesWithTheirTypeRules) {
    Key key(L"HKEY_LOCAL_MACHINE\\Software\\Product");
    EXPECT_EQ(key.GetRoot(), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(key.GetPath(), L"Software\\Product");
    EXPECT_EQ(key.ReadString(L"InstallPath", L"dflt"), L"/opt/product");
    EXPECT_EQ(key.ReadDword(L"Number", 7), 42u);
    EXPECT_EQ(key.ReadDword(L"number", 7, false), 42u);  // forced 64-bit view, same hive

    // A DWORD is decided by success and type: a short one reads as far as it goes, one
    // too long for the 4 bytes fails.
    EXPECT_EQ(key.ReadDword(L"ShortDword", 7), 0x0201u);
    EXPECT_EQ(key.ReadDword(L"LongDword", 7), 7u);
    // Wrong types and terminators give the default.
    EXPECT_EQ(key.ReadDword(L"Text", 7), 7u);
    EXPECT_EQ(key.ReadDword(L"Qword", 7), 7u);
    EXPECT_EQ(key.ReadDword(L"Missing", 7), 7u);
    EXPECT_EQ(key.ReadString(L"Number", L"dflt"), L"dflt");
    EXPECT_EQ(key.ReadString(L"Unterminated", L"dflt"), L"dflt");
    EXPECT_EQ(key.ReadString(L"OddSize", L"dflt"), L"dflt");
    EXPECT_EQ(key.ReadString(L"OneByte", L"dflt"), L"dflt");
    EXPECT_EQ(key.ReadString(L"EmptySz", L"dflt"), L"");
    EXPECT_EQ(key.ReadString(L"Expand", L"dflt"), L"%HOME%");  // not expanded

    // Changing the path closes the handles; the next read opens the new key.
    key.SetPath(L"Software\\Missing");
    EXPECT_EQ(key.ReadString(L"InstallPath", L"dflt"), L"dflt");
    EXPECT_EQ(key.GetLastError(), ErrorCode::FromWin32(2));
    key.SetRoot(HKEY_CURRENT_USER);
    key.SetPath(L"Software\\ResourceLib");
    EXPECT_EQ(key.ReadDword(L"DisplayErrors", 0, true), 1u);

    // The full-path form needs the full root name, with a trailing "\" kept in the path.
    Key trailing(L"HKEY_LOCAL_MACHINE\\Software\\");
    EXPECT_EQ(HandleValue(trailing.GetRoot()), 0x80000002u);
    EXPECT_EQ(trailing.GetPath(), L"Software\\");
    Key abbreviated(L"HKLM\\Software\\Product");
    EXPECT_EQ(abbreviated.GetRoot(), nullptr);
    EXPECT_EQ(abbreviated.ReadString(L"InstallPath", L"dflt"), L"dflt");
    EXPECT_EQ(abbreviated.ReadDword(L"Number", 3), 3u);
    Key rootOnly(L"HKEY_CURRENT_USER");
    EXPECT_EQ(rootOnly.GetRoot(), HKEY_CURRENT_USER);
    EXPECT_EQ(rootOnly.ReadDword(L"x", 9), 9u);  // empty path: nothing is opened
}

TEST_F(RegistryHives, OpenModesAndHandleRecords) {
    Key key(HKEY_LOCAL_MACHINE, L"Software\\Product");
    KeyHandle opened = key.Open(0, KEY_READ, false);
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened.ViewBits(), KEY_WOW64_64KEY);
    EXPECT_EQ(key.Open(0, KEY_READ, true).ViewBits(), 0u);
    EXPECT_TRUE(key.Open(1, KEY_READ, true));  // creating an existing key opens it
    EXPECT_FALSE(key.Open(2, KEY_READ, true));
    EXPECT_EQ(key.GetLastError(), ErrorCode());

    Key missing(HKEY_LOCAL_MACHINE, L"Software\\New");
    EXPECT_FALSE(missing.Open(1, KEY_READ, true));  // the hives are read-only
    EXPECT_EQ(missing.GetLastError(), ErrorCode(E_ACCESSDENIED));

    // Moving transfers the key; assigning over a record closes its own key first.
    KeyHandle moved = std::move(opened);
    EXPECT_FALSE(opened);
    ASSERT_TRUE(moved);
    KeyHandle other;
    EXPECT_EQ(other.Open(HKEY_CURRENT_USER, L"Software\\ResourceLib", KEY_READ), ErrorCode());
    other = std::move(moved);
    EXPECT_TRUE(other);
    EXPECT_EQ(other.Reset(), ErrorCode());
    EXPECT_FALSE(other);

    // Transactions: none exist here, so only plain access permitted by the context works.
    TransactionContext plainAllowed{nullptr, true};
    KeyHandle plain(&plainAllowed);
    EXPECT_EQ(plain.Open(HKEY_LOCAL_MACHINE, L"Software\\Product", KEY_READ), ErrorCode());
    TransactionContext plainRefused{nullptr, false};
    KeyHandle refused(&plainRefused);
    EXPECT_EQ(refused.Open(HKEY_LOCAL_MACHINE, L"Software\\Product", KEY_READ),
              ErrorCode::FromWin32(1));
    int fakeTransaction = 0;
    TransactionContext transacted{&fakeTransaction, true};
    KeyHandle inTransaction(&transacted);
    EXPECT_EQ(inTransaction.Open(HKEY_LOCAL_MACHINE, L"Software\\Product", KEY_READ),
              ErrorCode::FromWin32(1));
    uint32_t disposition = 0;
    EXPECT_EQ(
        inTransaction.Create(HKEY_LOCAL_MACHINE, L"Software\\Product", KEY_READ, &disposition),
        ErrorCode::FromWin32(1));
    EXPECT_FALSE(inTransaction);
    // A failed open leaves the record's key as it was.
    EXPECT_EQ(plain.Open(HKEY_LOCAL_MACHINE, L"Software\\Missing", KEY_READ),
              ErrorCode::FromWin32(2));
    EXPECT_TRUE(plain);
}

TEST_F(RegistryHives, KeyPathsTakeFullAndAbbreviatedRoots) {
    KeyPath path(L"hklm\\Software");
    EXPECT_EQ(path.GetRoot(), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(path.GetPath(), L"Software");
    path.Add(L"Product");
    EXPECT_EQ(path.GetFullPath(), L"HKEY_LOCAL_MACHINE\\Software\\Product");
    EXPECT_EQ(path.ReadString(L"InstallPath", L"dflt"), L"/opt/product");
    path.SetView64(true);
    EXPECT_EQ(path.ReadString(L"InstallPath", L"dflt"), L"/opt/product");
    path.Add(L"HKCU\\Deeper");  // with a root set, text is appended whole
    EXPECT_EQ(path.GetPath(), L"Software\\Product\\HKCU\\Deeper");

    KeyPath rootless(L"Software\\Product");
    EXPECT_EQ(rootless.GetRoot(), nullptr);
    EXPECT_EQ(rootless.GetFullPath(), L"Software\\Product");
    EXPECT_EQ(rootless.ReadString(L"InstallPath", L"dflt"), L"dflt");
    // Still without root, a later text may bring one.
    rootless.Add(L"HKEY_CURRENT_USER\\X");
    EXPECT_EQ(rootless.GetRoot(), HKEY_CURRENT_USER);
    EXPECT_EQ(rootless.GetPath(), L"Software\\Product\\X");

    KeyPath justRoot(L"HKEY_CURRENT_USER");
    EXPECT_EQ(justRoot.GetFullPath(), L"HKEY_CURRENT_USER");
    EXPECT_EQ(KeyPath(L"").GetRoot(), nullptr);
}
