#include <signal.h>

#include <chrono>
#include <thread>

#include "EngineTestSupport.h"
#include "engine/Timeouts.h"
#include "foundation/TextConversion.h"

namespace EngineTests {
namespace {

using Engine::Connecting;
using Engine::Downloading;
using Engine::Finished;
using Engine::Installing;
using Engine::Preparing;
using States = std::vector<Engine::UpdateState>;
using TestHarness::Exists;
using TestHarness::ReadFile;

std::string Narrow(const std::wstring& text) {
    return STLHelpers::WideToUtf8(text);
}

bool ProcessAlive(pid_t pid) {
    return pid > 0 && ::kill(pid, 0) == 0;
}

TEST_F(EngineTest, ASilentUpdateRunsTheSetupWithTheSilentSwitchesAndDeletesIt) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"));
    const std::string setup = Narrow(engine.GetWorker().GetSetupFilePath());
    EXPECT_EQ(setup, folder.File("Update1.exe")) << "chosen in the temporary folder";
    EXPECT_TRUE(Exists(setup)) << "created at construction";
    EXPECT_EQ(engine.GetState(), Preparing);

    Observer observer(engine);
    ASSERT_TRUE(engine.AddListener(&observer));
    ASSERT_TRUE(engine.Start());
    ASSERT_TRUE(observer.WaitFor(Finished));
    EXPECT_EQ(observer.States(), (States{Connecting, Downloading, Installing, Finished}));
    EXPECT_FALSE(engine.IsFailed()) << "the setup's exit code 3 is not examined";
    const auto size = ReadFile(root->File("setup-ok.sh")).size();
    EXPECT_EQ(engine.GetTotalSize(), size);
    EXPECT_EQ(engine.GetDownloadedSize(), size);
    EXPECT_GE(observer.ProgressEvents(), 1);
    EXPECT_EQ(SetupArguments(),
              (std::vector<std::string>{"/verysilent", "/norestart", "/S", "/SUPPRESSMSGBOXES",
                                        "/COMPONENTS=!suite"}));
    EXPECT_FALSE(Exists(setup)) << "deleted after the installation";
    EXPECT_TRUE(engine.RemoveListener(&observer));

    engine.Cancel();  // after Finished: changes nothing
    EXPECT_FALSE(engine.IsFailed());
    EXPECT_EQ(engine.GetState(), Finished);
}

TEST_F(EngineTest, ANonSilentUpdateGivesTheSetupNoArguments) {
    Engine::UpdateEngine engine(Settings(L"127.0.0.1/setup-ok.sh", /*silent=*/false));
    Observer observer(engine);
    engine.AddListener(&observer);
    ASSERT_TRUE(engine.Start());
    ASSERT_TRUE(observer.WaitFor(Finished));
    EXPECT_FALSE(engine.IsFailed());
    EXPECT_TRUE(Exists(argumentsFile));
    EXPECT_TRUE(SetupArguments().empty());
}

TEST_F(EngineTest, FailedDownloadsEndFinishedAndFailedWithoutInstalling) {
    {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.2/cut"));
        Observer observer(engine);
        engine.AddListener(&observer);
        ASSERT_TRUE(engine.Start());
        ASSERT_TRUE(observer.WaitFor(Finished));
        EXPECT_EQ(observer.States(), (States{Connecting, Downloading, Finished}));
        EXPECT_TRUE(engine.IsFailed());
        EXPECT_EQ(engine.GetTotalSize(), 100000u);
        EXPECT_EQ(engine.GetDownloadedSize(), 30000u);
        EXPECT_EQ(ReadFile(folder.File("Update1.exe")).size(), 30000u) << "partial file stays";
    }
    {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.3/setup-ok.sh"));
        EXPECT_EQ(Narrow(engine.GetWorker().GetSetupFilePath()), folder.File("Update2.exe"))
            << "Update1.exe is taken";
        Observer observer(engine);
        engine.AddListener(&observer);
        ASSERT_TRUE(engine.Start());
        ASSERT_TRUE(observer.WaitFor(Finished));
        EXPECT_EQ(observer.States(), (States{Connecting, Finished}));
        EXPECT_TRUE(engine.IsFailed());
    }
    EXPECT_FALSE(Exists(argumentsFile)) << "no setup ran";
}

TEST_F(EngineTest, CancelBeforeTheRunOnlySetsTheFlagAndTheRunStopsAtItsFirstBlock) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"));
    Observer observer(engine);
    engine.AddListener(&observer);
    EXPECT_TRUE(engine.Cancel());
    EXPECT_EQ(engine.GetState(), Preparing);
    EXPECT_FALSE(engine.IsFailed());
    EXPECT_TRUE(observer.States().empty());

    ASSERT_TRUE(engine.Start());
    ASSERT_TRUE(observer.WaitFor(Finished));
    EXPECT_EQ(observer.States(), (States{Connecting, Downloading, Finished}));
    EXPECT_TRUE(engine.IsFailed());
    EXPECT_TRUE(Exists(folder.File("Update1.exe")));
    EXPECT_FALSE(Exists(argumentsFile));
}

