// The Debian package, made by CPack from what this build holds, unpacked into a scratch
// folder as dpkg would install it: a product is built against it, stamped by the installed
// tool, and the installed updater runs a whole update of that product. The installed
// updater has no demo aids, so the result is checked by the installed product's version.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestHarness.h"
#include "support/CommandOutput.h"

namespace {

namespace fs = std::filesystem;
using TestHarness::ChildProcess;
using TestHarness::Exists;
using TestHarness::ReadFile;
using TestHarness::TempFolder;
using TestHarness::WaitForText;
using TestSupport::CommandOutput;
using TestSupport::RunProgram;

// The files under `folder`, as paths relative to it.
std::set<std::string> FilesUnder(const fs::path& folder) {
    std::set<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file()) files.insert(fs::relative(entry.path(), folder).string());
    return files;
}

std::string FileVersion(const std::string& diag, const std::string& file) {
    const std::string listing = RunProgram({diag, "res", file}).out;
    const auto at = listing.find("FileVersion = ");
    return at == std::string::npos ? "" : listing.substr(at + 14, listing.find('\n', at) - at - 14);
}

TEST(InstalledPackage, BuildsAProductAgainstItAndUpdatesThatProduct) {
    TempFolder packages, root, example, work;

    CommandOutput run = RunProgram(
        {LUMETTA_CPACK, "--config", LUMETTA_BUILD_DIR "/CPackConfig.cmake", "-B", packages.Path()});
    ASSERT_EQ(run.exitCode, 0) << run.out;
    std::vector<std::string> debs;
    for (const auto& entry : fs::directory_iterator(packages.Path()))
        if (entry.path().extension() == ".deb") debs.push_back(entry.path().string());
    ASSERT_EQ(debs.size(), 1u) << run.out;
    ASSERT_EQ(RunProgram({"dpkg-deb", "-x", debs[0], root.Path()}).exitCode, 0);
    const std::string depends = RunProgram({"dpkg-deb", "-f", debs[0], "Depends"}).out;
    for (const char* library : {"libc6", "libqt6widgets6", "libcurl4", "binutils"})
        EXPECT_NE(depends.find(library), std::string::npos) << library << " in " << depends;

    const std::string usr = root.File("usr");
    const std::string updaterDir = usr + "/lib/lumetta-updater";
    for (const char* file :
         {"/bin/lumetta-diag", "/include/lumetta/product.h",
          "/lib/cmake/LumettaUpdater/LumettaUpdaterConfig.cmake",
          "/share/man/man1/lumetta-updater.1.gz", "/share/man/man1/lumetta-diag.1.gz"})
        EXPECT_TRUE(Exists(usr + file)) << file;
    EXPECT_EQ(fs::canonical(usr + "/bin/lumetta-updater"),
              fs::path(updaterDir + "/lumetta-updater"));
    EXPECT_EQ(FilesUnder(updaterDir + "/Resources/CommonDialogs"),
              FilesUnder(LUMETTA_SOURCE_DIR "/src/resources/CommonDialogs"));

    // A product built with the package's CMake files gets its version from them.
    const std::string diag = usr + "/bin/lumetta-diag";
    run = RunProgram({LUMETTA_CMAKE, "-S", LUMETTA_SOURCE_DIR "/examples/product", "-B",
                      example.Path(), "-G", LUMETTA_CMAKE_GENERATOR,
                      "-DCMAKE_C_COMPILER=" LUMETTA_C_COMPILER, "-DCMAKE_PREFIX_PATH=" + usr});
    ASSERT_EQ(run.exitCode, 0) << run.out;
    run = RunProgram({LUMETTA_CMAKE, "--build", example.Path()});
    ASSERT_EQ(run.exitCode, 0) << run.out;
    const std::string built = example.File("example-product");
    const std::string listing = RunProgram({diag, "res", built}).out;
    for (const char* expected :
         {"file version 2.3.0.7, product version 2.3.0.7", "CompanyName = Example Company",
          "FileVersion = 2.3.0.7", "ProductName = Example Product"})
        EXPECT_NE(listing.find(expected), std::string::npos) << expected << "\n" << listing;

    // Its next version: the same program stamped by the installed tool.
    const std::string next = work.File("next");
    fs::copy_file(built, next);
    ASSERT_EQ(RunProgram({diag, "stamp", next, "--version", "2.4.0.0"}).exitCode, 0);

    TestHarness::DemoUpdate d("Packaged Product");
    d.payload = next;
    fs::copy_file(built, d.old.File(d.exe));
    TestHarness::HttpServers servers(d.www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();
    ChildProcess running;
    ASSERT_TRUE(
        running.Start({d.old.File(d.exe), d.product}, d.Environment(), work.File("old.out")));
    ASSERT_TRUE(WaitForText(work.File("old.out"), "waits for its exit event"));

    // The demo aids are offered and must be ignored: no picture, no "Launch" by itself.
    ChildProcess updater;
    ASSERT_TRUE(d.Start(updater, usr + "/bin/lumetta-updater", {},
                        {"QT_QPA_PLATFORM=offscreen", "LUMETTA_DEMO_AUTOLAUNCH=1"}));
    const std::string updaterOut = d.work.File("updater.out");
    int status = -1;
    ASSERT_TRUE(running.Wait(30000, &status)) << ReadFile(updaterOut);
    EXPECT_EQ(status, 0) << "the old product exits by its exit event";
    EXPECT_NE(ReadFile(work.File("old.out")).find("asked to exit"), std::string::npos);

    // Installed once the setup has ended and its file is deleted.
    const std::string installed = d.work.File("install/" + d.exe);
    bool done = false;
    for (int i = 0; i < 600 && !done; ++i) {
        done = FileVersion(diag, installed) == "2.4.0.0" && !Exists(d.temp.File("Update1.exe"));
        if (!done) std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    EXPECT_TRUE(done) << ReadFile(updaterOut);
    std::this_thread::sleep_for(std::chrono::seconds(2));
    EXPECT_TRUE(updater.IsRunning()) << "the finished dialog waits for the user";
    EXPECT_FALSE(Exists(d.work.File("dialog.png")));
    updater.Stop();
}

}  // namespace
