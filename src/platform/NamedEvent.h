// A named auto-reset event shared with other processes of the same user: a POSIX named
// semaphore that holds at most one pending signal. Set wakes one waiter (or lets the next
// wait through at once); a wait takes the signal. The name outlives its openers until
// Remove: whoever sets the event removes the name once the waiter is gone, so that no stale
// signal waits for the next program that opens it.
//
// Names are UTF-8 and follow the rules of include/lumetta/product.h, so a product built
// with that header sees the same object.
//
// Thread safety: Set and Wait from any thread on an open object; Create, Close and
// assignment on one thread while nobody else uses the object. Remove from any thread.
#pragma once

#include <cstdint>
#include <string>

namespace Platform {

class NamedEvent {
public:
    enum class WaitResult { Signaled, TimedOut, Failed };

    NamedEvent() = default;
    ~NamedEvent();
    NamedEvent(NamedEvent&& other) noexcept;
    NamedEvent& operator=(NamedEvent&& other) noexcept;
    NamedEvent(const NamedEvent&) = delete;
    NamedEvent& operator=(const NamedEvent&) = delete;

    // Opens the event, creating it not signalled when the name does not exist. Closes what
    // this object had open before. Returns 0 or a Win32 error number.
    uint32_t Create(const std::string& name);

    bool IsOpen() const { return m_semaphore != nullptr; }
    void Close();

    // Signals the event unless a signal is already pending. Returns 0 or a Win32 error
    // number (6 when the object is not open).
    uint32_t Set();

    // Waits for the signal and takes it. A negative time-out waits without limit; 0 only
    // looks. Failed when the object is not open or the system call fails.
    WaitResult Wait(int64_t timeoutMs);

    // Removes the name; objects still open keep working. Removing a name that does not
    // exist succeeds. Returns 0 or a Win32 error number.
    static uint32_t Remove(const std::string& name);

private:
    void* m_semaphore = nullptr;  // sem_t*
};

}  // namespace Platform
