// The updater's own executable on a virtual X display, driven as a user drives it: Return
// on the finished dialog, and what the window system is told of a caption that is missing.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "TestHarness.h"
#include "support/CommandOutput.h"

namespace {

using TestHarness::ChildProcess;
using TestHarness::Exists;
using TestHarness::ReadFile;
using TestHarness::TempFolder;
using TestSupport::RunCommand;

namespace fs = std::filesystem;

// Waits up to `timeoutMs` for `condition`.
template <class Condition>
bool WaitUntil(Condition condition, int timeoutMs) {
    for (int waited = 0; waited < timeoutMs; waited += 20) {
        if (condition()) return true;
        ::usleep(20000);
    }
    return condition();
}

// A copy of the updater beside its texts, with the caption's text emptied in every language.
std::string UpdaterWithoutCaption(const TempFolder& folder) {
    const fs::path original = LUMETTA_UPDATER;
    const std::string copy = folder.File("lumetta-updater");
    fs::copy_file(original, copy);
    fs::copy(original.parent_path() / "Resources", folder.File("Resources"),
             fs::copy_options::recursive);
    const std::regex caption(R"(name="ProductInstallation" value="[^"]*")");
    for (const auto& entry : fs::recursive_directory_iterator(folder.File("Resources"))) {
        if (entry.path().filename() != "Resources.xml") continue;
        const std::string text = ReadFile(entry.path().string());
        std::ofstream(entry.path())
            << std::regex_replace(text, caption, R"(name="ProductInstallation" value="")");
    }
    return copy;
}

TEST(DialogKeyboard, ReturnOnTheFinishedDialogClosesItInEveryRun) {
#ifndef LUMETTA_DEMO_AIDS
    GTEST_SKIP() << "needs the demo aids (the picture tells when the update has finished)";
#endif
    TempFolder programs, xvfbFolder;
    const TestHarness::DemoUpdate served("E2E Keys");
    TestHarness::HttpServers servers(served.www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();
    const std::string updater = UpdaterWithoutCaption(programs);

    const int displayNumber = 200 + ::getpid() % 700;
    const std::string display = ":" + std::to_string(displayNumber);
    ChildProcess xvfb;
    ASSERT_TRUE(
        xvfb.Start({"/usr/bin/Xvfb", display, "-screen", "0", "800x600x24", "-nolisten", "tcp"}, {},
                   xvfbFolder.File("xvfb.out")));
    ASSERT_TRUE(WaitUntil(
        [&] {
            return RunCommand("DISPLAY=" + display + " xprop -root >/dev/null 2>&1").exitCode == 0;
        },
        20000))
        << ReadFile(xvfbFolder.File("xvfb.out"));

    for (int run = 0; run < 3; ++run) {
        SCOPED_TRACE("run " + std::to_string(run));
        const TestHarness::DemoUpdate d("E2E Keys");
        const TempFolder& work = d.work;
        ChildProcess dialog;
        ASSERT_TRUE(d.Start(dialog, updater, {},
                            {"DISPLAY=" + display, "QT_QPA_PLATFORM=xcb", "LANGUAGE=en_US"}));
        // The picture is taken once the update has finished.
        ASSERT_TRUE(WaitUntil([&] { return Exists(work.File("dialog.png")); }, 60000))
            << ReadFile(work.File("updater.out"));
        const std::string window =
            RunCommand("DISPLAY=" + display + " xdotool search --onlyvisible --pid " +
                       std::to_string(dialog.Pid()) + " | head -n 1")
                .out;
        ASSERT_FALSE(window.empty());
        const std::string id = window.substr(0, window.find('\n'));

        // The caption text is empty: the window system gets no title, not the program's name.
        const std::string names =
            RunCommand("DISPLAY=" + display + " xprop -id " + id + " _NET_WM_NAME WM_NAME").out;
        EXPECT_EQ(names.find("lumetta"), std::string::npos) << names;
        EXPECT_EQ(names.find("updater"), std::string::npos) << names;

        ASSERT_EQ(
            RunCommand("DISPLAY=" + display + " xdotool windowfocus --sync " + id + " key Return")
                .exitCode,
            0);
        int status = -1;
        ASSERT_TRUE(dialog.Wait(20000, &status)) << "Return ended the dialog";
        EXPECT_EQ(status, 0) << ReadFile(work.File("updater.out"));
        // Focus was on the first control that takes it, the cancel button, now "Close".
        ::usleep(500000);
        const std::string launched = ReadFile(work.File("launched"));
        EXPECT_EQ(launched, "") << "Return closed the dialog; it did not launch";
        if (const auto at = launched.find("started "); at != std::string::npos)
            ::kill(std::stoi(launched.substr(at + 8)), SIGTERM);
    }
}

}  // namespace
