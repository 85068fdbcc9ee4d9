// System::ProcessInfo: a copyable record of one process: its identifier, a shared handle
// (closed with its last copy; for a process we started it also reaps it) and, for records
// from enumeration, what the process snapshot reported.
//
// Thread safety: the identifier is read and written atomically, so copies and the record
// itself may be read from several threads; Open and Terminate replace the handle of the
// record they are called on and must not run on one record from two threads at once.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace Platform {
class ProcessHandle;
}

namespace System {

// Waits without a time limit.
inline constexpr uint32_t kInfinite = 0xFFFFFFFFu;
// All access rights; rights are not enforced on Linux beyond what the kernel allows.
inline constexpr uint32_t kProcessAllAccess = 0x1F0FFFu;

// What the process snapshot reported for a process.
struct ProcessSnapshot {
    uint32_t threadCount = 0;
    int32_t basePriority = 0;
    uint32_t parentId = 0;
    std::wstring exeFile;  // the executable's file name, as the snapshot gives it
};

class ProcessInfo {
public:
    ProcessInfo() = default;
    ProcessInfo(uint32_t id, std::shared_ptr<Platform::ProcessHandle> handle,
                std::shared_ptr<const ProcessSnapshot> info = nullptr);
    ProcessInfo(const ProcessInfo& other);
    ProcessInfo& operator=(const ProcessInfo& other);
    ~ProcessInfo();

    // The identifier; when unknown and a handle is held, the one the handle reports (kept).
    // 0 when unknown.
    uint32_t GetId() const;

    bool HasHandle() const;

    // Opens a handle on the process named by the identifier, replacing the one held (a
    // failed open leaves none). Without an identifier, the check "((!!m_id))" fails at
    // level GuardedError and the result is false. `access` is accepted for form.
    bool Open(uint32_t access);

    // Ends the process, opening it first (all access) when no handle is held. The process
    // is killed with SIGKILL: `exitCode` cannot be given to it on Linux. True when the
    // signal was delivered.
    bool Terminate(uint32_t exitCode);

    // Waits for the process to end: true only when it has ended within `timeoutMs`
    // (kInfinite: no limit); false on time-out, without a handle, or on failure.
    bool Wait(uint32_t timeoutMs);

    // The snapshot's executable name; without a snapshot, the check "((m_pInfo))" fails at
    // level GuardedError and the result is "".
    std::wstring GetExeName() const;

    // The snapshot record, or null for records not made by enumeration.
    const ProcessSnapshot* GetSnapshot() const { return m_pInfo.get(); }

    // The shared handle (null when none is held).
    const std::shared_ptr<Platform::ProcessHandle>& GetHandle() const { return m_handle; }

private:
    mutable std::atomic<uint32_t> m_id{0};
    std::shared_ptr<Platform::ProcessHandle> m_handle;
    std::shared_ptr<const ProcessSnapshot> m_pInfo;
};

}  // namespace System
