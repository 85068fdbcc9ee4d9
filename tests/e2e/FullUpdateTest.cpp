#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "TestHarness.h"

namespace {

using TestHarness::ChildProcess;
using TestHarness::Exists;
using TestHarness::Lines;
using TestHarness::ReadFile;
using TestHarness::WaitForText;

class FullUpdate : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(servers.Ready()) << servers.Problem(); }
    std::string Output() const { return ReadFile(d.work.File("diag.out")); }

    const TestHarness::DemoUpdate d{"E2E Product"};
    TestHarness::HttpServers servers{d.www.Path()};
};

TEST_F(FullUpdate, ClosesTheProductInstallsTheNewOneAndLaunchesIt) {
    ChildProcess running;
    ASSERT_TRUE(d.StartOld(running));
    ASSERT_EQ(d.Diag(LUMETTA_DIAG, {"--launch"}), 0) << Output();
    const std::string output = Output();
    EXPECT_NE(output.find("state 1 Connecting\nstate 2 Downloading\n"), std::string::npos)
        << output;
    EXPECT_NE(output.find("state 3 Installing\nstate 4 Finished\nresult installed\n"),
              std::string::npos)
        << output;

    int status = -1;
    ASSERT_TRUE(running.Wait(10000, &status)) << "the old product was closed\n" << output;
    EXPECT_EQ(status, 0) << "by its exit event";
    EXPECT_EQ(Lines(ReadFile(d.work.File("setup-args"))),
              (std::vector<std::string>{"/verysilent", "/norestart", "/S", "/SUPPRESSMSGBOXES",
                                        "/COMPONENTS=!suite"}));
    EXPECT_FALSE(Exists(d.temp.File("Update1.exe"))) << "the setup file is deleted";
    EXPECT_EQ(ReadFile(d.work.File("install/" + d.exe)), ReadFile(LUMETTA_DEMO_PRODUCT));
    // Launched from the recorded install path; a second run closes it first (and then fails
    // on a 404 page).
    ASSERT_TRUE(WaitForText(d.work.File("launched"), "started"));
    EXPECT_EQ(d.Diag(LUMETTA_DIAG, {"/isSilent", "0"}, {}, "127.0.0.2/missing"), 1);
    EXPECT_TRUE(WaitForText(d.work.File("launched"), "exit event"));
}

TEST_F(FullUpdate, ANonSilentRunStartsTheSetupWithoutArguments) {
    ASSERT_EQ(d.Diag(LUMETTA_DIAG, {"/isSilent", "0"}, {"DEMO_SETUP_MODE=exit:7"}), 0) << Output();
    EXPECT_TRUE(Exists(d.work.File("setup-args")));
    EXPECT_TRUE(Lines(ReadFile(d.work.File("setup-args"))).empty());
}

// The log holds the failing step ("ERR") under its writer's name and the reason, and the
// tool's last line gives the same reason. What a failed update received stays.
TEST_F(FullUpdate, AFailedUpdateSaysWhyInTheLogAndInItsLastLine) {
    const std::string setup = d.temp.File("Update1.exe");
    const std::string notWin32 = "(Code 193: " + setup + " is not a valid Win32 application.)";
    struct Case {
        const char* url;
        const char* mode;  // of the demo setup
        const char* writer;
        std::string step;  // the beginning of the failing step's line
        std::string reason;
    };
    const Case cases[] = {
        {"127.0.0.2/missing", "install", "Engine:UpdateWorker:Install@1",
         "setup could not be started: \"" + setup + "\" /verysilent",
         "the server answered 404 and the file it sent could not be started " + notWin32},
        {"127.0.0.2/notasetup.exe", "install", "Engine:UpdateWorker:Install@1",
         "setup could not be started: ", "the setup file could not be started " + notWin32},
        {"127.0.0.3/setup.exe", "install", "Engine:HttpDownloader:Download@3",
         "received 0 bytes: the server refused the connection (",
         "the server refused the connection"},
        {"127.0.0.2/cut", "install", "Engine:HttpDownloader:Download@3",
         "received 30000 of 100000 bytes: the connection closed after 30000 of 100000 bytes (",
         "the connection closed after 30000 of 100000 bytes"},
        {"127.0.0.1/setup.exe", "hang", "Engine:UpdateWorker:Install@2",
         "setup still ran when its time limit 1000 ms ended the wait",
         "the setup did not end within its time limit of 1000 ms"},
    };
    // The header of a log line: time (20), tag and blank (4), thread (6), writer (48 + 1).
    auto header = [](const std::string& line, const char* tag, const char* writer) {
        std::string name = writer;
        name.resize(48, ' ');
        return line.size() > 79 && line.compare(20, 4, std::string(tag) + " ") == 0 &&
               line.compare(30, 49, name + " ") == 0;
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.url);
        std::filesystem::remove(setup);
        const std::string logFile = d.work.File("update.log");
        std::filesystem::remove(logFile);
        std::filesystem::remove(d.work.File("diag.out"));
        EXPECT_EQ(d.Diag(LUMETTA_DIAG, {"--setup-timeout-ms", "1000"},
                         {"DEMO_SETUP_MODE=" + std::string(c.mode), "Debugging_Log_Path=" + logFile,
                          "Debugging_Log_Level=2"},
                         c.url),
                  1);
        const std::string output = Output();
        const std::vector<std::string> lines = Lines(output);
        ASSERT_FALSE(lines.empty());
        EXPECT_EQ(lines.back(), "reason: " + c.reason) << output;
        EXPECT_NE(output.find("\nERR " + c.step), std::string::npos) << output;

        const std::vector<std::string> log = Lines(ReadFile(logFile));
        auto logged = [&](const char* tag, const char* writer, const std::string& text) {
            for (const std::string& line : log)
                if (header(line, tag, writer) && line.compare(79, text.size(), text) == 0)
                    return true;
            return false;
        };
        EXPECT_TRUE(logged("ERR", c.writer, c.step)) << ReadFile(logFile);
        EXPECT_TRUE(logged("ERR", "Engine:UpdateWorker:Run@1", "update failed: " + c.reason))
            << ReadFile(logFile);
        // The URL as requested: with its scheme and port 80.
        std::string requested = std::string("download http://") + c.url;
        requested.insert(requested.find('/', 16), ":80");
        EXPECT_TRUE(logged("INF", "Engine:HttpDownloader:Download@1", requested))
            << ReadFile(logFile);
        EXPECT_TRUE(Exists(setup)) << "what was received stays";
    }
}

TEST_F(FullUpdate, AProductThatIgnoresItsExitEventIsEnded) {
    ChildProcess stubborn;
    ASSERT_TRUE(d.StartOld(stubborn, {"--ignore-exit-event"}));
    ASSERT_EQ(d.Diag(LUMETTA_DIAG, {}), 0) << Output();
    int status = -1;
    ASSERT_TRUE(stubborn.Wait(10000, &status)) << Output();
    EXPECT_EQ(status, 128 + 9) << "killed after 2000 ms";
    EXPECT_TRUE(WaitForText(d.work.File("old"), "exit event"));
}

}  // namespace
