#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "SleepingThread.h"
#include "foundation/AtomicNumber.h"
#include "foundation/ProcessWideObject.h"
#include "foundation/RWLock.h"
#include "foundation/SpinLock.h"

namespace {

using Synchronization::RWLock;
using Synchronization::SharedLock;
using TestSupport::SleepingThread;

TEST(RWLock, ReadersShareWhileAWriterWaits) {
    ASSERT_TRUE(Synchronization::Impl::GetFunctionTable().IsComplete());
    RWLock lock;
    ASSERT_TRUE(lock.SharesReaders());
    lock.LockShared();
    SleepingThread reader([&] { SharedLock hold(lock); });
    EXPECT_FALSE(reader.Blocked()) << "a second reader shares the lock";
    SleepingThread writer([&] { Synchronization::ExclusiveLock hold(lock); });
    EXPECT_TRUE(writer.Blocked()) << "the writer waits for the reader";
    lock.UnlockShared();
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
    lock.LockShared();
    SleepingThread second([&] { SharedLock hold(lock); });
    EXPECT_TRUE(second.Blocked()) << "under the fallback a reader excludes other readers";
    lock.UnlockShared();
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

TEST(SpinLock, ExcludesAndSleepsAfterTheYieldingAttempts) {
    using Synchronization::SpinLock;
    std::atomic<int32_t> word{0};
    long counter = 0;  // deliberately not atomic: the lock must protect it
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < 20000; ++i) {
                SpinLock guard(&word);
                ++counter;
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(counter, 80000);

    // A waiter that has failed 999 times still yields; from the 1000th it sleeps.
    EXPECT_EQ(SpinLock::BackoffAfter(999), SpinLock::Backoff::Yield);
    EXPECT_EQ(SpinLock::BackoffAfter(1000), SpinLock::Backoff::Sleep);
    unsigned failed = 0;
    word = SpinLock::kOwnerTag;  // held by "someone else"
    {
        SleepingThread waiter([&] { failed = SpinLock(&word).FailedAttempts(); });
        EXPECT_TRUE(waiter.Blocked());
        word = 0;
    }
    EXPECT_GE(failed, 1000u);
    EXPECT_EQ(word.load(), 0) << "the guard gave the word back";
    EXPECT_EQ(SpinLock(nullptr).FailedAttempts(), 0u) << "a null word is allowed";
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
    EXPECT_EQ(n.Exchange(-1), 10 + 4 * 10000 * 2);
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
    EXPECT_NE(seen[0], nullptr);
    for (Counted* p : seen) EXPECT_EQ(p, seen[0]);
}

}  // namespace
