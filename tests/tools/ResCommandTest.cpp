#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "support/CommandOutput.h"

namespace {

using DiagRun = TestSupport::CommandOutput;

DiagRun Diag(const std::string& arguments) {
    return TestSupport::RunCommand(std::string("'") + LUMETTA_DIAG + "' res " + arguments +
                                   " 2>&1");
}

// The tool carries the updater's own resources, so it can read itself.
TEST(ResCommand, ListsResourcesAndVersionAndPrintsOneString) {
    const std::string self = std::string("'") + LUMETTA_DIAG + "'";
    DiagRun run = Diag(self + " --string 131");
    EXPECT_EQ(run.exitCode, 0);
    EXPECT_EQ(run.out, "LumettaPlayer.exe\n");

    run = Diag(self);
    EXPECT_EQ(run.exitCode, 0) << run.out;
    EXPECT_NE(run.out.find("ELF file, 6 resources"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("RT_DIALOG              102"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("RT_GROUP_ICON          128"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("RT_STRING              9                        0x0000"),
              std::string::npos)
        << run.out;
    EXPECT_NE(run.out.find("translation 0x04B00409"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("040904B0 FileVersion = "), std::string::npos) << run.out;

    run = Diag(self + " --string 133");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(run.out, "lumetta-diag: no string 133 in the string tables\n");
    run = Diag(self + " --string twelve");
    EXPECT_EQ(run.exitCode, 2);
}

TEST(ResCommand, FilesWithoutResourcesAreExplained) {
    DiagRun run = Diag("/nonexistent/file.dll");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("(error 2)"), std::string::npos) << run.out;
    run = Diag("/bin/sh");
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find("did not contain a resource section. (error 1812)"), std::string::npos)
        << run.out;
    char path[] = "/tmp/lumetta-res-text-XXXXXX";
    const int fd = ::mkstemp(path);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::write(fd, "plain text\n", 11), 11);
    ::close(fd);
    run = Diag(path);
    ::unlink(path);
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_NE(run.out.find(std::string(path) + " is not a valid Win32 application. (error 193)"),
              std::string::npos)
        << run.out;
}

}  // namespace
