#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "foundation/AtomicNumber.h"
#include "foundation/ProcessWideObject.h"
#include "foundation/RWLock.h"
#include "foundation/SpinLock.h"

namespace {

using namespace std::chrono_literals;
using Synchronization::RWLock;

TEST(RWLock, ReadersShareWhileAWriterWaits) {
    ASSERT_TRUE(Synchronization::Impl::GetFunctionTable().IsComplete());
    RWLock lock;
    ASSERT_TRUE(lock.SharesReaders());

    std::atomic<int> readersIn{0};
    std::atomic<bool> release{false}, writerIn{false};
    auto reader = [&] {
        lock.LockShared();
        ++readersIn;
        while (!release) std::this_thread::sleep_for(1ms);
        lock.UnlockShared();
    };
    std::thread r1(reader), r2(reader);
    const auto limit = std::chrono::steady_clock::now() + 10s;
    while (readersIn < 2 && std::chrono::steady_clock::now() < limit)
        std::this_thread::sleep_for(1ms);
    ASSERT_EQ(readersIn, 2) << "two readers hold it together";

    std::thread writer([&] {
        lock.LockExclusive();
        writerIn = true;
        lock.UnlockExclusive();
    });
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(writerIn) << "the writer waits for both readers";
    release = true;
    r1.join();
    r2.join();
    writer.join();
    EXPECT_TRUE(writerIn);
}

TEST(RWLock, MissingFunctionsOrForcedFallbackMakeReadersExcludeEachOther) {
    auto names = Synchronization::Impl::FunctionTable::kNames;
    names[2] = "AcquireSRWLockSharedMissing";
    const auto table = Synchronization::Impl::LoadFunctionTable(names);
    EXPECT_FALSE(table.IsComplete());
    EXPECT_NE(table.functions[0], nullptr) << "the other functions are still found";

    Synchronization::Impl::ForceExclusiveFallback(true);
    RWLock lock;
    Synchronization::Impl::ForceExclusiveFallback(false);
    EXPECT_FALSE(lock.SharesReaders());

    lock.LockShared();
    std::atomic<bool> secondReaderIn{false};
    std::thread second([&] {
        lock.LockShared();
        secondReaderIn = true;
        lock.UnlockShared();
    });
    std::this_thread::sleep_for(50ms);
    EXPECT_FALSE(secondReaderIn) << "under the fallback a reader excludes other readers";
    lock.UnlockShared();
    second.join();
    EXPECT_TRUE(secondReaderIn);
}

TEST(RWLock, LeavesAnOutsideImplementationAlive) {
    struct CountingImpl : Synchronization::IRWLockImpl {
        void LockShared() override { ++calls; }
        void UnlockShared() override { ++calls; }
        void LockExclusive() override { ++calls; }
        void UnlockExclusive() override { ++calls; }
        int calls = 0;
    };
    CountingImpl impl;  // on the stack: a lock that deleted it would crash
    {
        RWLock lock(&impl);
        Synchronization::ExclusiveLock hold(lock);
    }
    EXPECT_EQ(impl.calls, 2);
}

TEST(SpinLock, ExcludesAndCountsContention) {
    std::atomic<int32_t> word{0};
    long counter = 0;  // deliberately not atomic: the lock must protect it
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                Synchronization::SpinLock guard(&word);
                ++counter;
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(counter, 80000);
    EXPECT_EQ(word.load(), 0);

    // A waiter that has failed 999 times still yields; from the 1000th it sleeps.
    using Synchronization::SpinLock;
    EXPECT_EQ(SpinLock::BackoffAfter(999), SpinLock::Backoff::Yield);
    EXPECT_EQ(SpinLock::BackoffAfter(1000), SpinLock::Backoff::Sleep);

    std::atomic<bool> got{false};
    unsigned failed = 0;
    word = SpinLock::kOwnerTag;  // held by "someone else"
    std::thread waiter([&] {
        SpinLock guard(&word);
        failed = guard.FailedAttempts();
        got = true;
    });
    std::this_thread::sleep_for(30ms);
    EXPECT_FALSE(got);
    word = 0;
    waiter.join();
    EXPECT_TRUE(got);
    EXPECT_GT(failed, 0u);

    SpinLock nothing(nullptr);  // a null word is allowed and does nothing
    EXPECT_EQ(nothing.FailedAttempts(), 0u);
}

TEST(AtomicNumber, ConcurrentOperations) {
    Synchronization::AtomicNumberT<int, Synchronization::AtomicAutoPolicy<int>> n(10);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 10000; ++i) {
                n.Increment();
                n.Add(2);
                n.Decrement();
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(n.Read(), 10 + 4 * 10000 * 2);
    EXPECT_EQ(n.Exchange(-1), 80010);
    EXPECT_EQ(n.Increment(), 0);
}

struct Counted {
    Counted() { ++constructions; }
    static inline std::atomic<int> constructions{0};
};

TEST(ProcessWideObject, BuiltOnceUnderContention) {
    static Synchronization::ProcessWideObject<Counted> holder;
    std::vector<std::thread> threads;
    std::vector<Counted*> seen(8);
    for (int t = 0; t < 8; ++t) threads.emplace_back([&, t] { seen[t] = holder.Get(); });
    for (auto& t : threads) t.join();
    EXPECT_EQ(Counted::constructions.load(), 1);
    for (Counted* p : seen) EXPECT_EQ(p, seen[0]);
    EXPECT_NE(seen[0], nullptr);
}

}  // namespace
