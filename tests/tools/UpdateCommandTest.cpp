#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/HiveFolder.h"
#include "support/TestFiles.h"

namespace fs = std::filesystem;

namespace {

// lumetta-diag update in a private network namespace of its own: nothing listens on
// 127.0.0.1:80 there, so a connection is refused at once, whatever runs on this machine.
// Whole updates against real servers are the end-to-end tests' part.
TEST(UpdateCommand, ARefusedConnectionOrBadArgumentsFailCleanly) {
    const TestSupport::TempFolder temp{"lumetta-diag-update"};
    const TestSupport::HiveFolder registry;
    auto update = [&](std::vector<std::string> args) {
        args.insert(args.begin(), {LUMETTA_NETNS_RUN, LUMETTA_DIAG, "update"});
        return TestSupport::RunProgram(args, "TMPDIR=" + TestSupport::ShellQuoted(temp.Path()));
    };
    const std::string product = "Update Test " + std::to_string(::getpid());
    const TestSupport::CommandOutput bad =
        update({"--setup-timeout-ms", "soon", "/downloadURL", "127.0.0.1/x"});
    EXPECT_NE(bad.exitCode, 0) << bad.out;
    EXPECT_EQ(bad.out.find("state "), std::string::npos) << bad.out;
    EXPECT_TRUE(fs::is_empty(temp.Path())) << "no setup file was made";

    const TestSupport::CommandOutput run =
        update({"--launch", "/productName", product, "/productExecutable", "NoSuchProduct.exe",
                "/downloadURL", "127.0.0.1/setup.exe"});
    EXPECT_EQ(run.exitCode, 1) << run.out;
    const std::string setupFile = (temp / "Update1.exe").string();
    const std::string head = "download 127.0.0.1/setup.exe\nsetup file " + setupFile +
                             "\nstate 1 Connecting\nstate 4 Finished\nresult failed\n"
                             "INF download http://127.0.0.1:80/setup.exe via a direct "
                             "connection (no proxy)\n"
                             "ERR received 0 bytes: the server refused the connection (";
    const std::string tail = ")\nreason: the server refused the connection\n";
    EXPECT_EQ(run.out.substr(0, head.size()), head)
        << "no download, no installation and, after a failure, no launch";
    EXPECT_TRUE(run.out.ends_with(tail)) << run.out;
    EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 8) << run.out;
    // Created when the update began; what a failed download leaves behind stays.
    ASSERT_TRUE(fs::exists(setupFile));
    EXPECT_EQ(fs::file_size(setupFile), 0u);
}

}  // namespace
