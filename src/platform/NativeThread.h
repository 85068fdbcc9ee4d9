// Threads the way the thread template needs them: created running or suspended with a given
// stack size, found again by their identifier while anyone still holds them, resumed, waited
// for with a time-out, and asked for their exit code. The handle is shared: the thread keeps
// its own reference while it runs, so a handle may be dropped at any time.
//
// Thread identifiers are the kernel's thread ids, so they match what the diagnostic log shows.
//
// Thread safety: every function from any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace Platform {

class NativeThread;
using NativeThreadHandle = std::shared_ptr<NativeThread>;

inline constexpr uint32_t kInfinite = 0xFFFFFFFFu;

enum class WaitResult { Signaled, TimedOut, Failed };

// Starts `body` on a new detached thread. With `suspended` the body does not run until the
// thread is resumed. A stack size of 0 takes the default. Returns null on failure, with
// *win32Error set (8 when out of resources); *threadId receives the thread's identifier.
NativeThreadHandle CreateNativeThread(std::function<uint32_t()> body, uint32_t stackSize,
                                      bool suspended, uint32_t* threadId, uint32_t* win32Error);

// A handle of a thread created above, by identifier; null when no such thread is known
// (it has ended and nobody holds it any more).
NativeThreadHandle OpenNativeThread(uint32_t threadId);

// Lowers the suspend count; the thread runs when it reaches 0. Returns the previous count,
// or 0xFFFFFFFF for a null handle.
uint32_t ResumeNativeThread(const NativeThreadHandle& thread);

// Waits until the thread has ended. Failed for a null handle.
WaitResult WaitNativeThread(const NativeThreadHandle& thread, uint32_t timeoutMs);

// Ends a thread that was created suspended and has never run its body; it then ends with the
// exit code given, without running it. False when the body has already started.
bool DiscardSuspendedNativeThread(const NativeThreadHandle& thread, uint32_t exitCode);

// The exit code once the thread has ended; false while it runs or for a null handle.
bool GetNativeThreadExitCode(const NativeThreadHandle& thread, uint32_t* exitCode);

// The identifier of the calling thread.
uint32_t CurrentNativeThreadId();

}  // namespace Platform