TEST_F(EngineTest, CancelWhileDownloadingStopsAtOnce) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.2/stall"));
    Observer observer(engine);
    engine.AddListener(&observer);
    ASSERT_TRUE(engine.Start());
    ASSERT_TRUE(observer.WaitFor(Downloading));
    // The server sends 10000 bytes, then nothing.
    for (int i = 0; i < 2000 && engine.GetDownloadedSize() < 10000; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const auto start = std::chrono::steady_clock::now();
    engine.Cancel();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20))
        << "far below the 30 s receive limit";
    EXPECT_EQ(engine.GetState(), Finished);
    EXPECT_TRUE(engine.IsFailed());
    EXPECT_EQ(observer.States(), (States{Connecting, Downloading, Finished}));
    EXPECT_EQ(ReadFile(folder.File("Update1.exe")).size(), 10000u);
}

TEST_F(EngineTest, CancelWhileInstallingEndsTheSetup) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-hang.sh"));
    Observer observer(engine);
    engine.AddListener(&observer);
    ASSERT_TRUE(engine.Start());
    ASSERT_TRUE(observer.WaitFor(Installing));
    // Installing is reported just before the setup starts.
    for (int i = 0; i < 2000 && ReadFile(argumentsFile).empty(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const pid_t setup = static_cast<pid_t>(engine.GetWorker().GetSetupProcessId());
    ASSERT_GT(setup, 0);
    EXPECT_TRUE(ProcessAlive(setup));

    engine.Cancel();
    EXPECT_EQ(engine.GetState(), Finished);
    EXPECT_TRUE(engine.IsFailed());
    EXPECT_EQ(observer.States(), (States{Connecting, Downloading, Installing, Finished}));
    for (int i = 0; i < 500 && ProcessAlive(setup); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(ProcessAlive(setup)) << "the setup is ended";
    EXPECT_TRUE(Exists(folder.File("Update1.exe"))) << "an unfinished setup is not deleted";
}

TEST_F(EngineTest, ASilentSetupThatOutlivesItsLimitFailsTheUpdateAndKeepsRunning) {
    Engine::Testing::SetTimeouts(0, 0, 1000);
    pid_t setup = 0;
    {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-hang.sh"));
        Observer observer(engine);
        engine.AddListener(&observer);
        ASSERT_TRUE(engine.Start());
        ASSERT_TRUE(observer.WaitFor(Finished));
        EXPECT_TRUE(engine.IsFailed());
        setup = static_cast<pid_t>(engine.GetWorker().GetSetupProcessId());
        EXPECT_TRUE(ProcessAlive(setup)) << "the setup keeps running after the limit";
        EXPECT_TRUE(Exists(folder.File("Update1.exe")));
    }
    // The engine's end ends the setup.
    for (int i = 0; i < 500 && ProcessAlive(setup); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(ProcessAlive(setup));
}

TEST_F(EngineTest, ObserversAreRegisteredOnceAndHearNothingAfterRemoval) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"), SetupPath());
    Observer first(engine), second(engine);
    EXPECT_TRUE(engine.AddListener(&first));
    EXPECT_FALSE(engine.AddListener(&first));
    EXPECT_FALSE(engine.RemoveListener(&second)) << "not registered";
    EXPECT_TRUE(engine.AddListener(&second));

    Engine::UpdateWorker& worker = engine.GetWorker();
    worker.SetState(Connecting);
    worker.SetState(Connecting);  // the same state again: no event
    EXPECT_EQ(first.States(), (States{Connecting}));
    EXPECT_TRUE(engine.RemoveListener(&first));
    worker.SetState(Downloading);
    EXPECT_EQ(first.States(), (States{Connecting}));
    EXPECT_EQ(second.States(), (States{Connecting, Downloading}));
    EXPECT_TRUE(engine.AddListener(&first)) << "may come back";
}

// An observer that leaves while events are under way on the worker thread.
class LeavingObserver : public Engine::IUpdateEvents {
public:
    explicit LeavingObserver(Engine::UpdateEngine& engine) : engine(engine) {}
    void OnStateChanged() override { Check(); }
    void OnProgress() override {
        Check();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    void Check() {
        if (removed.load()) lateEvents.fetch_add(1);
    }
    Engine::UpdateEngine& engine;
    std::atomic<bool> removed{false};
    std::atomic<int> lateEvents{0};
};

TEST_F(EngineTest, RemovalWaitsForEventsInFlight) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"), SetupPath());
    LeavingObserver leaving(engine);
    engine.AddListener(&leaving);
    std::atomic<bool> done{false};
    std::thread producer([&] {
        for (uint32_t n = 1; !done.load(); ++n) engine.GetWorker().OnWritten(n);
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_TRUE(engine.RemoveListener(&leaving));
    leaving.removed = true;
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    done = true;
    producer.join();
    EXPECT_EQ(leaving.lateEvents.load(), 0);
}

TEST_F(EngineTest, APlantedLinkInTheTemporaryFolderIsNeverFollowed) {
    const std::string victim = folder.File("victim");
    TestHarness::WriteFile(victim, "precious");
    ASSERT_EQ(::symlink(victim.c_str(), folder.File("Update1.exe").c_str()), 0);
    ASSERT_EQ(::symlink(folder.File("absent").c_str(), folder.File("Update2.exe").c_str()), 0);
    {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"));
        EXPECT_EQ(Narrow(engine.GetWorker().GetSetupFilePath()), folder.File("Update3.exe"));
    }
    // Given the link itself, construction fails instead of writing through it.
    try {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"),
                                    STLHelpers::Utf8ToWide(folder.File("Update1.exe")));
        FAIL() << "the engine must not be built on a link";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "Cannot open destination file");
    }
    EXPECT_EQ(ReadFile(victim), "precious");
    EXPECT_FALSE(Exists(folder.File("absent")));
}

}  // namespace
}  // namespace EngineTests
