#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "support/CommandOutput.h"
#include "support/TestFiles.h"

namespace fs = std::filesystem;

namespace {

using DiagRun = TestSupport::CommandOutput;

// A hive folder with an HKCU export in UTF-16LE and a hand-written UTF-8 HKLM file.
class RegCommand : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(folder_.empty());
        const std::u16string hkcu =
            u"Windows Registry Editor Version 5.00\r\n\r\n"
            u"[HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl]\r\n"
            u"\"Level\"=dword:0000002a\r\n"
            u"@=\"Log settings \u00e9\"\r\n"
            u"\"Folder\"=hex(2):25,00,54,00,4d,00,50,00,25,00,00,00\r\n"
            u"\"List\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
            u"\"Blob\"=hex:01,ab,\\\r\n  ff\r\n"
            u"\"Cut\"=hex(1):41,00\r\n"
            u"\r\n[HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl\\Child]\r\n";
        std::string utf16le = "\xFF\xFE";
        for (char16_t c : hkcu) {
            utf16le += static_cast<char>(c & 0xFF);
            utf16le += static_cast<char>(c >> 8);
        }
        ASSERT_TRUE(TestSupport::WriteFile(folder_ / "HKEY_CURRENT_USER.reg", utf16le));
        ASSERT_TRUE(TestSupport::WriteFile(
            folder_ / "HKEY_LOCAL_MACHINE.reg",
            "[HKEY_LOCAL_MACHINE\\Software\\Product]\n\"InstallPath\"=\"/opt/product\"\n"
            "this line is broken\n\"Version\"=\"1.2\"\n"));
    }

    DiagRun Diag(const std::string& arguments) {
        return TestSupport::RunCommand("LUMETTA_REGISTRY_DIR='" + folder_.string() + "' '" +
                                       LUMETTA_DIAG + "' " + arguments + " 2>&1");
    }

    TestSupport::TempFolder temp_{"lumetta-diag-reg"};
    const fs::path& folder_ = temp_.Path();
};

}  // namespace

TEST_F(RegCommand, PrintsTheValuesOfAKey) {
    const DiagRun run = Diag("reg query 'hkcu\\Software\\Utility\\Debugging\\LogImpl'");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out,
              "HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl\n"
              "    Level    REG_DWORD    0x0000002a (42)\n"
              "    (Default)    REG_SZ    Log settings \xC3\xA9\n"
              "    Folder    REG_EXPAND_SZ    %TMP%\n"
              "    List    REG_MULTI_SZ    a\\0b\n"
              "    Blob    REG_BINARY    01ABFF\n"
              "    Cut    REG_SZ    4100  (not read: no terminating zero)\n"
              "\n"
              "HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl\\Child\n");

    const DiagRun hklm = Diag("reg query 'HKEY_LOCAL_MACHINE\\Software\\Product'");
    EXPECT_EQ(hklm.exitCode, 0) << hklm.out;
    EXPECT_EQ(hklm.out,
              "HKEY_LOCAL_MACHINE\\Software\\Product\n"
              "    InstallPath    REG_SZ    /opt/product\n"
              "    Version    REG_SZ    1.2\n");
}

TEST_F(RegCommand, PrintsOneValue) {
    const DiagRun run =
        Diag("reg query 'HKCU\\Software\\Utility\\Debugging\\LogImpl' --value LEVEL");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out,
              "HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl\n"
              "    Level    REG_DWORD    0x0000002a (42)\n");

    const DiagRun missing =
        Diag("reg query 'HKCU\\Software\\Utility\\Debugging\\LogImpl' --value Nope");
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.out.find("has no value \"Nope\""), std::string::npos) << missing.out;
}

TEST_F(RegCommand, FailsClearlyForMissingKeysAndRoots) {
    const DiagRun missing = Diag("reg query 'HKLM\\Software\\Absent'");
    EXPECT_EQ(missing.exitCode, 1);
    EXPECT_NE(missing.out.find("the key HKEY_LOCAL_MACHINE\\Software\\Absent does not exist"),
              std::string::npos)
        << missing.out;
    EXPECT_NE(missing.out.find("HKEY_LOCAL_MACHINE.reg"), std::string::npos) << missing.out;

    const DiagRun noRoot = Diag("reg query 'Software\\Product'");
    EXPECT_EQ(noRoot.exitCode, 1);
    EXPECT_NE(noRoot.out.find("does not start with a registry root"), std::string::npos)
        << noRoot.out;

    const DiagRun noKey = Diag("reg query");
    EXPECT_NE(noKey.exitCode, 0);
}
