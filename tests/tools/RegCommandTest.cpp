#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>

#include "support/CommandOutput.h"
#include "support/HiveFolder.h"

namespace {

// lumetta-diag reg query over an HKCU export in UTF-16LE and a hand-written UTF-8 HKLM file.
TEST(RegCommand, PrintsKeysAndValuesAndFailsClearly) {
    const TestSupport::HiveFolder hives;
    ASSERT_TRUE(hives.WriteHive(
        "HKEY_CURRENT_USER.reg",
        TestSupport::Utf16LeWithBom(
            u"Windows Registry Editor Version 5.00\r\n\r\n"
            u"[HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl]\r\n"
            u"\"Level\"=dword:0000002a\r\n"
            u"@=\"Log settings \u00e9\"\r\n"
            u"\"Folder\"=hex(2):25,00,54,00,4d,00,50,00,25,00,00,00\r\n"
            u"\"List\"=hex(7):61,00,00,00,62,00,00,00,00,00\r\n"
            u"\"Blob\"=hex:01,ab,\\\r\n  ff\r\n"
            u"\"Cut\"=hex(1):41,00\r\n"
            u"\r\n[HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl\\Child]\r\n")));
    ASSERT_TRUE(hives.WriteHive(
        "HKEY_LOCAL_MACHINE.reg",
        "[HKEY_LOCAL_MACHINE\\Software\\Product]\n\"InstallPath\"=\"/opt/product\"\n"
        "this line is broken\n\"Version\"=\"1.2\"\n"));
    auto query = [](const std::string& key, const std::string& value = "") {
        return value.empty()
                   ? TestSupport::RunProgram({LUMETTA_DIAG, "reg", "query", key})
                   : TestSupport::RunProgram({LUMETTA_DIAG, "reg", "query", key, "--value", value});
    };
    const std::string logKey = "HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl";
    const std::string levelLine = "    Level    REG_DWORD    0x0000002a (42)\n";

    TestSupport::CommandOutput run = query("hkcu\\Software\\Utility\\Debugging\\LogImpl");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out, logKey + "\n" + levelLine +
                           "    (Default)    REG_SZ    Log settings \xC3\xA9\n"
                           "    Folder    REG_EXPAND_SZ    %TMP%\n"
                           "    List    REG_MULTI_SZ    a\\0b\n"
                           "    Blob    REG_BINARY    01ABFF\n"
                           "    Cut    REG_SZ    4100  (not read: no terminating zero)\n"
                           "\n" +
                           logKey + "\\Child\n");
    run = query("HKEY_LOCAL_MACHINE\\Software\\Product");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out,
              "HKEY_LOCAL_MACHINE\\Software\\Product\n"
              "    InstallPath    REG_SZ    /opt/product\n"
              "    Version    REG_SZ    1.2\n");
    run = query("HKCU\\Software\\Utility\\Debugging\\LogImpl", "LEVEL");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out, logKey + "\n" + levelLine);

    const struct {
        const char *key, *value, *says;
    } failures[] = {
        {"HKCU\\Software\\Utility\\Debugging\\LogImpl", "Nope", "has no value \"Nope\""},
        {"Software\\Product", "", "does not start with a registry root"},
        {"HKLM\\Software\\Absent", "",
         "the key HKEY_LOCAL_MACHINE\\Software\\Absent does not exist"},
    };
    for (const auto& f : failures) {
        run = query(f.key, f.value);
        EXPECT_EQ(run.exitCode, 1);
        EXPECT_NE(run.out.find(f.says), std::string::npos) << run.out;
    }
    EXPECT_NE(run.out.find("HKEY_LOCAL_MACHINE.reg"), std::string::npos) << run.out;
    EXPECT_NE(TestSupport::RunProgram({LUMETTA_DIAG, "reg", "query"}).exitCode, 0);
}

}  // namespace

// reg check lists every line of every hive that the reader skips, and a hive file that
// cannot be read; the updater's own reads put the skipped lines in the diagnostic log.
TEST(RegCommand, CheckListsEveryProblemAndTheLogGetsTheSkippedLines) {
    const TestSupport::HiveFolder hives;
    const std::string user = (hives / "HKEY_CURRENT_USER.reg").string();
    const std::string machine = (hives / "HKEY_LOCAL_MACHINE.reg").string();
    const std::string users = (hives / "HKEY_USERS.reg").string();
    ASSERT_TRUE(hives.WriteHive("HKEY_CURRENT_USER.reg",
                                "Windows Registry Editor Version 5.00\n\n"
                                "[HKEY_CURRENT_USER\\Software\\Check Product]\n"
                                "\"Language\"=\"de\"\n"
                                "\"Broken\n"));
    ASSERT_TRUE(hives.WriteHive("HKEY_LOCAL_MACHINE.reg",
                                "Windows Registry Editor Version 5.00\n"
                                "[HKEY_LOCAL_MACHINE\\Software\\Check Product\n"
                                "[HKEY_LOCAL_MACHINE\\Software\\Check Product]\n"
                                "\"Count\"=dword:zz\n"));
    ASSERT_TRUE(std::filesystem::create_directory(users));

    TestSupport::CommandOutput run = TestSupport::RunProgram({LUMETTA_DIAG, "reg", "check"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, user + ":5: value name without closing quote\n" + machine +
                           ":2: key line without closing bracket\n" + machine +
                           ":4: bad dword data\n" + users +
                           ": the file is not a regular file\n"
                           "4 problems in the hive files\n");

    const std::string log = (hives / "update.log").string();
    run = TestSupport::RunProgram(
        {LUMETTA_DIAG, "config", "/productName", "Check Product"},
        "Debugging_Log_Path=" + TestSupport::ShellQuoted(log) + " Debugging_Log_Level=3");
    EXPECT_EQ(run.exitCode, 0) << run.out;
    const std::string logged = TestSupport::ReadFile(log);
    // At level 3 under the reader's name: the tag at column 20, the name at 30, the text at 79.
    for (const std::string& text :
         {user + " line 5 skipped: value name without closing quote",
          machine + " line 2 skipped: key line without closing bracket"}) {
        bool found = false;
        std::istringstream lines(logged);
        for (std::string line; std::getline(lines, line);)
            found |= line.compare(19, 5, " WRN ") == 0 &&
                     line.compare(30, 36, "Registry:internal:LogHiveProblems@1 ") == 0 &&
                     line.compare(79, text.size(), text) == 0;
        EXPECT_TRUE(found) << text << "\n" << logged;
    }

    ASSERT_TRUE(std::filesystem::remove(users));
    ASSERT_TRUE(hives.WriteHive("HKEY_CURRENT_USER.reg", "REGEDIT4\n"));
    ASSERT_TRUE(hives.WriteHive("HKEY_LOCAL_MACHINE.reg", "REGEDIT4\n"));
    run = TestSupport::RunProgram({LUMETTA_DIAG, "reg", "check"});
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out, "no problems in the hive files\n");
}
