// ThreadLib::ThreadImpl: one thread at a time bound to an owner object of type Derived,
// whose `uint32_t Run()` is the thread's body. The owner derives from ThreadImpl:
//
//   class Worker : public ThreadLib::ThreadImpl<Worker, Policy> { public: uint32_t Run(); };
//
// An exception escaping Run ends the thread with exit code 0xFFFFFFFF. The owner must stop
// the thread before its own members go (its destructor calls Stop); ThreadImpl's destructor
// stops it again as a last resort.
//
// Thread safety: Start, Stop, Resume and WaitForEnd from the owner's controlling thread.
// Stop from the thread itself only asks it to stop (it cannot wait for itself).
#pragma once

#include <cstdint>

#include "engine/ThreadPolicies.h"
#include "platform/NativeThread.h"

namespace ThreadLib {

inline constexpr uint32_t kInfinite = 0xFFFFFFFFu;
// Full thread access, as a thread is reopened by its identifier.
inline constexpr uint32_t kThreadAllAccess = 0x1F03FF;

template <class Derived, class Policy = DefaultThreadPolicy<>>
class ThreadImpl : public Policy {
public:
    ThreadImpl() = default;
    ThreadImpl(const ThreadImpl&) = delete;
    ThreadImpl& operator=(const ThreadImpl&) = delete;

    // Starts a new thread unless one is still running (false then). With startSuspended
    // the body waits for Resume. False when the thread cannot be created or resumed.
    bool Start(bool startSuspended = false, uint32_t stackSize = Policy::kStackSize) {
        if (IsRunning()) return false;
        uint32_t id = 0, error = 0;
        auto handle = Platform::CreateNativeThread([this] { return ThreadProc(); }, stackSize,
                                                   /*suspended=*/true, &id, &error);
        threadHandle = handle;
        threadId = handle ? id : 0;
        if (!handle) return false;
        if (startSuspended) return true;
        return Resume() != 0xFFFFFFFFu;
    }

    // Asks the thread to stop and waits for it: timeoutMs, then without limit if the
    // request could not be delivered or the thread did not end in time. A thread that was
    // started suspended and never resumed is ended without running its body.
    void Stop(uint32_t timeoutMs = Policy::kStopTimeout) {
        auto handle = Handle();
        if (!handle || Platform::WaitNativeThread(handle, 0) != Platform::WaitResult::TimedOut)
            return;
        const bool delivered = Policy::RequestStop();
        if (Platform::CurrentNativeThreadId() == threadId) return;
        if (Platform::DiscardSuspendedNativeThread(handle, 0xFFFFFFFFu)) Policy::OnBodyEnded();
        if (!delivered ||
            Platform::WaitNativeThread(handle, timeoutMs) != Platform::WaitResult::Signaled)
            Platform::WaitNativeThread(handle, kInfinite);
    }

    // The previous suspend count, or 0xFFFFFFFF when there is no thread to resume.
    uint32_t Resume() { return Platform::ResumeNativeThread(Handle()); }

    // True only when the thread has ended within the time.
    bool WaitForEnd(uint32_t timeoutMs) {
        return Platform::WaitNativeThread(Handle(), timeoutMs) == Platform::WaitResult::Signaled;
    }

    // A thread has been started and has not ended yet.
    bool IsRunning() const {
        return threadHandle &&
               Platform::WaitNativeThread(threadHandle, 0) == Platform::WaitResult::TimedOut;
    }

    // True on the thread this object runs.
    bool IsOwnThread() const {
        return threadId != 0 && Platform::CurrentNativeThreadId() == threadId;
    }

    uint32_t GetThreadId() const { return threadId; }

    // The exit code of the last thread once it has ended; false before.
    bool GetExitCode(uint32_t* exitCode) const {
        return Platform::GetNativeThreadExitCode(threadHandle, exitCode);
    }

protected:
    ~ThreadImpl() {
        Stop(kInfinite);
        threadHandle.reset();
    }

private:
    // The stored handle, or the thread reopened by its identifier when the handle is gone.
    Platform::NativeThreadHandle Handle() {
        if (!threadHandle) threadHandle = Platform::OpenNativeThread(threadId);
        return threadHandle;
    }

    uint32_t ThreadProc() {
        uint32_t exitCode;
        try {
            exitCode = static_cast<Derived*>(this)->Run();
        } catch (...) {
            exitCode = 0xFFFFFFFFu;
        }
        Policy::OnBodyEnded();
        return exitCode;
    }

protected:
    uint32_t threadId = 0;                      // the last started thread; 0 when none
    Platform::NativeThreadHandle threadHandle;  // null when none
};

}  // namespace ThreadLib
