// The one-time creation pattern for process-wide objects (the diagnostic log, per-thread
// slots): no lock once built; otherwise the spin lock, build if the guard bit says it is
// not yet built, register its destruction at exit, set the flag.
//
// Thread safety: Get from any thread. The object is destroyed by the runtime's exit list;
// Get after that returns nullptr.
#pragma once

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "foundation/SpinLock.h"

namespace Synchronization {

template <class T>
class ProcessWideObject {
public:
    T* Get() {
        if (m_state.load(std::memory_order_acquire) == kBuilt) return Object();
        SpinLock guard(&m_lock);
        const int32_t state = m_state.load(std::memory_order_relaxed);
        if (state == kDestroyed) return nullptr;
        if (state == kUnbuilt) {
            ::new (static_cast<void*>(m_storage)) T();
            m_state.store(kBuilt, std::memory_order_release);
            Register(this);
        }
        return Object();
    }

private:
    static constexpr int32_t kUnbuilt = 0, kBuilt = 1, kDestroyed = 2;

    T* Object() { return std::launder(reinterpret_cast<T*>(m_storage)); }

    // std::atexit takes no argument: one static slot per object type is enough, since each
    // ProcessWideObject<T> is itself a single static object.
    static void Register(ProcessWideObject* self) {
        instance = self;
        std::atexit(&Destroy);
    }
    static void Destroy() {
        ProcessWideObject* self = instance;
        SpinLock guard(&self->m_lock);
        if (self->m_state.load() == kBuilt) {
            self->m_state.store(kDestroyed);
            self->Object()->~T();
        }
    }

    inline static ProcessWideObject* instance = nullptr;
    std::atomic<int32_t> m_lock{0};
    std::atomic<int32_t> m_state{kUnbuilt};
    alignas(T) unsigned char m_storage[sizeof(T)];
};

}  // namespace Synchronization
