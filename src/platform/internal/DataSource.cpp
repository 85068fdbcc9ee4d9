#include "platform/internal/DataSource.h"

#include <unistd.h>

#include <cerrno>
#include <new>

#include "platform/ResourceImage.h"
#include "platform/SystemMessages.h"

namespace Platform::internal {

uint32_t MemorySource::Read(uint64_t offset, uint64_t count, std::vector<uint8_t>& out) const {
    if (!InRange(offset, count)) return ResourceErrors::InvalidData;
    const auto* begin = m_bytes.data() + offset;
    out.assign(begin, begin + count);
    return 0;
}

uint32_t FileSource::Read(uint64_t offset, uint64_t count, std::vector<uint8_t>& out) const {
    if (!InRange(offset, count)) return ResourceErrors::InvalidData;
    try {
        out.resize(static_cast<std::size_t>(count));
    } catch (const std::bad_alloc&) {
        return 8;  // ERROR_NOT_ENOUGH_MEMORY
    }
    uint64_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(m_fd, out.data() + done, static_cast<std::size_t>(count - done),
                                    static_cast<off_t>(offset + done));
        if (got < 0) {
            if (errno == EINTR) continue;
            const uint32_t error = LastWin32Error();
            out.clear();
            return error;
        }
        if (got == 0) {  // the file shrank under us
            out.clear();
            return ResourceErrors::InvalidData;
        }
        done += static_cast<uint64_t>(got);
    }
    return 0;
}

}  // namespace Platform::internal
