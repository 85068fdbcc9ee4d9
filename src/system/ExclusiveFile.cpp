#include "system/ExclusiveFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "foundation/TextConversion.h"
#include "platform/SystemMessages.h"

namespace System {
namespace {

constexpr uint32_t kErrorAccessDenied = 5;
constexpr uint32_t kErrorInvalidHandle = 6;
constexpr uint32_t kErrorCantResolveFilename = 1921;

ErrorCode LastError() {
    return ErrorCode::FromWin32(Platform::LastWin32Error());
}

}  // namespace

ExclusiveFile::ExclusiveFile(ExclusiveFile&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)) {}

ExclusiveFile& ExclusiveFile::operator=(ExclusiveFile&& other) noexcept {
    if (this != &other) {
        Close();
        m_fd = std::exchange(other.m_fd, -1);
    }
    return *this;
}

ExclusiveFile::~ExclusiveFile() {
    Close();
}

ErrorCode ExclusiveFile::Create(const std::wstring& path) {
    Close();
    const std::string narrow = STLHelpers::WideToUtf8(path);
    if (narrow.empty() || narrow.find('\0') != std::string::npos) return ErrorCode::FromWin32(87);
    // O_NONBLOCK only for the open itself: a FIFO without a reader then fails at once
    // instead of blocking; a regular file is unaffected and the flag is cleared below.
    const int fd = ::open(narrow.c_str(),
                          O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK, 0700);
    if (fd < 0) {
        if (errno == ELOOP) return ErrorCode::FromWin32(kErrorCantResolveFilename);
        return LastError();
    }
    struct stat info {};
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return ErrorCode::FromWin32(kErrorAccessDenied);
    }
    // An existing file keeps its old mode through O_TRUNC; the setup must be executable.
    if ((info.st_mode & 07777) != 0700 && ::fchmod(fd, 0700) != 0) {
        const ErrorCode code = LastError();
        ::close(fd);
        return code;
    }
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags >= 0) ::fcntl(fd, F_SETFL, flags & ~O_NONBLOCK);
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return ErrorCode::FromWin32(32);  // in use by another process
    }
    m_fd = fd;
    return ErrorCode(S_OK);
}

ErrorCode ExclusiveFile::Write(const void* data, std::size_t size, std::size_t* written) {
    std::size_t done = 0;
    ErrorCode result(S_OK);
    if (m_fd < 0) {
        result = ErrorCode::FromWin32(kErrorInvalidHandle);
    } else {
        const auto* bytes = static_cast<const char*>(data);
        while (done < size) {
            const ssize_t n = ::write(m_fd, bytes + done, size - done);
            if (n < 0) {
                if (errno == EINTR) continue;
                result = LastError();
                break;
            }
            done += static_cast<std::size_t>(n);
        }
    }
    if (written) *written = done;
    return result;
}

void ExclusiveFile::Close() {
    if (m_fd >= 0) ::close(std::exchange(m_fd, -1));
}

}  // namespace System
