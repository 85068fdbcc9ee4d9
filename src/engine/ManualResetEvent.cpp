#include "engine/ManualResetEvent.h"

#include <chrono>

namespace ThreadLib {

void ManualResetEvent::Set() {
    std::lock_guard lock(m_mutex);
    m_set = true;
    m_changed.notify_all();
}

void ManualResetEvent::Reset() {
    std::lock_guard lock(m_mutex);
    m_set = false;
}

bool ManualResetEvent::IsSet() const {
    std::lock_guard lock(m_mutex);
    return m_set;
}

bool ManualResetEvent::Wait(uint32_t timeoutMs) const {
    std::unique_lock lock(m_mutex);
    if (timeoutMs == kInfinite) {
        m_changed.wait(lock, [&] { return m_set; });
        return true;
    }
    return m_changed.wait_for(lock, std::chrono::milliseconds(timeoutMs), [&] { return m_set; });
}

}  // namespace ThreadLib
