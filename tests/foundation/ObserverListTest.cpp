#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <thread>

#include "foundation/ObserverList.h"

namespace {

using namespace std::chrono_literals;

struct Listener {
    std::function<void()> onCall;
    std::atomic<int> calls{0};
    void Call() {
        ++calls;
        if (onCall) onCall();
    }
};

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

    std::thread round([&] { list.Deliver([](Listener& l) { l.Call(); }); });
    entered.get_future().wait();
    auto removal = std::async(std::launch::async, [&] { return list.Remove(&second); });
    EXPECT_EQ(removal.wait_for(200ms), std::future_status::timeout)
        << "Remove returned while a round was still under way";
    release.set_value();
    EXPECT_TRUE(removal.get());
    round.join();

    EXPECT_EQ(first.calls, 1);
    EXPECT_EQ(second.calls, 0) << "called after it was removed";
    EXPECT_FALSE(list.Remove(&second));
}

TEST(ObserverList, RemovalFromInsideARoundReturnsAtOnce) {
    Synchronization::ObserverList<Listener> list;
    Listener first, second;
    bool removed = false;
    std::chrono::steady_clock::duration took{};
    first.onCall = [&] {
        const auto start = std::chrono::steady_clock::now();
        removed = list.Remove(&first) && list.Remove(&second);
        took = std::chrono::steady_clock::now() - start;
    };
    list.Add(&first);
    list.Add(&second);
    list.Deliver([](Listener& l) { l.Call(); });

    EXPECT_TRUE(removed);
    EXPECT_LT(took, 1s) << "a round waited for itself";
    EXPECT_EQ(second.calls, 0);
    list.Deliver([](Listener& l) { l.Call(); });
    EXPECT_EQ(first.calls, 1);
}

}  // namespace
