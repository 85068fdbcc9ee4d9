// The policies of ThreadLib::ThreadImpl. A start policy gives the default stack size; a stop
// policy says how a running thread is asked to stop and how long Stop waits for it:
//
//   MinStopPolicy<T>    asks nothing; Stop only waits, T ms (-1: without limit)
//   EventStopPolicy<P>  sets a flag and a manual-reset event the body can watch, then waits
//                       as P does; both are cleared when the body returns
//
// DefaultThreadPolicy<Start, Stop> combines the two into the ThreadImpl policy.
//
// Thread safety: the flag and the event may be read from any thread.
#pragma once

#include <atomic>
#include <cstdint>

#include "engine/ManualResetEvent.h"

namespace ThreadLib {

template <uint32_t StackSize = 0>
struct MinStartPolicy {
    static constexpr uint32_t kStackSize = StackSize;
};

template <int32_t TimeoutMs = -1>
struct MinStopPolicy {
    static constexpr uint32_t kStopTimeout = static_cast<uint32_t>(TimeoutMs);

    // Whether the request reached the thread; without a channel there is nothing to fail.
    bool RequestStop() { return true; }
    void OnBodyEnded() {}
    bool IsStopRequested() const { return false; }
};

template <class WaitPolicy = MinStopPolicy<-1>>
struct EventStopPolicy {
    static constexpr uint32_t kStopTimeout = WaitPolicy::kStopTimeout;

    bool RequestStop() {
        stopRequested.store(true);
        stopEvent.Set();
        return true;
    }
    void OnBodyEnded() {
        stopRequested.store(false);
        stopEvent.Reset();
    }
    bool IsStopRequested() const { return stopRequested.load(); }
    const ManualResetEvent& GetStopEvent() const { return stopEvent; }

    std::atomic<bool> stopRequested{false};
    ManualResetEvent stopEvent;  // manual-reset, initially not signalled
};

template <class StartPolicy = MinStartPolicy<0>, class StopPolicy = MinStopPolicy<-1>>
struct DefaultThreadPolicy : StopPolicy {
    static constexpr uint32_t kStackSize = StartPolicy::kStackSize;
};

}  // namespace ThreadLib
