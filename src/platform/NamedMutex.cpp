#include "platform/NamedMutex.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "lumetta/product.h"
#include "platform/Environment.h"
#include "platform/SystemMessages.h"

namespace Platform {
namespace {

std::string RuntimeDir() {
    return GetEnvironment("XDG_RUNTIME_DIR").value_or(std::string());
}

uint32_t LockFilePath(const std::string& name, std::string& path) {
    char buffer[LUMETTA_PATH_MAX];
    const int error =
        lumetta_lock_file_path(RuntimeDir().c_str(), name.c_str(), buffer, sizeof buffer);
    if (error != 0) return Win32ErrorFromErrno(error);
    path = buffer;
    return 0;
}

// An embedded NUL would silently cut the name and make two names one object.
bool IsValidName(const std::string& name) {
    return name.find('\0') == std::string::npos;
}

}  // namespace

uint32_t NamedObjectFolder(std::string& folder) {
    char buffer[LUMETTA_PATH_MAX];
    int error = lumetta_object_folder(RuntimeDir().c_str(), buffer, sizeof buffer);
    if (error == 0) error = lumetta_prepare_object_folder(buffer);
    if (error != 0) return Win32ErrorFromErrno(error);
    folder = buffer;
    return 0;
}

NamedMutex::~NamedMutex() {
    Close();
}

NamedMutex::NamedMutex(NamedMutex&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}

NamedMutex& NamedMutex::operator=(NamedMutex&& other) noexcept {
    if (this != &other) {
        Close();
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

uint32_t NamedMutex::Create(const std::string& name) {
    Close();
    if (!IsValidName(name)) return 123;  // ERROR_INVALID_NAME
    std::string folder, path;
    if (uint32_t error = NamedObjectFolder(folder); error != 0) return error;
    if (uint32_t error = LockFilePath(name, path); error != 0) return error;
    const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0) return LastWin32Error();
    // Shared: every holder keeps the lock at once; only a prober's exclusive try fails.
    int result;
    do result = ::flock(fd, LOCK_SH);
    while (result != 0 && errno == EINTR);
    if (result != 0) {
        const uint32_t error = LastWin32Error();
        ::close(fd);
        return error;
    }
    m_fd = fd;
    return 0;
}

void NamedMutex::Close() {
    if (m_fd >= 0) ::close(std::exchange(m_fd, -1));
}

bool NamedMutex::IsHeld(const std::string& name, uint32_t* error) {
    uint32_t ignored = 0;
    uint32_t& err = error != nullptr ? *error : ignored;
    err = 0;
    if (!IsValidName(name)) {
        err = 123;
        return false;
    }
    std::string path;
    if ((err = LockFilePath(name, path)) != 0) return false;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    if (fd < 0) {
        if (errno != ENOENT) err = LastWin32Error();
        return false;
    }
    bool held = false;
    if (::flock(fd, LOCK_EX | LOCK_NB) == 0) {
        ::flock(fd, LOCK_UN);
    } else if (errno == EWOULDBLOCK) {
        held = true;
    } else {
        err = LastWin32Error();
    }
    ::close(fd);
    return held;
}

}  // namespace Platform
