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

    int Update(const std::vector<std::string>& extra, const std::vector<std::string>& env,
               const std::string& url = "127.0.0.1/setup.exe") {
        std::vector<std::string> argv{LUMETTA_DIAG, "update"};
        argv.insert(argv.end(), extra.begin(), extra.end());
        for (const char* option : {"/productName", "/productExecutable", "/downloadURL"}) {
            argv.push_back(option);
            argv.push_back(option == std::string("/productName")         ? product
                           : option == std::string("/productExecutable") ? exe
                                                                         : url);
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

// Failed updates with the diagnostic log on: the log holds the failing step at level 4
// ("ERR") under its writer's name and the reason, and the tool's last line gives the same
// reason. What a failed update received stays in the setup file.
TEST_F(FullUpdate, AFailedUpdateSaysWhyInTheLogAndInItsLastLine) {
    const std::string setup = temp.File("Update1.exe");
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
        const std::string logFile = work.File("update.log");
        std::filesystem::remove(logFile);
        std::vector<std::string> env = Environment(c.mode);
        env.push_back("Debugging_Log_Path=" + logFile);
        env.push_back("Debugging_Log_Level=2");
        EXPECT_EQ(Update({"--setup-timeout-ms", "1000"}, env, c.url), 1);
        const std::string output = ReadFile(work.File("diag.out"));
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
