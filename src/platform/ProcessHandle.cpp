#include "platform/ProcessHandle.h"

#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>
#include <utility>

#include "platform/SystemMessages.h"

namespace Platform {
namespace {

constexpr uint32_t kErrorInvalidHandle = 6;
// P_PIDFD of <linux/wait.h>; older C library headers do not name it.
constexpr idtype_t kIdPidfd = static_cast<idtype_t>(3);

int PidfdOpen(uint32_t pid) {
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0u));
}

int PidfdSendSignal(int fd, int signal) {
    return static_cast<int>(::syscall(SYS_pidfd_send_signal, fd, signal, nullptr, 0u));
}

int StatusOf(const siginfo_t& info) {
    return info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
}

}  // namespace

uint32_t PidOfDescriptor(int pidfd) {
    if (pidfd < 0) return 0;
    std::ifstream in("/proc/self/fdinfo/" + std::to_string(pidfd));
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("Pid:", 0) == 0) {
            const long pid = std::strtol(line.c_str() + 4, nullptr, 10);
            return pid > 0 ? static_cast<uint32_t>(pid) : 0;
        }
    }
    return 0;
}

ProcessHandle::ProcessHandle(int pidfd, uint32_t pid, bool child) noexcept
    : m_fd(pidfd), m_pid(pid), m_child(child) {}

ProcessHandle::~ProcessHandle() {
    Release();
}

ProcessHandle::ProcessHandle(ProcessHandle&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)),
      m_pid(other.m_pid),
      m_child(std::exchange(other.m_child, false)),
      m_exitStatus(other.m_exitStatus.load()) {}

ProcessHandle& ProcessHandle::operator=(ProcessHandle&& other) noexcept {
    if (this != &other) {
        Release();
        m_fd = std::exchange(other.m_fd, -1);
        m_pid = other.m_pid;
        m_child = std::exchange(other.m_child, false);
        m_exitStatus = other.m_exitStatus.load();
    }
    return *this;
}

uint32_t ProcessHandle::Open(uint32_t pid, ProcessHandle& out) {
    if (pid == 0 || pid > 0x7FFFFFFF) return 87;
    const int fd = PidfdOpen(pid);
    if (fd < 0) return LastWin32Error();
    out = ProcessHandle(fd, pid, false);
    return 0;
}

uint32_t ProcessHandle::Id() const {
    if (m_pid != 0) return m_pid;
    return PidOfDescriptor(m_fd);
}

bool ProcessHandle::Reap(bool block) {
    if (!m_child) return true;
    if (m_exitStatus.load() >= 0) return true;
    siginfo_t info{};
    int result;
    do result = ::waitid(kIdPidfd, static_cast<id_t>(m_fd), &info, WEXITED | (block ? 0 : WNOHANG));
    while (result != 0 && errno == EINTR);
    if (result != 0) return errno == ECHILD;  // reaped by another waiter already
    if (info.si_pid == 0) return false;       // still running
    m_exitStatus = StatusOf(info);
    return true;
}

ProcessHandle::WaitResult ProcessHandle::Wait(int64_t timeoutMs) {
    if (m_fd < 0) return WaitResult::Failed;
    // poll takes an int: long waits go in slices.
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        int slice = -1;
        if (timeoutMs >= 0) {
            const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::steady_clock::now() - start)
                                     .count();
            const int64_t left = timeoutMs > elapsed ? timeoutMs - elapsed : 0;
            slice = static_cast<int>(left > 0x3FFFFFFF ? 0x3FFFFFFF : left);
        }
        pollfd entry{m_fd, POLLIN, 0};
        const int ready = ::poll(&entry, 1, slice);
        if (ready < 0) {
            if (errno == EINTR) continue;
            return WaitResult::Failed;
        }
        if (ready > 0) {
            Reap(true);
            return WaitResult::Ended;
        }
        if (timeoutMs >= 0 && slice < 0x3FFFFFFF) return WaitResult::TimedOut;
    }
}

uint32_t ProcessHandle::Kill() {
    if (m_fd < 0) return kErrorInvalidHandle;
    return PidfdSendSignal(m_fd, SIGKILL) == 0 ? 0 : LastWin32Error();
}

std::optional<int> ProcessHandle::ExitStatus() const {
    const int status = m_exitStatus.load();
    if (status < 0) return std::nullopt;
    return status;
}

void ProcessHandle::Release() noexcept {
    if (m_fd < 0) return;
    const int fd = std::exchange(m_fd, -1);
    if (m_child && m_exitStatus.load() < 0) {
        m_fd = fd;
        const bool reaped = Reap(false);
        m_fd = -1;
        if (!reaped) {
            // The child outlives its last handle: a thread waits for it and reaps it.
            try {
                std::thread([fd] {
                    siginfo_t info{};
                    while (::waitid(kIdPidfd, static_cast<id_t>(fd), &info, WEXITED) != 0 &&
                           errno == EINTR) {
                    }
                    ::close(fd);
                }).detach();
                m_child = false;
                return;
            } catch (...) {
                // No thread: the child stays a zombie until this process exits.
            }
        }
    }
    m_child = false;
    ::close(fd);
}

}  // namespace Platform
