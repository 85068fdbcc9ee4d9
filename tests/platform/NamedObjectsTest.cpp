#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <thread>

#include "../foundation/SleepingThread.h"
#include "platform/Environment.h"
#include "platform/NamedEvent.h"
#include "platform/NamedMutex.h"
#include "platform/ProcessHandle.h"
#include "platform/Spawn.h"
#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using Platform::NamedEvent;
using Platform::NamedMutex;
using Platform::ProcessHandle;

// Every test gets its own runtime folder and names that no parallel run shares.
class NamedObjects : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(runtime.empty());
        ASSERT_EQ(Platform::SetEnvironment("XDG_RUNTIME_DIR", runtime.string()), 0u);
        prefix = "LumettaTest" + std::to_string(::getpid()) + "_";
    }

    static ProcessHandle Start(std::vector<std::string> argv) {
        Platform::SpawnRequest request;
        request.executable = argv.front();
        request.arguments = std::move(argv);
        ProcessHandle handle;
        EXPECT_EQ(Platform::SpawnProcess(request, handle), 0u);
        return handle;
    }

    // Runs the product-side helper to its end and gives its exit status.
    static int RunProduct(const std::string& mode, const std::string& name) {
        ProcessHandle product = Start({LUMETTA_TEST_PRODUCT, mode, name});
        EXPECT_EQ(product.Wait(60000), ProcessHandle::WaitResult::Ended);
        return product.ExitStatus().value_or(-1);
    }

    TestSupport::TempFolder temp{"lumetta-named"};
    const fs::path& runtime = temp.Path();
    const TestSupport::ScopedEnvironment saved{"XDG_RUNTIME_DIR"};
    std::string prefix;
};

