#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/HiveFolder.h"
#include "support/TestFiles.h"

namespace fs = std::filesystem;

namespace {

std::string Quoted(const std::string& text) {
    std::string out = "'";
    for (char ch : text) out += ch == '\'' ? std::string("'\\''") : std::string(1, ch);
    return out + "'";
}

// lumetta-diag update in a private network namespace of its own: nothing listens on
// 127.0.0.1:80 there, so a connection is refused at once, whatever runs on this machine.
// The temporary folder and the registry are folders of the test.
class UpdateCommand : public ::testing::Test {
protected:
    TestSupport::CommandOutput Update(const std::vector<std::string>& args) {
        std::string command = "TMPDIR=" + Quoted(temp.Path().string()) + " " +
                              Quoted(LUMETTA_NETNS_RUN) + " " + Quoted(LUMETTA_DIAG) + " update";
        for (const auto& arg : args) command += " " + Quoted(arg);
        return TestSupport::RunCommand(command + " 2>&1");
    }

    TestSupport::TempFolder temp{"lumetta-diag-update"};
    TestSupport::HiveFolder registry;
};

TEST_F(UpdateCommand, ARefusedConnectionFailsTheUpdateCleanly) {
    const std::string product = "Update Test " + std::to_string(::getpid());
    const TestSupport::CommandOutput run =
        Update({"--launch", "/productName", product, "/productExecutable", "NoSuchProduct.exe",
                "/downloadURL", "127.0.0.1/setup.exe"});
    EXPECT_EQ(run.exitCode, 1) << run.out;
    const std::string setupFile = (temp / "Update1.exe").string();
    const std::string expected = "download 127.0.0.1/setup.exe\nsetup file " + setupFile +
                                 "\nstate 1 Connecting\nstate 4 Finished\nresult failed\n";
    EXPECT_EQ(run.out, expected) << "no download, no installation and, after a failure, no launch";
    // Created when the update began; what a failed download leaves behind stays.
    ASSERT_TRUE(fs::exists(setupFile));
    EXPECT_EQ(fs::file_size(setupFile), 0u);
}

TEST_F(UpdateCommand, BadArgumentsEndWithAnErrorAndNoUpdate) {
    const TestSupport::CommandOutput run =
        Update({"--setup-timeout-ms", "soon", "/downloadURL", "127.0.0.1/x"});
    EXPECT_NE(run.exitCode, 0) << run.out;
    EXPECT_EQ(run.out.find("state "), std::string::npos) << run.out;
    EXPECT_TRUE(fs::is_empty(temp.Path())) << "no setup file was made";
}

}  // namespace
