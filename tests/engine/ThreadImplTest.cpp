#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <thread>

#include "engine/ManualResetEvent.h"
#include "engine/ThreadImpl.h"

namespace {

using Policy =
    ThreadLib::DefaultThreadPolicy<ThreadLib::MinStartPolicy<0>,
                                   ThreadLib::EventStopPolicy<ThreadLib::MinStopPolicy<-1>>>;

// A body that runs until it is asked to stop (or released), then returns its code.
class Looper : public ThreadLib::ThreadImpl<Looper, Policy> {
public:
    ~Looper() { Stop(); }

    uint32_t Run() {
        ++runs;
        started.Set();
        if (throwInBody) throw std::runtime_error("body failed");
        while (!release.IsSet() && !GetStopEvent().Wait(5)) {
        }
        sawStop = IsStopRequested();
        return exitCode;
    }

    void ForgetHandle() { threadHandle.reset(); }

    std::atomic<int> runs{0};
    std::atomic<bool> sawStop{false};
    bool throwInBody = false;
    uint32_t exitCode = 7;
    ThreadLib::ManualResetEvent started;
    ThreadLib::ManualResetEvent release;
};

TEST(ThreadImpl, RunsOneThreadAtATimeAndKeepsItsExitCode) {
    Looper looper;
    EXPECT_EQ(looper.GetThreadId(), 0u);
    EXPECT_FALSE(looper.WaitForEnd(0)) << "no thread to wait for";

    ASSERT_TRUE(looper.Start());
    ASSERT_TRUE(looper.started.Wait(10000));
    EXPECT_NE(looper.GetThreadId(), 0u);
    EXPECT_TRUE(looper.IsRunning());
    EXPECT_FALSE(looper.Start()) << "a second thread while the first runs";
    EXPECT_FALSE(looper.WaitForEnd(20));

    looper.release.Set();
    ASSERT_TRUE(looper.WaitForEnd(10000));
    uint32_t code = 0;
    ASSERT_TRUE(looper.GetExitCode(&code));
    EXPECT_EQ(code, 7u);
    EXPECT_FALSE(looper.sawStop);

    // Once ended, the owner may run again on a new thread.
    looper.exitCode = 9;
    ASSERT_TRUE(looper.Start());
    ASSERT_TRUE(looper.WaitForEnd(10000));
    ASSERT_TRUE(looper.GetExitCode(&code));
    EXPECT_EQ(code, 9u);
    EXPECT_EQ(looper.runs, 2);

    // Stop sets the stop event and waits; the event is cleared when the body returns.
    looper.started.Reset();
    looper.release.Reset();
    ASSERT_TRUE(looper.Start());
    ASSERT_TRUE(looper.started.Wait(10000));
    looper.Stop();
    EXPECT_TRUE(looper.sawStop);
    EXPECT_FALSE(looper.IsRunning());
    EXPECT_FALSE(looper.GetStopEvent().IsSet());
    looper.Stop();  // nothing to stop: returns at once

    // An exception in the body ends the thread with -1.
    looper.throwInBody = true;
    ASSERT_TRUE(looper.Start());
    ASSERT_TRUE(looper.WaitForEnd(10000));
    ASSERT_TRUE(looper.GetExitCode(&code));
    EXPECT_EQ(code, 0xFFFFFFFFu);
}

TEST(ThreadImpl, SuspendedStartWaitsForResume) {
    Looper looper;
    ASSERT_TRUE(looper.Start(/*startSuspended=*/true));
    EXPECT_FALSE(looper.started.Wait(100)) << "the body must not run before Resume";
    EXPECT_EQ(looper.runs, 0);
    EXPECT_EQ(looper.Resume(), 1u);
    ASSERT_TRUE(looper.started.Wait(10000));
    EXPECT_EQ(looper.Resume(), 0u) << "a running thread is not suspended";
    looper.release.Set();
    EXPECT_TRUE(looper.WaitForEnd(10000));

    // Stopped before it was ever resumed: the body never runs.
    Looper never;
    ASSERT_TRUE(never.Start(true));
    never.Stop();
    EXPECT_FALSE(never.IsRunning());
    EXPECT_EQ(never.runs, 0);
}

TEST(ThreadImpl, ALostHandleIsFoundAgainByIdentifier) {
    Looper looper;
    ASSERT_TRUE(looper.Start(true));
    looper.ForgetHandle();
    EXPECT_EQ(looper.Resume(), 1u) << "reopened by its identifier";
    ASSERT_TRUE(looper.started.Wait(10000));
    looper.ForgetHandle();
    EXPECT_FALSE(looper.WaitForEnd(0));
    looper.release.Set();
    EXPECT_TRUE(looper.WaitForEnd(10000));
}

TEST(ManualResetEvent, StaysSetUntilReset) {
    ThreadLib::ManualResetEvent event;
    EXPECT_FALSE(event.Wait(0));
    std::thread setter([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        event.Set();
    });
    EXPECT_TRUE(event.Wait(ThreadLib::ManualResetEvent::kInfinite));
    setter.join();
    EXPECT_TRUE(event.Wait(0)) << "still set for every later waiter";
    event.Reset();
    EXPECT_FALSE(event.Wait(10));
}

}  // namespace
