#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <future>
#include <thread>

#include "SleepingThread.h"
#include "foundation/ObserverList.h"

namespace {

using TestSupport::SleepingThread;

struct Listener {
    std::function<void()> onCall;
    std::atomic<int> calls{0};
    void Call() {
        ++calls;
        if (onCall) onCall();
    }
};

void Round(Synchronization::ObserverList<Listener>& list) {
    list.Deliver([](Listener& l) { l.Call(); });
}

TEST(ObserverList, RemovalFromAnotherThreadWaitsForTheRound) {
    Synchronization::ObserverList<Listener> list;
    Listener first, second;
    std::promise<void> entered, release;
    std::shared_future<void> released = release.get_future().share();
    first.onCall = [&] {
        entered.set_value();
        released.wait();
    };
    ASSERT_TRUE(list.Add(&first));
    ASSERT_TRUE(list.Add(&second));
    EXPECT_FALSE(list.Add(&second));

    std::thread round([&] { Round(list); });
    entered.get_future().wait();
    bool removed = false;
    {
        SleepingThread removal([&] { removed = list.Remove(&second); });
        EXPECT_TRUE(removal.Blocked()) << "Remove returned while a round was still under way";
        release.set_value();
    }
    round.join();
    EXPECT_TRUE(removed);
    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 0) << "called after it was removed";
    EXPECT_FALSE(list.Remove(&second));
}

TEST(ObserverList, RemovalFromInsideARoundReturnsAtOnce) {
    Synchronization::ObserverList<Listener> list;
    Listener first, second;
    bool removed = false;
    first.onCall = [&] { removed = list.Remove(&first) && list.Remove(&second); };
    list.Add(&first);
    list.Add(&second);
    {
        // Waiting for the rounds in flight, it would wait for itself until its time limit.
        SleepingThread round([&] { Round(list); });
        EXPECT_FALSE(round.Blocked());
    }
    EXPECT_TRUE(removed);
    EXPECT_EQ(second.calls, 0);
    Round(list);
    EXPECT_EQ(first.calls, 1);
}

}  // namespace
