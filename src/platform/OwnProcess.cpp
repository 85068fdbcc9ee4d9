#include "platform/OwnProcess.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

namespace Platform {
namespace {

// The kernel checks the source address of a pipe write and answers EFAULT instead of
// raising a signal; used where process_vm_readv is not permitted (seccomp, old kernels).
bool ReadThroughPipe(const void* address, void* buffer, std::size_t size) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return false;
    bool ok = true;
    auto* out = static_cast<char*>(buffer);
    const auto* in = static_cast<const char*>(address);
    std::size_t done = 0;
    // A pipe holds at least one page, so small chunks never block the writer.
    constexpr std::size_t kChunk = 512;
    while (ok && done < size) {
        const std::size_t chunk = size - done < kChunk ? size - done : kChunk;
        ssize_t written;
        do written = ::write(fds[1], in + done, chunk);
        while (written < 0 && errno == EINTR);
        if (written <= 0) {
            ok = false;
            break;
        }
        std::size_t got = 0;
        while (got < std::size_t(written)) {
            const ssize_t n = ::read(fds[0], out + done + got, std::size_t(written) - got);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) {
                ok = false;
                break;
            }
            got += std::size_t(n);
        }
        done += got;
    }
    ::close(fds[0]);
    ::close(fds[1]);
    return ok;
}

}  // namespace

uint32_t CurrentProcessId() {
    return static_cast<uint32_t>(::getpid());
}

bool ReadOwnMemory(const void* address, void* buffer, std::size_t size) {
    if (size == 0) return true;
    if (address == nullptr || buffer == nullptr) return false;
    iovec local{buffer, size};
    iovec remote{const_cast<void*>(address), size};
    const ssize_t n = ::process_vm_readv(::getpid(), &local, 1, &remote, 1, 0);
    if (n == static_cast<ssize_t>(size)) return true;
    if (n >= 0 || errno == EFAULT) return false;
    return ReadThroughPipe(address, buffer, size);
}

}  // namespace Platform
