#include "platform/NamedEvent.h"

#include <fcntl.h>
#include <semaphore.h>

#include <cerrno>
#include <utility>

#include "lumetta/product.h"
#include "platform/SystemMessages.h"

namespace Platform {
namespace {

constexpr uint32_t kErrorInvalidHandle = 6;
constexpr uint32_t kErrorInvalidName = 123;

sem_t* AsSemaphore(void* p) {
    return static_cast<sem_t*>(p);
}

uint32_t SemaphoreName(const std::string& name, std::string& out) {
    // An embedded NUL would silently cut the name and make two names one object.
    if (name.find('\0') != std::string::npos) return kErrorInvalidName;
    char buffer[LUMETTA_PATH_MAX];
    const int error = lumetta_semaphore_name(name.c_str(), buffer, sizeof buffer);
    if (error != 0) return Win32ErrorFromErrno(error);
    out = buffer;
    return 0;
}

}  // namespace

NamedEvent::~NamedEvent() {
    Close();
}

NamedEvent::NamedEvent(NamedEvent&& other) noexcept
    : m_semaphore(std::exchange(other.m_semaphore, nullptr)) {}

NamedEvent& NamedEvent::operator=(NamedEvent&& other) noexcept {
    if (this != &other) {
        Close();
        m_semaphore = std::exchange(other.m_semaphore, nullptr);
    }
    return *this;
}

uint32_t NamedEvent::Create(const std::string& name) {
    Close();
    std::string semaphoreName;
    if (uint32_t error = SemaphoreName(name, semaphoreName); error != 0) return error;
    sem_t* semaphore = ::sem_open(semaphoreName.c_str(), O_CREAT, 0600, 0);
    if (semaphore == SEM_FAILED) return LastWin32Error();
    m_semaphore = semaphore;
    return 0;
}

void NamedEvent::Close() {
    if (m_semaphore != nullptr) ::sem_close(AsSemaphore(std::exchange(m_semaphore, nullptr)));
}

uint32_t NamedEvent::Set() {
    if (m_semaphore == nullptr) return kErrorInvalidHandle;
    sem_t* semaphore = AsSemaphore(m_semaphore);
    int value = 0;
    if (::sem_getvalue(semaphore, &value) != 0) return LastWin32Error();
    if (value > 0) return 0;
    // Two setters racing past the check may leave two signals; taking one back could take
    // a waiter's instead, and a lost exit request is worse than a repeated one.
    if (::sem_post(semaphore) != 0) return LastWin32Error();
    return 0;
}

NamedEvent::WaitResult NamedEvent::Wait(int64_t timeoutMs) {
    if (m_semaphore == nullptr) return WaitResult::Failed;
    lumetta_event ev{AsSemaphore(m_semaphore)};
    const long limit = timeoutMs < 0            ? -1L
                       : timeoutMs > 0x7FFFFFFF ? 0x7FFFFFFFL
                                                : static_cast<long>(timeoutMs);
    switch (lumetta_event_wait(&ev, limit)) {
        case 1:
            return WaitResult::Signaled;
        case 0:
            return WaitResult::TimedOut;
        default:
            return WaitResult::Failed;
    }
}

uint32_t NamedEvent::Remove(const std::string& name) {
    std::string semaphoreName;
    if (uint32_t error = SemaphoreName(name, semaphoreName); error != 0) return error;
    if (::sem_unlink(semaphoreName.c_str()) != 0 && errno != ENOENT) return LastWin32Error();
    return 0;
}

}  // namespace Platform
