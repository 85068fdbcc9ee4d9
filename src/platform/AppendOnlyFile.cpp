#include "platform/AppendOnlyFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/SystemMessages.h"

namespace Platform {

AppendOnlyFile::~AppendOnlyFile() {
    Close();
}

uint32_t AppendOnlyFile::Open(const std::string& path) {
    Close();
    if (path.empty() || path.find('\0') != std::string::npos) return 87;
    int fd;
    do fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    while (fd < 0 && errno == EINTR);
    if (fd < 0) return LastWin32Error();
    m_fd = fd;
    return 0;
}

void AppendOnlyFile::Close() {
    if (m_fd >= 0) ::close(m_fd);
    m_fd = -1;
}

uint32_t AppendOnlyFile::Append(std::string_view data) const {
    if (m_fd < 0) return 6;
    // A regular file takes the whole buffer in one write; the loop only covers a short
    // write on a full disk or a signal, where the rest follows at once.
    while (!data.empty()) {
        const ssize_t written = ::write(m_fd, data.data(), data.size());
        if (written < 0) {
            if (errno == EINTR) continue;
            return LastWin32Error();
        }
        if (written == 0) return 112;  // ERROR_DISK_FULL
        data.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

}  // namespace Platform
