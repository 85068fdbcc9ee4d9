// What the updater's executable does before any window: its own options and a missing
// display, as a timer or an ssh session meets them.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "TestHarness.h"
#include "support/CommandOutput.h"

namespace {

TEST(UpdaterCommandLine, HelpVersionUnknownOptionAndNoDisplayNeverStartAnUpdate) {
    TestHarness::TempFolder www;
    TestHarness::HttpServers servers(www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();
    // Were an update to start, it would ask this server for its setup.
    const std::string product = " /productName NoUpdate /downloadURL http://127.0.0.1/setup.exe";
    const std::string noDisplay = "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM ";
    const struct {
        std::string arguments;
        int exitCode;
        const char* out;  // what stdout starts with
        const char* err;  // what stderr holds
    } cases[] = {
        {"--help" + product, 0, "Usage: lumetta-updater [/name value]...", ""},
        {product + " --version", 0, "lumetta-updater 0.1.0\n", ""},
        {"--verbose" + product, 2, "", "lumetta-updater: unknown option --verbose"},
        {"--help", 0, "Usage:", ""},
        {product, 1, "", "lumetta-updater: no display: neither DISPLAY nor WAYLAND_DISPLAY"},
    };
    for (const auto& c : cases) {
        const TestSupport::CommandOutput run = TestSupport::RunCommand(
            noDisplay + LUMETTA_UPDATER + " " + c.arguments + " 2>" + www.File("stderr"));
        const std::string err = TestHarness::ReadFile(www.File("stderr"));
        EXPECT_EQ(run.exitCode, c.exitCode) << c.arguments << "\n" << run.out << err;
        EXPECT_EQ(run.out.rfind(c.out, 0), 0u) << c.arguments << "\n" << run.out;
        EXPECT_NE(err.find(c.err), std::string::npos) << c.arguments << "\n" << err;
        EXPECT_EQ(std::count(err.begin(), err.end(), '\n'), *c.err ? 1 : 0) << err;
    }
    EXPECT_EQ(servers.FileRequests(), "") << "nothing was downloaded";
}

// The daily check's units, as a product instance of them: systemd accepts them, and the
// service starts this build's updater with --check.
TEST(UpdaterCommandLine, TheDailyCheckUnitsPassSystemdsVerification) {
    TestHarness::TempFolder units;
    const std::string built = std::string(LUMETTA_BUILD_DIR) + "/systemd-build/";
    for (const char* kind : {".service", ".timer"})
        TestHarness::WriteFile(units.File(std::string("lumetta-update-check@Demo") + kind),
                               TestHarness::ReadFile(built + "lumetta-update-check@" + kind));
    EXPECT_NE(TestHarness::ReadFile(units.File("lumetta-update-check@Demo.service"))
                  .find(std::string("ExecStart=") + LUMETTA_UPDATER + " --check /productName %I"),
              std::string::npos);
    const auto verify = TestSupport::RunProgram({"systemd-analyze", "verify", "--man=no",
                                                 units.File("lumetta-update-check@Demo.timer"),
                                                 units.File("lumetta-update-check@Demo.service")});
    EXPECT_EQ(verify.exitCode, 0) << verify.out;
    EXPECT_EQ(verify.out, "") << "no warnings either";
}

}  // namespace
