// ThreadLib::ManualResetEvent: an event that stays signalled until it is reset, as the
// worker's stop event and the engine's idle event need it.
//
// Thread safety: every operation from any thread.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace ThreadLib {

class ManualResetEvent {
public:
    static constexpr uint32_t kInfinite = 0xFFFFFFFFu;

    explicit ManualResetEvent(bool initiallySet = false) : m_set(initiallySet) {}
    ManualResetEvent(const ManualResetEvent&) = delete;
    ManualResetEvent& operator=(const ManualResetEvent&) = delete;

    void Set();
    void Reset();
    bool IsSet() const;

    // True when the event is (or becomes) signalled within the time; kInfinite waits
    // without limit.
    bool Wait(uint32_t timeoutMs) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    bool m_set;
};

}  // namespace ThreadLib
