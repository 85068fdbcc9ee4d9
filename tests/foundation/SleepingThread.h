// A thread whose blocking a test can see: the kernel shows a thread that waits in a lock, a
// condition or a semaphore as asleep, so a test needs no guess of how long that takes.
#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <fstream>
#include <string>
#include <thread>

namespace TestSupport {

class SleepingThread {
public:
    template <class Work>
    explicit SleepingThread(Work work)
        : m_thread([this, work] {
              m_tid = ::gettid();
              work();
              m_done = true;
          }) {}
    ~SleepingThread() { m_thread.join(); }

    // True once the thread is seen asleep before `work` returned; false when it returned
    // first, or after a minute.
    bool Blocked() const {
        const auto limit = std::chrono::steady_clock::now() + std::chrono::minutes(1);
        while (!m_done && std::chrono::steady_clock::now() < limit) {
            std::string stat;
            std::getline(std::ifstream("/proc/self/task/" + std::to_string(m_tid) + "/stat"), stat);
            // The state follows the name in parentheses; `m_done` is read again since the
            // thread may have slept after its work (in its own ending).
            const auto name = stat.rfind(')');
            if (name != std::string::npos && stat.compare(name, 3, ") S") == 0 && !m_done)
                return true;
            std::this_thread::yield();
        }
        return false;
    }

private:
    std::atomic<pid_t> m_tid{0};
    std::atomic<bool> m_done{false};
    std::thread m_thread;
};

}  // namespace TestSupport
