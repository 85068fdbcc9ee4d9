#include "system/ShellHelpers.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "foundation/TextConversion.h"
#include "platform/Environment.h"
#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"

namespace fs = std::filesystem;

namespace {

// A private folder, a fake xdg-open first in PATH, and XDG_DATA_HOME for the trash. The
// fake records its arguments and has no handler for "*.nohandler" (exit 3, as xdg-open
// reports a missing handler).
class ShellFolder : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(folder_.empty());
        fs::create_directory(folder_ / "bin");
        WriteScript(folder_ / "bin" / "xdg-open",
                    "#!/bin/sh\nprintf '%s\\n' \"$@\" >> \"" + (folder_ / "xdg.log").string() +
                        "\"\ncase \"$1\" in *.nohandler) exit 3;; esac\nexit 0\n");
        Platform::SetEnvironment("PATH", (folder_ / "bin").string() + ":/usr/bin:/bin");
        Platform::SetEnvironment("XDG_DATA_HOME", (folder_ / "data").string());
    }

    static void WriteScript(const fs::path& path, const std::string& text) {
        TestSupport::WriteFile(path, text);
        fs::permissions(path, fs::perms::owner_all);
    }
    static std::string Read(const fs::path& path) { return TestSupport::ReadFile(path); }
    std::wstring Wide(const fs::path& path) { return STLHelpers::Utf8ToWide(path.string()); }

    TestSupport::TempFolder temp_{"lumetta-shell"};
    const fs::path& folder_ = temp_.Path();
    const TestSupport::ScopedEnvironment saved_{"PATH", "XDG_DATA_HOME"};
};

}  // namespace

TEST_F(ShellFolder, DocumentsGoToXdgOpen) {
    TestSupport::WriteFile(folder_ / "doc.nohandler", "x");
    TestSupport::WriteFile(folder_ / "doc.txt", "x");
    EXPECT_FALSE(System::ShellOpen(Wide(folder_ / "doc.nohandler"), L"", System::SW_SHOW));
    EXPECT_TRUE(System::ShellOpen(Wide(folder_ / "doc.txt"), L"ignored", System::SW_SHOWMINIMIZED));
    EXPECT_FALSE(System::ShellOpen(L"", L"", System::SW_SHOW));
    EXPECT_TRUE(System::OpenUrl(L"https://example.com/a b"));
    EXPECT_FALSE(System::OpenUrl(L""));  // never reaches the shell
    EXPECT_EQ(Read(folder_ / "xdg.log"), (folder_ / "doc.nohandler").string() + "\n" +
                                             (folder_ / "doc.txt").string() + "\n" +
                                             "https://example.com/a b\n");

    // Without xdg-open nothing can be opened.
    Platform::SetEnvironment("PATH", (folder_ / "empty").string());
    EXPECT_FALSE(System::ShellOpen(Wide(folder_ / "doc.txt"), L"", System::SW_SHOW));
    EXPECT_FALSE(System::OpenUrl(L"https://example.com/"));
}

TEST_F(ShellFolder, ExecutablesStartDetachedWithSplitParameters) {
    const fs::path out = folder_ / "args.txt";
    WriteScript(folder_ / "tool.sh", "#!/bin/sh\nprintf '[%s]' \"$@\" > \"" + out.string() +
                                         ".tmp\"\nmv \"" + out.string() + ".tmp\" \"" +
                                         out.string() + "\"\n");
    ASSERT_TRUE(System::ShellOpen(Wide(folder_ / "tool.sh"),
                                  L"one \"two words\" three\\\"q \"\" last\\\\", System::SW_SHOW));
    // The program runs on its own; give it time on a loaded machine.
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!fs::exists(out) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(Read(out), "[one][two words][three\"q][][last\\\\]");
    EXPECT_FALSE(fs::exists(folder_ / "xdg.log"));

    // An executable that cannot be run fails without reaching xdg-open.
    WriteScript(folder_ / "broken.sh", "#!/nonexistent/interpreter\n");
    EXPECT_FALSE(System::ShellOpen(Wide(folder_ / "broken.sh"), L"", System::SW_SHOW));
    EXPECT_FALSE(fs::exists(folder_ / "xdg.log"));
}

