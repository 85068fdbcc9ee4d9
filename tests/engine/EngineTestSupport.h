// An observer that records what the engine reports, and a fixture with the servers, a
// document root holding small setup scripts, and a private temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "TestHarness.h"
#include "engine/UpdateEngine.h"

namespace EngineTests {

class Observer : public Engine::IUpdateEvents {
public:
    explicit Observer(Engine::UpdateEngine& engine) : engine(engine) {}

    void OnStateChanged() override {
        std::lock_guard lock(mutex);
        states.push_back(engine.GetState());
        changed.notify_all();
    }
    void OnProgress() override {
        std::lock_guard lock(mutex);
        ++progressEvents;
        lastDownloaded = engine.GetDownloadedSize();
    }

    // Waits until the state has been reported (generous limit for loaded machines).
    bool WaitFor(Engine::UpdateState state, int seconds = 60) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(seconds), [&] {
            return std::find(states.begin(), states.end(), state) != states.end();
        });
    }
    std::vector<Engine::UpdateState> States() {
        std::lock_guard lock(mutex);
        return states;
    }
    int ProgressEvents() {
        std::lock_guard lock(mutex);
        return progressEvents;
    }

    uint32_t lastDownloaded = 0;

private:
    Engine::UpdateEngine& engine;
    std::mutex mutex;
    std::condition_variable changed;
    std::vector<Engine::UpdateState> states;
    int progressEvents = 0;
};

class EngineTest : public testing::Test {
protected:
    static void SetUpTestSuite();
    static void TearDownTestSuite();
    void SetUp() override;
    void TearDown() override;

    // Settings for a download of `url` with the given silence.
    static Engine::ProductSettings Settings(const std::wstring& url, bool silent = true);
    std::wstring SetupPath() const;
    std::vector<std::string> SetupArguments() const;
    // Registers `observer`, starts the update and waits until it has finished.
    static bool RunToEnd(Engine::UpdateEngine& engine, Observer& observer);

    static std::unique_ptr<TestHarness::TempFolder> root;
    static std::unique_ptr<TestHarness::HttpServers> servers;
    TestHarness::TempFolder folder;
    std::string argumentsFile;
};

}  // namespace EngineTests
