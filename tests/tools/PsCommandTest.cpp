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

using PsRun = TestSupport::CommandOutput;

PsRun Ps(const std::string& arguments) {
    return TestSupport::RunCommand(std::string("'") + LUMETTA_DIAG + "' ps " + arguments + " 2>&1");
}

TEST(PsCommand, ListsTheProcessesOfAnExecutableName) {
    // A running copy of /bin/sleep under a name of our own.
    const TestSupport::TempFolder temp("lumetta-ps");
    const fs::path& folder = temp.Path();
    ASSERT_FALSE(folder.empty());
    const std::string name = "LumettaPs" + std::to_string(::getpid()) + ".exe";
    fs::copy_file("/bin/sleep", folder / name, fs::copy_options::overwrite_existing);
    System::ProcessInfo process =
        System::StartProcess(STLHelpers::Utf8ToWide((folder / name).string()), L"600");
    ASSERT_TRUE(process.HasHandle());

    std::string upper = name;
    for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const PsRun run = Ps(upper);
    EXPECT_EQ(run.exitCode, 0) << run.out;
    char expected[256];
    std::snprintf(expected, sizeof expected, "%-8u %-8u %-7u %s\n", process.GetId(),
                  static_cast<unsigned>(::getpid()), 1u, name.c_str());
    EXPECT_EQ(run.out, std::string("PID      PARENT   THREADS NAME\n") + expected);

    EXPECT_TRUE(process.Terminate(0));
    EXPECT_TRUE(process.Wait(60000));
    const PsRun none = Ps(name);
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.out, "no process named " + name + "\n");
    EXPECT_NE(Ps("").exitCode, 0) << "NAME is required";
}

}  // namespace
