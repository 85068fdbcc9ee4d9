#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "TestHarness.h"

namespace {

using TestHarness::ChildProcess;
using TestHarness::Exists;
using TestHarness::Lines;
using TestHarness::ReadFile;
using TestHarness::TempFolder;
using TestHarness::WaitForText;

// The demo setup served by nginx installs the demo product into `install` and records the
// folder in the test registry; the old product runs from `old` under the same file name.
class FullUpdate : public testing::Test {
protected:
    void SetUp() override {
        product = "E2E Product " + std::to_string(::getpid());
        exe = "E2EProd" + std::to_string(::getpid());
        std::filesystem::copy_file(LUMETTA_DEMO_SETUP, www.File("setup.exe"));
        std::filesystem::create_directory(old.File("bin"));
        std::filesystem::copy_file(LUMETTA_DEMO_PRODUCT, old.File("bin/" + exe));
        servers = std::make_unique<TestHarness::HttpServers>(www.Path());
        ASSERT_TRUE(servers->Ready()) << servers->Problem();
    }

    std::vector<std::string> Environment(const std::string& mode = "install") {
        return {"TMPDIR=" + temp.Path(),
                "LUMETTA_REGISTRY_DIR=" + registry.Path(),
                "DEMO_SETUP_LOG=" + work.File("setup-args"),
                "DEMO_SETUP_PAYLOAD=" + std::string(LUMETTA_DEMO_PRODUCT),
                "DEMO_SETUP_TARGET=" + work.File("install"),
                "DEMO_SETUP_EXE=" + exe,
                "DEMO_SETUP_PRODUCT=" + product,
                "DEMO_SETUP_MODE=" + mode,
                "DEMO_PRODUCT_NAME=" + product,
                "DEMO_PRODUCT_MARKER=" + work.File("launched")};
    }

    int Update(const std::vector<std::string>& extra, const std::vector<std::string>& env) {
        std::vector<std::string> argv{LUMETTA_DIAG, "update"};
        argv.insert(argv.end(), extra.begin(), extra.end());
        for (const char* option : {"/productName", "/productExecutable", "/downloadURL"}) {
            argv.push_back(option);
            argv.push_back(option == std::string("/productName")         ? product
                           : option == std::string("/productExecutable") ? exe
                                                                         : "127.0.0.1/setup.exe");
        }
        ChildProcess diag;
        if (!diag.Start(argv, env, work.File("diag.out"))) return -1;
        int status = -1;
        return diag.Wait(120000, &status) ? status : -1;
    }

    TempFolder www, old, temp, registry, work;
    std::unique_ptr<TestHarness::HttpServers> servers;
    std::string product, exe;
};

TEST_F(FullUpdate, ClosesTheProductInstallsTheNewOneAndLaunchesIt) {
    ChildProcess running;
    ASSERT_TRUE(
        running.Start({old.File("bin/" + exe), "--name", product, "--marker", work.File("old")}));
    ASSERT_TRUE(WaitForText(work.File("old"), "started"));

    ASSERT_EQ(Update({"--launch"}, Environment()), 0) << ReadFile(work.File("diag.out"));
    const std::string output = ReadFile(work.File("diag.out"));
    EXPECT_NE(output.find("state 1 Connecting\nstate 2 Downloading\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("state 3 Installing\nstate 4 Finished\nresult installed\n"),
              std::string::npos)
        << output;

    int status = -1;
    ASSERT_TRUE(running.Wait(10000, &status)) << "the old product was closed\n" << output;
    EXPECT_EQ(status, 0) << "by its exit event";
    EXPECT_EQ(Lines(ReadFile(work.File("setup-args"))),
              (std::vector<std::string>{"/verysilent", "/norestart", "/S", "/SUPPRESSMSGBOXES",
                                        "/COMPONENTS=!suite"}));
    EXPECT_FALSE(Exists(temp.File("Update1.exe"))) << "the setup file is deleted";
    EXPECT_EQ(ReadFile(work.File("install/" + exe)), ReadFile(LUMETTA_DEMO_PRODUCT));
    // Launched from the recorded install path.
    ASSERT_TRUE(WaitForText(work.File("launched"), "started"));
    ChildProcess closer;
    ASSERT_TRUE(closer.Start({LUMETTA_DIAG, "update", "/productName", product, "/productExecutable",
                              exe, "/downloadURL", "127.0.0.2/missing", "/isSilent", "0"},
                             Environment("fail"), work.File("closer.out")));
    // The second run closes the launched product first (and then installs a 404 page,
    // which cannot run: the update fails).
    EXPECT_TRUE(closer.Wait(60000, &status));
    EXPECT_TRUE(WaitForText(work.File("launched"), "exit event"));
}

TEST_F(FullUpdate, ANonSilentRunStartsTheSetupWithoutArguments) {
    ASSERT_EQ(Update({"/isSilent", "0"}, Environment("exit:7")), 0)
        << ReadFile(work.File("diag.out"));
    EXPECT_TRUE(Exists(work.File("setup-args")));
    EXPECT_TRUE(Lines(ReadFile(work.File("setup-args"))).empty());
}

TEST_F(FullUpdate, ASetupThatHangsBeyondTheLimitFailsTheUpdate) {
    EXPECT_EQ(Update({"--setup-timeout-ms", "1000"}, Environment("hang")), 1)
        << ReadFile(work.File("diag.out"));
    EXPECT_NE(ReadFile(work.File("diag.out")).find("state 4 Finished\nresult failed"),
              std::string::npos);
    EXPECT_TRUE(Exists(temp.File("Update1.exe"))) << "an unfinished setup stays";
}

TEST_F(FullUpdate, AProductThatIgnoresItsExitEventIsEnded) {
    ChildProcess stubborn;
    ASSERT_TRUE(stubborn.Start({old.File("bin/" + exe), "--name", product, "--marker",
                                work.File("old"), "--ignore-exit-event"}));
    ASSERT_TRUE(WaitForText(work.File("old"), "started"));
    ASSERT_EQ(Update({}, Environment()), 0) << ReadFile(work.File("diag.out"));
    int status = -1;
    ASSERT_TRUE(stubborn.Wait(10000, &status)) << ReadFile(work.File("diag.out"));
    EXPECT_EQ(status, 128 + 9) << "killed after 2000 ms";
    EXPECT_TRUE(WaitForText(work.File("old"), "exit event"));
}

}  // namespace