TEST_F(NamedObjects, MutexIsHeldWhileAnyHolderLivesAndGoesWithIt) {
    const std::string name = prefix + "Player_UpdateMutex";
    EXPECT_FALSE(NamedMutex::IsHeld(name)) << "never created";

    NamedMutex first, second;
    ASSERT_EQ(first.Create(name), 0u);
    ASSERT_EQ(second.Create(name), 0u) << "a second updater opens the same mutex and goes on";
    EXPECT_TRUE(NamedMutex::IsHeld(name));
    EXPECT_EQ(RunProduct("mutex-held", name), 0) << "another process sees it held";
    EXPECT_EQ(RunProduct("updater-at-work", prefix + "Player"), 0);
    EXPECT_EQ(RunProduct("updater-at-work", prefix + "Other"), 1);

    first.Close();
    EXPECT_TRUE(NamedMutex::IsHeld(name)) << "the second holder still keeps it";
    NamedMutex moved = std::move(second);
    EXPECT_FALSE(second.IsOpen());
    EXPECT_TRUE(NamedMutex::IsHeld(name));
    moved.Close();
    EXPECT_FALSE(NamedMutex::IsHeld(name));
    EXPECT_EQ(RunProduct("updater-at-work", prefix + "Player"), 1);

    struct stat st {};
    ASSERT_EQ(::stat((runtime / "lumetta").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, 0700u);
}

TEST_F(NamedObjects, MutexHeldByAnotherProcessIsReleasedWhenItIsKilled) {
    const std::string name = prefix + "Killed_UpdateMutex";
    ProcessHandle holder = Start({LUMETTA_TEST_MUTEX_HOLDER, name});
    ASSERT_TRUE(holder.IsValid());
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!NamedMutex::IsHeld(name) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_TRUE(NamedMutex::IsHeld(name));
    EXPECT_EQ(holder.Wait(0), ProcessHandle::WaitResult::TimedOut);

    EXPECT_EQ(holder.Kill(), 0u);
    ASSERT_EQ(holder.Wait(60000), ProcessHandle::WaitResult::Ended);
    EXPECT_EQ(holder.ExitStatus(), 128 + 9);
    EXPECT_FALSE(NamedMutex::IsHeld(name));
}

TEST_F(NamedObjects, ProductWaitingOnItsExitEventEndsWhenTheUpdaterSetsIt) {
    const std::string product = prefix + "Player";
    const std::string name = product + "_ExitEvent";
    ProcessHandle waiter = Start({LUMETTA_TEST_PRODUCT, "wait-exit", product, "-1"});
    ASSERT_TRUE(waiter.IsValid());
    EXPECT_EQ(waiter.Wait(300), ProcessHandle::WaitResult::TimedOut) << "no signal yet";

    NamedEvent event;
    ASSERT_EQ(event.Create(name), 0u);
    ASSERT_EQ(event.Set(), 0u);
    ASSERT_EQ(waiter.Wait(60000), ProcessHandle::WaitResult::Ended);
    EXPECT_EQ(waiter.ExitStatus(), 0) << "the product saw the signal";

    // The signal was taken by the product: a later start finds none.
    EXPECT_EQ(event.Wait(0), NamedEvent::WaitResult::TimedOut);
    event.Close();
    EXPECT_EQ(NamedEvent::Remove(name), 0u);
    EXPECT_EQ(NamedEvent::Remove(name), 0u) << "removing a missing name succeeds";
}

TEST_F(NamedObjects, EventKeepsOneSignalAndRemovalDropsAStaleOne) {
    const std::string name = prefix + "Stale_ExitEvent";
    NamedEvent event, other;
    ASSERT_EQ(event.Create(name), 0u);
    ASSERT_EQ(other.Create(name), 0u);
    EXPECT_EQ(event.Wait(0), NamedEvent::WaitResult::TimedOut) << "created not signalled";
    EXPECT_EQ(event.Wait(50), NamedEvent::WaitResult::TimedOut);

    {
        TestSupport::SleepingThread waiter(
            [&] { EXPECT_EQ(other.Wait(-1), NamedEvent::WaitResult::Signaled); });
        EXPECT_TRUE(waiter.Blocked()) << "a wait without limit waits for the signal";
        EXPECT_EQ(event.Set(), 0u);
    }

    // Auto-reset, at most one pending signal: two sets let one wait through.
    ASSERT_EQ(event.Set(), 0u);
    ASSERT_EQ(event.Set(), 0u);
    EXPECT_EQ(other.Wait(0), NamedEvent::WaitResult::Signaled);
    EXPECT_EQ(other.Wait(0), NamedEvent::WaitResult::TimedOut);

    // A signal nobody took is gone for whoever opens the name after its removal.
    ASSERT_EQ(event.Set(), 0u);
    event.Close();
    other.Close();
    ASSERT_EQ(NamedEvent::Remove(name), 0u);
    ProcessHandle product = Start({LUMETTA_TEST_PRODUCT, "wait-event", name, "0"});
    ASSERT_EQ(product.Wait(60000), ProcessHandle::WaitResult::Ended);
    EXPECT_EQ(product.ExitStatus(), 1);
    NamedEvent::Remove(name);

    NamedEvent closed;
    EXPECT_EQ(closed.Set(), 6u);
    EXPECT_EQ(closed.Wait(0), NamedEvent::WaitResult::Failed);
}

TEST_F(NamedObjects, NamesAreSanitisedAndLongNamesStayDistinct) {
    // Slashes and control characters would leave the folder or break the name.
    const std::string odd = prefix + "a/b\\c\nd";
    NamedMutex mutex;
    ASSERT_EQ(mutex.Create(odd), 0u);
    EXPECT_TRUE(fs::exists(runtime / "lumetta" / (prefix + "a_b_c_d.lock")));
    EXPECT_TRUE(NamedMutex::IsHeld(odd));
    EXPECT_FALSE(NamedMutex::IsHeld(prefix + "a_b_c_d_other"));

    const std::string longA = prefix + std::string(300, 'x') + "A";
    const std::string longB = prefix + std::string(300, 'x') + "B";
    NamedMutex a;
    ASSERT_EQ(a.Create(longA), 0u);
    EXPECT_TRUE(NamedMutex::IsHeld(longA));
    EXPECT_FALSE(NamedMutex::IsHeld(longB)) << "names cut to the same prefix stay distinct";
    NamedEvent event;
    ASSERT_EQ(event.Create(longA), 0u);
    EXPECT_EQ(NamedEvent::Remove(longA), 0u);

    EXPECT_EQ(mutex.Create(std::string("nul\0inside", 10)), 123u);
    EXPECT_FALSE(mutex.IsOpen());
    EXPECT_EQ(event.Create(std::string("nul\0inside", 10)), 123u);
}

TEST_F(NamedObjects, WithoutRuntimeFolderTheUsersTmpFolderIsUsed) {
    ASSERT_EQ(Platform::UnsetEnvironment("XDG_RUNTIME_DIR"), 0u);
    std::string folder;
    ASSERT_EQ(Platform::NamedObjectFolder(folder), 0u);
    EXPECT_EQ(folder, "/tmp/lumetta-" + std::to_string(::getuid()));
    struct stat st {};
    ASSERT_EQ(::lstat(folder.c_str(), &st), 0);
    EXPECT_TRUE(S_ISDIR(st.st_mode));
    EXPECT_EQ(st.st_mode & 0777, 0700u);
    EXPECT_EQ(st.st_uid, ::getuid());

    // A relative value names no usable folder either.
    ASSERT_EQ(Platform::SetEnvironment("XDG_RUNTIME_DIR", "relative/dir"), 0u);
    ASSERT_EQ(Platform::NamedObjectFolder(folder), 0u);
    EXPECT_EQ(folder, "/tmp/lumetta-" + std::to_string(::getuid()));

    // A file where the folder should be is refused, not written through.
    ASSERT_EQ(Platform::SetEnvironment("XDG_RUNTIME_DIR", runtime.string()), 0u);
    {
        std::FILE* f = std::fopen((runtime / "lumetta").c_str(), "w");
        std::fclose(f);
    }
    NamedMutex mutex;
    EXPECT_NE(mutex.Create(prefix + "Blocked"), 0u);
    EXPECT_FALSE(mutex.IsOpen());
}

}  // namespace
