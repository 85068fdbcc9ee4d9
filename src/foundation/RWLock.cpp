#include "foundation/RWLock.h"

#include <atomic>
#include <cstring>
#include <mutex>
#include <shared_mutex>
#include <stdexcept>

#include "platform/SharedLibrary.h"

namespace Synchronization {
namespace Impl {
namespace {

// The Windows names of the slim-lock functions and the C library functions that stand in
// for them. The look-up keeps its Windows names so that a test can make one of them fail.
const char* LinuxName(const char* windowsName) {
    static constexpr std::pair<const char*, const char*> kMap[] = {
        {"InitializeSRWLock", "pthread_rwlock_init"},
        {"AcquireSRWLockExclusive", "pthread_rwlock_wrlock"},
        {"AcquireSRWLockShared", "pthread_rwlock_rdlock"},
        {"ReleaseSRWLockExclusive", "pthread_rwlock_unlock"},
        {"ReleaseSRWLockShared", "pthread_rwlock_unlock"},
    };
    for (const auto& [windows, linux] : kMap)
        if (std::strcmp(windows, windowsName) == 0) return linux;
    return windowsName;
}

// Filled during static initialisation, before any second thread exists.
const FunctionTable functionTable = LoadFunctionTable();
std::atomic<bool> forceFallback{false};

}  // namespace

bool FunctionTable::IsComplete() const {
    if (module == nullptr) return false;
    for (void* f : functions)
        if (f == nullptr) return false;
    return true;
}

FunctionTable LoadFunctionTable(const std::array<const char*, 5>& names) {
    FunctionTable table;
    uint32_t error = 0;
    table.module = Platform::LoadSharedLibrary("libc.so.6", &error);
    table.loadResult = ErrorCode::FromWin32(error);
    if (table.module != nullptr)
        for (std::size_t i = 0; i < names.size(); ++i)
            table.functions[i] =
                Platform::FindSharedLibraryFunction(table.module, LinuxName(names[i]));
    // An incomplete table is not reported: every lock then takes the exclusive fallback.
    return table;
}

const FunctionTable& GetFunctionTable() {
    return functionTable;
}

void ForceExclusiveFallback(bool force) {
    forceFallback.store(force);
}

// The slim lock itself is std::shared_mutex; the table only tells whether the platform
// offers shared locking at all.
struct SRWLockImpl::State {
    std::shared_mutex mutex;
};

SRWLockImpl::SRWLockImpl() {
    if (!GetFunctionTable().IsComplete()) throw std::runtime_error("Unsupported");
    m_state = std::make_unique<State>();
}
SRWLockImpl::~SRWLockImpl() = default;
void SRWLockImpl::LockShared() {
    m_state->mutex.lock_shared();
}
void SRWLockImpl::UnlockShared() {
    m_state->mutex.unlock_shared();
}
void SRWLockImpl::LockExclusive() {
    m_state->mutex.lock();
}
void SRWLockImpl::UnlockExclusive() {
    m_state->mutex.unlock();
}

struct CSLockImpl::State {
    std::mutex mutex;
};

CSLockImpl::CSLockImpl() : m_state(std::make_unique<State>()) {}
CSLockImpl::~CSLockImpl() = default;
void CSLockImpl::LockShared() {
    m_state->mutex.lock();
}
void CSLockImpl::UnlockShared() {
    m_state->mutex.unlock();
}
void CSLockImpl::LockExclusive() {
    m_state->mutex.lock();
}
void CSLockImpl::UnlockExclusive() {
    m_state->mutex.unlock();
}

}  // namespace Impl

RWLock::RWLock() {
    if (Impl::GetFunctionTable().IsComplete() && !Impl::forceFallback.load())
        m_owned = std::make_unique<Impl::SRWLockImpl>();
    else
        m_owned = std::make_unique<Impl::CSLockImpl>();
    m_impl = m_owned.get();
}

RWLock::RWLock(IRWLockImpl* impl) : m_impl(impl) {}

RWLock::~RWLock() = default;

bool RWLock::SharesReaders() const {
    return dynamic_cast<Impl::SRWLockImpl*>(m_impl) != nullptr;
}

}  // namespace Synchronization
