// A handle on a process: a pidfd that stays valid for that process only, even after its
// identifier is reused. A handle on a process we started also reaps it: Wait collects its
// exit status, and a handle closed while its child still runs hands the child to a waiting
// thread, so that no zombie is left behind.
//
// Thread safety: Wait, Kill, Id and ExitStatus from any thread at once; moving and
// destruction by one thread while nobody else uses the object.
#pragma once

#include <atomic>
#include <cstdint>
#include <optional>

namespace Platform {

class ProcessHandle {
public:
    enum class WaitResult { Ended, TimedOut, Failed };

    ProcessHandle() = default;
    // Takes ownership of `pidfd`. `pid` 0 means unknown (then read from the descriptor).
    // `child`: the process is our child and must be reaped.
    ProcessHandle(int pidfd, uint32_t pid, bool child) noexcept;
    ~ProcessHandle();
    ProcessHandle(ProcessHandle&& other) noexcept;
    ProcessHandle& operator=(ProcessHandle&& other) noexcept;
    ProcessHandle(const ProcessHandle&) = delete;
    ProcessHandle& operator=(const ProcessHandle&) = delete;

    // Opens a handle on the running process `pid`. Returns 0 or a Win32 error number (87
    // when no such process exists, 5 when it may not be opened).
    static uint32_t Open(uint32_t pid, ProcessHandle& out);

    bool IsValid() const { return m_fd >= 0; }

    // The process identifier: as given, else as the kernel reports it for the descriptor;
    // 0 when unknown.
    uint32_t Id() const;

    // Waits until the process has ended. A negative time-out waits without limit, 0 only
    // looks. A child is reaped here. Failed for an invalid handle or a failing system call.
    WaitResult Wait(int64_t timeoutMs);

    // Ends the process with SIGKILL (Linux cannot choose the exit code). Returns 0 or a
    // Win32 error number (6 for an invalid handle).
    uint32_t Kill();

    // For a child that Wait has reaped: its exit code, or 128 + the signal that ended it.
    std::optional<int> ExitStatus() const;

private:
    void Release() noexcept;
    bool Reap(bool block);

    int m_fd = -1;
    uint32_t m_pid = 0;
    bool m_child = false;
    std::atomic<int> m_exitStatus{-1};
};

// The process identifier a pidfd refers to (from /proc/self/fdinfo); 0 when it cannot be
// read or the process is gone.
uint32_t PidOfDescriptor(int pidfd);

}  // namespace Platform
