// The updater's own executable, offscreen, with the demo's automatic "Launch": a whole
// update from the running old product to the relaunched new one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <QColor>
#include <QImage>

#include "TestHarness.h"

namespace {

using TestHarness::ChildProcess;
using TestHarness::Exists;
using TestHarness::ReadFile;
using TestHarness::WaitForText;

TEST(UpdaterExecutable, UpdatesTheRunningProductAndRelaunchesIt) {
#ifndef LUMETTA_DEMO_AIDS
    GTEST_SKIP() << "needs the demo aids: configure with -DLUMETTA_DEMO_AIDS=ON";
#endif
    const TestHarness::DemoUpdate d("E2E Updater");
    const std::string& work = d.work.Path();
    TestHarness::HttpServers servers(d.www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();
    ChildProcess running;
    ASSERT_TRUE(d.StartOld(running));

    // Qt's options among the values must not reach Qt: "-platform" would end the program,
    // "-reverse" would mirror the window.
    ChildProcess updater;
    ASSERT_TRUE(d.Start(updater, LUMETTA_UPDATER,
                        {"/componentName", "-platform", "/bundleName", "-reverse"},
                        {"QT_QPA_PLATFORM=offscreen", "LUMETTA_DEMO_AUTOLAUNCH=1"}));
    int status = -1;
    ASSERT_TRUE(updater.Wait(90000, &status)) << ReadFile(work + "/updater.out");
    EXPECT_EQ(status, 0) << ReadFile(work + "/updater.out");

    ASSERT_TRUE(running.Wait(10000, &status)) << "the old product was closed";
    EXPECT_EQ(status, 0) << "by its exit event";
    EXPECT_EQ(ReadFile(d.work.File("install/" + d.exe)), ReadFile(LUMETTA_DEMO_PRODUCT));
    EXPECT_FALSE(Exists(d.temp.File("Update1.exe"))) << "the setup file is deleted";
    // The status text is drawn from the left, as the dialog's template places it.
    const QImage dialog(QString::fromStdString(d.work.File("dialog.png")));
    ASSERT_FALSE(dialog.isNull());
    int left = dialog.width(), right = -1;
    for (int y = 0; y < dialog.height() / 2; ++y)
        for (int x = dialog.width() / 8; x < dialog.width(); ++x)
            if (QColor(dialog.pixel(x, y)).lightness() < 96) {
                left = std::min(left, x);
                right = std::max(right, x);
            }
    ASSERT_GE(right, left) << "no status text drawn";
    EXPECT_LT(left + right, dialog.width()) << "the text leans right: the window is mirrored";
    // "Launch" started the installed product, which now waits on its exit event.
    ASSERT_TRUE(WaitForText(d.work.File("launched"), "started"));
    const std::string line = ReadFile(d.work.File("launched"));
    const pid_t launched = std::stoi(line.substr(line.find("started ") + 8));
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(launched) + "/exe"),
              std::filesystem::path(d.work.File("install/" + d.exe)));
    ::kill(launched, SIGTERM);
}

}  // namespace
