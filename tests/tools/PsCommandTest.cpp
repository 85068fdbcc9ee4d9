#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <string>

#include "foundation/TextConversion.h"
#include "support/CommandOutput.h"
#include "support/TestFiles.h"
#include "system/Processes.h"

namespace fs = std::filesystem;

namespace {

TEST(PsCommand, ListsTheProcessesOfAnExecutableName) {
    // A running copy of /bin/sleep under a name of our own.
    const TestSupport::TempFolder temp("lumetta-ps");
    ASSERT_FALSE(temp.Path().empty());
    const std::string name = "LumettaPs" + std::to_string(::getpid()) + ".exe";
    fs::copy_file("/bin/sleep", temp / name, fs::copy_options::overwrite_existing);
    System::ProcessInfo process =
        System::StartProcess(STLHelpers::Utf8ToWide((temp / name).string()), L"600");
    ASSERT_TRUE(process.HasHandle());

    std::string upper = name;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const TestSupport::CommandOutput run = TestSupport::RunProgram({LUMETTA_DIAG, "ps", upper});
    EXPECT_EQ(run.exitCode, 0) << run.out;
    char expected[256];
    std::snprintf(expected, sizeof expected, "%-8u %-8u %-7u %s\n", process.GetId(),
                  static_cast<unsigned>(::getpid()), 1u, name.c_str());
    EXPECT_EQ(run.out, std::string("PID      PARENT   THREADS NAME\n") + expected);

    EXPECT_TRUE(process.Terminate(0));
    EXPECT_TRUE(process.Wait(60000));
    const TestSupport::CommandOutput none = TestSupport::RunProgram({LUMETTA_DIAG, "ps", name});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.out, "no process named " + name + "\n");
    EXPECT_NE(TestSupport::RunProgram({LUMETTA_DIAG, "ps"}).exitCode, 0) << "NAME is required";
}

}  // namespace
