// An open file descriptor that is closed when the holder goes out of scope.
//
// Thread safety: one holder belongs to one thread.
#pragma once

#include <unistd.h>

namespace Platform::internal {

class FileDescriptor {
public:
    // Takes `fd` over; a negative value holds nothing.
    explicit FileDescriptor(int fd) : m_fd(fd) {}
    ~FileDescriptor() {
        if (m_fd >= 0) ::close(m_fd);
    }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    int Get() const { return m_fd; }

private:
    int m_fd;
};

}  // namespace Platform::internal
