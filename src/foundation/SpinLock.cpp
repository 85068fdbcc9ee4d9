#include "foundation/SpinLock.h"

#include <chrono>
#include <thread>

namespace Synchronization {

SpinLock::SpinLock(std::atomic<int32_t>* word) : m_word(word) {
    if (m_word == nullptr) return;
    for (;;) {
        int32_t expected = 0;
        if (m_word->compare_exchange_strong(expected, kOwnerTag, std::memory_order_acquire)) return;
        ++m_failed;
        if (BackoffAfter(m_failed) == Backoff::Yield)
            std::this_thread::yield();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

SpinLock::~SpinLock() {
    if (m_word == nullptr) return;
    int32_t expected = kOwnerTag;
    m_word->compare_exchange_strong(expected, 0, std::memory_order_release);
}

}  // namespace Synchronization