TEST_F(ShellFolder, ChildrenGetOnlyTheStandardDescriptorsAndAddressesNeverRunAFile) {
    // A descriptor without close-on-exec, as another part of the program may leave one.
    const int leaked = ::dup2(::open("/dev/null", O_RDONLY), 77);
    ASSERT_EQ(leaked, 77);
    // Each program adds its first argument and whether it sees descriptor 77 to its log,
    // which appears whole (copied, then renamed).
    const auto recorder = [&](const fs::path& log) {
        const std::string l = "\"" + log.string();
        return "#!/bin/sh\nif [ -e /proc/$$/fd/77 ]; then s=open; else s=closed; fi\n"
               "echo \"$1 $s\" >> " +
               l + ".all\"\ncp " + l + ".all\" " + l + ".tmp\"\nmv " + l + ".tmp\" " + l + "\"\n";
    };
    WriteScript(folder_ / "bin" / "xdg-open", recorder(folder_ / "xdg.log"));
    WriteScript(folder_ / "tool.sh", recorder(folder_ / "tool.log"));
    // An executable file named like the address, in the current folder.
    WriteScript(folder_ / "mailto:someone@example.org", recorder(folder_ / "planted.log"));
    const fs::path before = fs::current_path();
    fs::current_path(folder_);

    EXPECT_TRUE(System::ShellOpen(L"mailto:someone@example.org", L"", System::SW_SHOW));
    EXPECT_TRUE(System::ShellOpen(L"doc.txt", L"", System::SW_SHOW));
    EXPECT_TRUE(System::ShellOpen(Wide(folder_ / "tool.sh"), L"x", System::SW_SHOW));
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!fs::exists(folder_ / "tool.log") && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    fs::current_path(before);
    ::close(leaked);

    EXPECT_EQ(Read(folder_ / "xdg.log"), "mailto:someone@example.org closed\ndoc.txt closed\n");
    EXPECT_EQ(Read(folder_ / "tool.log"), "x closed\n");
    EXPECT_FALSE(fs::exists(folder_ / "planted.log")) << "the planted file ran";
}

TEST_F(ShellFolder, DeletePermanentlyOrIntoTheTrash) {
    // Permanently: a whole tree; a link inside it is removed, not followed.
    fs::create_directories(folder_ / "tree/sub");
    TestSupport::WriteFile(folder_ / "tree/sub/file", "x");
    TestSupport::WriteFile(folder_ / "outside", "keep");
    fs::create_symlink(folder_ / "outside", folder_ / "tree/link");
    EXPECT_TRUE(System::DeleteWithShell(Wide(folder_ / "tree"), false));
    EXPECT_FALSE(fs::exists(folder_ / "tree"));
    EXPECT_EQ(Read(folder_ / "outside"), "keep");
    EXPECT_FALSE(System::DeleteWithShell(Wide(folder_ / "tree"), false));  // gone already
    EXPECT_FALSE(System::DeleteWithShell(L"", false));

    // With undo: into the trash with its record; a second file of that name gets ".2".
    TestSupport::WriteFile(folder_ / "report 1.txt", "first");
    EXPECT_TRUE(System::DeleteWithShell(Wide(folder_ / "report 1.txt"), true));
    TestSupport::WriteFile(folder_ / "report 1.txt", "second");
    EXPECT_TRUE(System::DeleteWithShell(Wide(folder_ / "report 1.txt"), true));
    EXPECT_FALSE(fs::exists(folder_ / "report 1.txt"));
    const fs::path trash = folder_ / "data/Trash";
    EXPECT_EQ(Read(trash / "files/report 1.txt"), "first");
    EXPECT_EQ(Read(trash / "files/report 1.txt.2"), "second");
    const std::string info = Read(trash / "info/report 1.txt.trashinfo");
    EXPECT_EQ(info.rfind("[Trash Info]\nPath=", 0), 0u) << info;
    EXPECT_NE(info.find("/report%201.txt\n"), std::string::npos) << info;
    EXPECT_NE(info.find("\nDeletionDate=20"), std::string::npos) << info;
    EXPECT_TRUE(fs::exists(trash / "info/report 1.txt.2.trashinfo"));
    EXPECT_FALSE(System::DeleteWithShell(Wide(folder_ / "report 1.txt"), true));
    EXPECT_FALSE(fs::exists(trash / "info/report 1.txt.3.trashinfo"));
}

TEST_F(ShellFolder, MoveCopyAndBadRequests) {
    TestSupport::WriteFile(folder_ / "a.txt", "a");
    fs::create_directory(folder_ / "dest");
    EXPECT_TRUE(System::ShellFileOperation(System::FO_COPY, Wide(folder_ / "a.txt"),
                                           Wide(folder_ / "dest"), false));
    EXPECT_EQ(Read(folder_ / "dest/a.txt"), "a");
    EXPECT_TRUE(System::ShellFileOperation(System::FO_RENAME, Wide(folder_ / "a.txt"),
                                           Wide(folder_ / "b.txt"), false));
    EXPECT_EQ(Read(folder_ / "b.txt"), "a");
    // Several sources separated by zeros.
    TestSupport::WriteFile(folder_ / "c.txt", "c");
    std::wstring both = Wide(folder_ / "b.txt");
    both.push_back(L'\0');
    both += Wide(folder_ / "c.txt");
    EXPECT_TRUE(System::ShellFileOperation(System::FO_DELETE, both, L"", false));
    EXPECT_FALSE(fs::exists(folder_ / "b.txt"));
    EXPECT_FALSE(fs::exists(folder_ / "c.txt"));

    EXPECT_FALSE(System::ShellFileOperation(System::FO_MOVE, Wide(folder_ / "dest"), L"", false));
    EXPECT_FALSE(System::ShellFileOperation(99, Wide(folder_ / "dest"), L"", false));
    EXPECT_TRUE(fs::exists(folder_ / "dest/a.txt"));
}
