#include "system/ProcessInfo.h"

#include "foundation/Check.h"
#include "platform/ProcessHandle.h"

namespace System {

ProcessInfo::ProcessInfo(uint32_t id, std::shared_ptr<Platform::ProcessHandle> handle,
                         std::shared_ptr<const ProcessSnapshot> info)
    : m_id(id), m_handle(std::move(handle)), m_pInfo(std::move(info)) {}

ProcessInfo::ProcessInfo(const ProcessInfo& other)
    : m_id(other.m_id.load()), m_handle(other.m_handle), m_pInfo(other.m_pInfo) {}

ProcessInfo& ProcessInfo::operator=(const ProcessInfo& other) {
    if (this != &other) {
        m_id.store(other.m_id.load());
        m_handle = other.m_handle;
        m_pInfo = other.m_pInfo;
    }
    return *this;
}

ProcessInfo::~ProcessInfo() = default;

uint32_t ProcessInfo::GetId() const {
    uint32_t id = m_id.load();
    if (id == 0 && HasHandle()) {
        id = m_handle->Id();
        uint32_t expected = 0;
        m_id.compare_exchange_strong(expected, id);
    }
    return id;
}

bool ProcessInfo::HasHandle() const {
    return m_handle != nullptr && m_handle->IsValid();
}

bool ProcessInfo::Open(uint32_t /*access*/) {
    if (auto code = CHECK_GUARDED(!!m_id); code.Failed()) return code.FailureAs<bool>();
    auto opened = std::make_shared<Platform::ProcessHandle>();
    if (Platform::ProcessHandle::Open(m_id.load(), *opened) != 0) opened.reset();
    if (opened != m_handle) m_handle = std::move(opened);
    return HasHandle();
}

bool ProcessInfo::Terminate(uint32_t /*exitCode*/) {
    if (!HasHandle()) Open(kProcessAllAccess);
    return HasHandle() && m_handle->Kill() == 0;
}

bool ProcessInfo::Wait(uint32_t timeoutMs) {
    if (!HasHandle()) return false;
    const int64_t limit = timeoutMs == kInfinite ? -1 : static_cast<int64_t>(timeoutMs);
    return m_handle->Wait(limit) == Platform::ProcessHandle::WaitResult::Ended;
}

std::wstring ProcessInfo::GetExeName() const {
    if (auto code = CHECK_GUARDED(m_pInfo); code.Failed()) return std::wstring();
    return m_pInfo->exeFile;
}

}  // namespace System
