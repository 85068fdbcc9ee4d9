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

// Whether `pid` still runs, waiting up to 5 s for it to end.
bool StillAlive(pid_t pid) {
    for (int i = 0; i < 500 && pid > 0 && ::kill(pid, 0) == 0; ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return pid > 0 && ::kill(pid, 0) == 0;
}

TEST_F(EngineTest, ASilentUpdateRunsTheSetupWithTheSilentSwitchesAndDeletesIt) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"));
    const std::string setup = Narrow(engine.GetWorker().GetSetupFilePath());
    EXPECT_EQ(setup, folder.File("Update1.exe")) << "chosen in the temporary folder";
    EXPECT_TRUE(Exists(setup)) << "created at construction";
    EXPECT_EQ(engine.GetState(), Preparing);

    Observer observer(engine);
    ASSERT_TRUE(RunToEnd(engine, observer));
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

TEST_F(EngineTest, FailedDownloadsAndAnEarlyCancelEndFinishedAndFailedKeepingThePartialFile) {
    Engine::Testing::SetTimeouts(0, 1500, 0);
    struct Case {
        const wchar_t* url;
        bool cancelFirst;
        States states;
        uint32_t total, partial;  // partial ~0u: not examined
    };
    const Case cases[] = {
        {L"http://127.0.0.2/cut", false, {Connecting, Downloading, Finished}, 100000, 30000},
        {L"http://127.0.0.2/stall", false, {Connecting, Downloading, Finished}, 100000, 10000},
        {L"http://127.0.0.2/silent", false, {Connecting, Finished}, 0, 0},
        {L"http://127.0.0.3/setup-ok.sh", false, {Connecting, Finished}, 0, 0},
        // A cancel before the run only sets the flag; the run stops at its first block.
        {L"http://127.0.0.1/setup-ok.sh", true, {Connecting, Downloading, Finished}, 0, ~0u},
    };
    int number = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(Narrow(c.url));
        Engine::UpdateEngine engine(Settings(c.url));
        const std::string setup = Narrow(engine.GetWorker().GetSetupFilePath());
        EXPECT_EQ(setup, folder.File("Update" + std::to_string(++number) + ".exe"))
            << "the files of earlier runs are taken";
        Observer observer(engine);
        if (c.cancelFirst) {
            EXPECT_TRUE(engine.Cancel());
            EXPECT_EQ(engine.GetState(), Preparing);
            EXPECT_FALSE(engine.IsFailed());
        }
        ASSERT_TRUE(RunToEnd(engine, observer));
        EXPECT_EQ(observer.States(), c.states);
        EXPECT_TRUE(engine.IsFailed());
        if (c.total) {
            EXPECT_EQ(engine.GetTotalSize(), c.total);
        }
        if (c.partial == ~0u) continue;
        EXPECT_EQ(engine.GetDownloadedSize(), c.partial);
        EXPECT_EQ(ReadFile(setup).size(), c.partial) << "the partial file stays";
        EXPECT_TRUE(Exists(setup));
    }
    EXPECT_FALSE(Exists(argumentsFile)) << "no setup ran";
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

TEST_F(EngineTest, CancelWhileInstallingLetsTheSetupFinish) {
    Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-slow.sh"));
    Observer observer(engine);
    engine.AddListener(&observer);
    ASSERT_TRUE(engine.Start());
    ASSERT_TRUE(observer.WaitFor(Installing));
    // Installing is reported just before the setup starts; the script may write its mark
    // before the worker has stored the process id.
    for (int i = 0; i < 2000 && (ReadFile(argumentsFile).empty() ||
                                 engine.GetWorker().GetSetupProcessId() == 0);
         ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    ASSERT_GT(engine.GetWorker().GetSetupProcessId(), 0u);
    ASSERT_FALSE(Exists(argumentsFile + ".done"));

    engine.Cancel();
    EXPECT_EQ(ReadFile(argumentsFile + ".done"), "done\n") << "the setup finished its work";
    EXPECT_EQ(engine.GetState(), Finished);
    EXPECT_TRUE(engine.IsFailed());
    EXPECT_EQ(observer.States(), (States{Connecting, Downloading, Installing, Finished}));
}

TEST_F(EngineTest, ASilentSetupThatOutlivesItsLimitKeepsRunningUntilTheEngineEnds) {
    Engine::Testing::SetTimeouts(0, 0, 1000);
    pid_t setup = 0;
    {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-hang.sh"));
        Observer observer(engine);
        ASSERT_TRUE(RunToEnd(engine, observer));
        EXPECT_TRUE(engine.IsFailed());
        setup = static_cast<pid_t>(engine.GetWorker().GetSetupProcessId());
        EXPECT_EQ(::kill(setup, 0), 0) << "the setup keeps running after the limit";
    }
    EXPECT_FALSE(StillAlive(setup)) << "the engine's end ends the setup";
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

TEST_F(EngineTest, APlantedLinkInTheTemporaryFolderIsNeverFollowed) {
    const std::string victim = folder.File("victim");
    TestHarness::WriteFile(victim, "precious");
    ASSERT_EQ(::symlink(victim.c_str(), folder.File("Update1.exe").c_str()), 0);
    ASSERT_EQ(::symlink(folder.File("absent").c_str(), folder.File("Update2.exe").c_str()), 0);
    {
        Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"));
        EXPECT_EQ(Narrow(engine.GetWorker().GetSetupFilePath()), folder.File("Update3.exe"));
    }
    // Given a link itself, construction fails instead of writing through it.
    for (const char* link : {"Update1.exe", "Update2.exe"}) {
        try {
            Engine::UpdateEngine engine(Settings(L"http://127.0.0.1/setup-ok.sh"),
                                        STLHelpers::Utf8ToWide(folder.File(link)));
            ADD_FAILURE() << "the engine must not be built on a link";
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), "Cannot open destination file");
        }
    }
    EXPECT_EQ(ReadFile(victim), "precious");
    EXPECT_FALSE(Exists(folder.File("absent")));
}

}  // namespace
}  // namespace EngineTests
