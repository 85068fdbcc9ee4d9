#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "TestHarness.h"
#include "engine/VerboseWritingConsumer.h"
#include "foundation/TextConversion.h"

namespace {

using TestHarness::ReadFile;
using TestHarness::TempFolder;

// Records every call, answering as told.
struct RecordingCallback : Engine::IVerboseWritingConsumerCallback {
    bool OnStart(uint32_t total) override {
        calls.push_back("start " + std::to_string(total));
        return acceptStart;
    }
    bool OnWritten(uint32_t written) override {
        calls.push_back("written " + std::to_string(written));
        return acceptWrite;
    }
    void OnFinish(bool success) override {
        calls.push_back(success ? "finish ok" : "finish failed");
    }

    std::vector<std::string> calls;
    bool acceptStart = true;
    bool acceptWrite = true;
};

std::wstring Wide(const std::string& path) {
    return STLHelpers::Utf8ToWide(path);
}

mode_t ModeOf(const std::string& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 07777;
}

TEST(VerboseWritingConsumer, ReportsEachStepAndWritesTheFile) {
    TempFolder folder;
    const std::string path = folder.File("Update1.exe");
    // An existing file is truncated and made executable by its owner only.
    ASSERT_TRUE(TestHarness::WriteFile(path, "old content that is long"));
    ::chmod(path.c_str(), 0644);
    RecordingCallback callback;
    {
        Engine::VerboseWritingConsumer writer(Wide(path), &callback);
        EXPECT_TRUE(writer.IsOpen());
        EXPECT_EQ(ModeOf(path), 0700u);
        EXPECT_EQ(ReadFile(path), "");
        EXPECT_TRUE(writer.Begin(Engine::VerboseWritingConsumer::kUnknownSize));
        EXPECT_TRUE(writer.Write("abc", 3));
        EXPECT_TRUE(writer.Write("defg", 4));
        EXPECT_EQ(writer.GetBytesWritten(), 7u);
        writer.Commit();
        EXPECT_FALSE(writer.IsOpen());
        EXPECT_EQ(writer.GetBytesWritten(), 0u);
        writer.Abort();  // closed already: no second report
        EXPECT_FALSE(writer.Write("x", 1)) << "nothing to write to";
    }
    EXPECT_EQ(callback.calls,
              (std::vector<std::string>{"start 0", "written 3", "written 7", "finish ok"}));
    EXPECT_EQ(ReadFile(path), "abcdefg");
}

TEST(VerboseWritingConsumer, ADecliningCallbackAbortsAndKeepsThePartialFile) {
    TempFolder folder;
    const std::string path = folder.File("Update1.exe");
    RecordingCallback callback;
    Engine::VerboseWritingConsumer writer(Wide(path), &callback);
    EXPECT_TRUE(writer.Begin(10));
    callback.acceptWrite = false;
    EXPECT_FALSE(writer.Write("12345", 5));
    EXPECT_FALSE(writer.IsOpen());
    EXPECT_EQ(callback.calls, (std::vector<std::string>{"start 10", "written 5", "finish failed"}));
    EXPECT_EQ(ReadFile(path), "12345");

    RecordingCallback refusing;
    refusing.acceptStart = false;
    Engine::VerboseWritingConsumer second(Wide(folder.File("Update2.exe")), &refusing);
    EXPECT_FALSE(second.Begin(10));
    EXPECT_FALSE(second.IsOpen());
    EXPECT_EQ(refusing.calls, (std::vector<std::string>{"start 10", "finish failed"}));

    Engine::VerboseWritingConsumer silent(Wide(folder.File("Update3.exe")), nullptr);
    EXPECT_TRUE(silent.Begin(10)) << "without a callback nothing can decline";
    EXPECT_TRUE(silent.Write("z", 1));
    silent.Commit();
    EXPECT_EQ(ReadFile(folder.File("Update3.exe")), "z");
}

// Planted links are the engine tests' part; here the other things that are no plain file.
TEST(VerboseWritingConsumer, OpensNothingButAFile) {
    TempFolder folder;
    // A FIFO would block a writer for ever; a folder cannot be written.
    const std::string fifo = folder.File("Update1.exe");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    RecordingCallback callback;
    try {
        Engine::VerboseWritingConsumer writer(Wide(fifo), &callback);
        FAIL() << "a FIFO must not be opened";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Cannot open destination file");
    }
    EXPECT_EQ(callback.calls, (std::vector<std::string>{"finish failed"}));
    EXPECT_THROW(Engine::VerboseWritingConsumer(Wide(folder.Path()), nullptr), std::runtime_error);
    EXPECT_THROW(Engine::VerboseWritingConsumer(Wide(folder.File("no/such/folder/x")), nullptr),
                 std::runtime_error);
}

}  // namespace
