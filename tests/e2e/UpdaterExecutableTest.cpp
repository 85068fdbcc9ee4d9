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
using TestHarness::TempFolder;
using TestHarness::WaitForText;

TEST(UpdaterExecutable, UpdatesTheRunningProductAndRelaunchesIt) {
#ifndef LUMETTA_DEMO_AIDS
    GTEST_SKIP() << "needs the demo aids: configure with -DLUMETTA_DEMO_AIDS=ON";
#endif
    TempFolder www, old, temp, registry, work;
    const std::string product = "E2E Updater " + std::to_string(::getpid());
    const std::string exe = "E2EUpd" + std::to_string(::getpid());
    std::filesystem::copy_file(LUMETTA_DEMO_SETUP, www.File("setup.exe"));
    std::filesystem::copy_file(LUMETTA_DEMO_PRODUCT, old.File(exe));
    TestHarness::HttpServers servers(www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();

    ChildProcess running;
    ASSERT_TRUE(running.Start({old.File(exe), "--name", product, "--marker", work.File("old")}));
    ASSERT_TRUE(WaitForText(work.File("old"), "started"));

    // Options of Qt among the values: the command line is the updater's alone, so neither
    // "-platform" (which would end the program) nor "-reverse" (which would mirror the
    // window) reaches Qt.
    ChildProcess updater;
    ASSERT_TRUE(updater.Start(
        {LUMETTA_UPDATER, "/productName", product, "/componentName", "-platform", "/bundleName",
         "-reverse", "/productExecutable", exe, "/downloadURL", "127.0.0.1/setup.exe"},
        {"QT_QPA_PLATFORM=offscreen", "LUMETTA_DEMO_AUTOLAUNCH=1",
         "LUMETTA_SCREENSHOT=" + work.File("dialog.png"), "XDG_RUNTIME_DIR=" + work.Path(),
         "TMPDIR=" + temp.Path(), "LUMETTA_REGISTRY_DIR=" + registry.Path(),
         "DEMO_SETUP_PAYLOAD=" + std::string(LUMETTA_DEMO_PRODUCT),
         "DEMO_SETUP_TARGET=" + work.File("install"), "DEMO_SETUP_EXE=" + exe,
         "DEMO_SETUP_PRODUCT=" + product, "DEMO_PRODUCT_NAME=" + product,
         "DEMO_PRODUCT_MARKER=" + work.File("launched")},
        work.File("updater.out")));
    int status = -1;
    ASSERT_TRUE(updater.Wait(90000, &status)) << ReadFile(work.File("updater.out"));
    EXPECT_EQ(status, 0) << ReadFile(work.File("updater.out"));

    ASSERT_TRUE(running.Wait(10000, &status)) << "the old product was closed";
    EXPECT_EQ(status, 0) << "by its exit event";
    EXPECT_EQ(ReadFile(work.File("install/" + exe)), ReadFile(LUMETTA_DEMO_PRODUCT));
    EXPECT_FALSE(Exists(temp.File("Update1.exe"))) << "the setup file is deleted";
    // The status text is drawn from the left, as the dialog's template places it.
    const QImage dialog(QString::fromStdString(work.File("dialog.png")));
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
    ASSERT_TRUE(WaitForText(work.File("launched"), "started"));
    const std::string line = ReadFile(work.File("launched"));
    const pid_t launched = std::stoi(line.substr(line.find("started ") + 8));
    EXPECT_EQ(std::filesystem::read_symlink("/proc/" + std::to_string(launched) + "/exe"),
              std::filesystem::path(work.File("install/" + exe)));
    ::kill(launched, SIGTERM);
}

}  // namespace
