#include <gtest/gtest.h>

#include <string>

#include "support/CommandOutput.h"
#include "support/TestFiles.h"

namespace {

TestSupport::CommandOutput Res(const std::string& file, const std::string& string = "") {
    return string.empty()
               ? TestSupport::RunProgram({LUMETTA_DIAG, "res", file})
               : TestSupport::RunProgram({LUMETTA_DIAG, "res", file, "--string", string});
}

// The tool carries the updater's own resources, so it can read itself.
TEST(ResCommand, ListsResourcesAndVersionAndPrintsOneString) {
    TestSupport::CommandOutput run = Res(LUMETTA_DIAG, "131");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "LumettaPlayer.exe\n");

    run = Res(LUMETTA_DIAG);
    EXPECT_EQ(run.exitCode, 0) << run.out;
    for (const char* expected :
         {"ELF file, 6 resources", "RT_DIALOG              102", "RT_GROUP_ICON          128",
          "RT_STRING              9                        0x0000", "translation 0x04B00409",
          "040904B0 FileVersion = "})
        EXPECT_NE(run.out.find(expected), std::string::npos) << expected << "\n" << run.out;

    run = Res(LUMETTA_DIAG, "133");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "lumetta-diag: no string 133 in the string tables\n");
    EXPECT_EQ(Res(LUMETTA_DIAG, "twelve").exitCode, 2);
}

TEST(ResCommand, FilesWithoutResourcesAreExplained) {
    const TestSupport::TempFolder temp{"lumetta-res-text"};
    const std::string text = (temp / "notes.txt").string();
    ASSERT_TRUE(TestSupport::WriteFile(text, "plain text\n"));
    const std::pair<std::string, std::string> cases[] = {
        {"/nonexistent/file.dll", "(error 2)"},
        {"/bin/sh", "did not contain a resource section. (error 1812)"},
        {text, text + " is not a valid Win32 application. (error 193)"},
    };
    for (const auto& [file, message] : cases) {
        const TestSupport::CommandOutput run = Res(file);
        EXPECT_EQ(run.exitCode, 1) << file;
        EXPECT_NE(run.out.find(message), std::string::npos) << run.out;
    }
}

}  // namespace
