// Synchronization::SpinLock: a scoped guard over a 32-bit lock word (0 free, 1 held), for
// very short sections such as the one-time creation of process-wide objects. A waiter
// yields the processor for its first 999 attempts and sleeps 1 ms before each later one,
// so it never busy-loops for long.
//
// Thread safety: any thread; the guard must be released on the thread that took it.
#pragma once

#include <atomic>
#include <cstdint>

namespace Synchronization {

class SpinLock {
public:
    static constexpr int32_t kOwnerTag = 1;
    static constexpr unsigned kYieldAttempts = 999;

    // What a waiter does after its n-th failed attempt (n from 1).
    enum class Backoff { Yield, Sleep };
    static constexpr Backoff BackoffAfter(unsigned attempt) {
        return attempt <= kYieldAttempts ? Backoff::Yield : Backoff::Sleep;
    }

    // A null word makes the guard do nothing. Returns once the lock is held.
    explicit SpinLock(std::atomic<int32_t>* word);
    ~SpinLock();
    SpinLock(const SpinLock&) = delete;
    SpinLock& operator=(const SpinLock&) = delete;

    // How many attempts failed before this guard got the lock.
    unsigned FailedAttempts() const { return m_failed; }

private:
    std::atomic<int32_t>* m_word;
    unsigned m_failed = 0;
};

}  // namespace Synchronization
