// Synchronization::RWLock: a reader/writer lock whose implementation is chosen at run
// time. When the slim-lock functions are found (a look-up done once during static
// initialisation), readers share the lock; otherwise an exclusive lock stands in and
// readers exclude each other. Missing functions are not an error.
//
// Thread safety: all operations from any thread. A thread must not take a lock it already
// holds, in either mode.
#pragma once

#include <array>
#include <memory>

#include "foundation/ErrorCode.h"

namespace Synchronization {

struct IRWLockImpl {
    virtual ~IRWLockImpl() = default;
    virtual void LockShared() = 0;
    virtual void UnlockShared() = 0;
    virtual void LockExclusive() = 0;
    virtual void UnlockExclusive() = 0;
};

namespace Impl {

// The process-wide record of the run-time look-up.
struct FunctionTable {
    static constexpr std::array<const char*, 5> kNames = {
        "InitializeSRWLock", "AcquireSRWLockExclusive", "AcquireSRWLockShared",
        "ReleaseSRWLockExclusive", "ReleaseSRWLockShared"};

    ErrorCode loadResult;
    void* module = nullptr;
    bool keepLoaded = true;
    std::array<void*, 5> functions{};

    bool IsComplete() const;
};

// Looks the five functions up; `names` lets a test ask for a name that does not exist.
FunctionTable LoadFunctionTable(const std::array<const char*, 5>& names = FunctionTable::kNames);

// The table filled during static initialisation.
const FunctionTable& GetFunctionTable();

// Test seam: makes new RWLocks use the exclusive fallback (true) or the normal choice.
void ForceExclusiveFallback(bool force);

// Shared readers; throws std::exception ("Unsupported") when the table is incomplete.
class SRWLockImpl : public IRWLockImpl {
public:
    SRWLockImpl();
    ~SRWLockImpl() override;
    void LockShared() override;
    void UnlockShared() override;
    void LockExclusive() override;
    void UnlockExclusive() override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

// One exclusive lock for both modes.
class CSLockImpl : public IRWLockImpl {
public:
    CSLockImpl();
    ~CSLockImpl() override;
    void LockShared() override;
    void UnlockShared() override;
    void LockExclusive() override;
    void UnlockExclusive() override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace Impl

class RWLock {
public:
    // Creates its own implementation: shared when the look-up succeeded, else exclusive.
    RWLock();
    // Uses `impl`, which it does not own and which must outlive it.
    explicit RWLock(IRWLockImpl* impl);
    RWLock(const RWLock&) = delete;
    RWLock& operator=(const RWLock&) = delete;
    ~RWLock();

    void LockShared() { m_impl->LockShared(); }
    void UnlockShared() { m_impl->UnlockShared(); }
    void LockExclusive() { m_impl->LockExclusive(); }
    void UnlockExclusive() { m_impl->UnlockExclusive(); }

    // True when readers share this lock (the slim implementation is in use).
    bool SharesReaders() const;

private:
    std::unique_ptr<IRWLockImpl> m_owned;
    IRWLockImpl* m_impl;
};

// Scoped holders.
class SharedLock {
public:
    explicit SharedLock(RWLock& lock) : m_lock(lock) { m_lock.LockShared(); }
    ~SharedLock() { m_lock.UnlockShared(); }
    SharedLock(const SharedLock&) = delete;
    SharedLock& operator=(const SharedLock&) = delete;

private:
    RWLock& m_lock;
};

class ExclusiveLock {
public:
    explicit ExclusiveLock(RWLock& lock) : m_lock(lock) { m_lock.LockExclusive(); }
    ~ExclusiveLock() { m_lock.UnlockExclusive(); }
    ExclusiveLock(const ExclusiveLock&) = delete;
    ExclusiveLock& operator=(const ExclusiveLock&) = delete;

private:
    RWLock& m_lock;
};

}  // namespace Synchronization
