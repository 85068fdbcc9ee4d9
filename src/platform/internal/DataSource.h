// Random access to the bytes of a file or of a memory block, for the container parsers:
// they read headers and sections piecemeal, so that finding the resources of a large
// executable does not read all of it.
//
// Thread safety: a source is used by one loader at a time.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Platform::internal {

class DataSource {
public:
    virtual ~DataSource() = default;
    virtual uint64_t Size() const = 0;
    // Exactly `count` bytes at `offset` into `out`. Returns 0, InvalidData when the range
    // does not lie inside the source, or the Win32 error of a failed read.
    virtual uint32_t Read(uint64_t offset, uint64_t count, std::vector<uint8_t>& out) const = 0;

protected:
    bool InRange(uint64_t offset, uint64_t count) const {
        return offset <= Size() && count <= Size() - offset;
    }
};

class MemorySource final : public DataSource {
public:
    explicit MemorySource(std::span<const uint8_t> bytes) : m_bytes(bytes) {}
    uint64_t Size() const override { return m_bytes.size(); }
    uint32_t Read(uint64_t offset, uint64_t count, std::vector<uint8_t>& out) const override;

private:
    std::span<const uint8_t> m_bytes;
};

// An open file descriptor (not owned); the size is taken once, at construction.
class FileSource final : public DataSource {
public:
    FileSource(int fd, uint64_t size) : m_fd(fd), m_size(size) {}
    uint64_t Size() const override { return m_size; }
    uint32_t Read(uint64_t offset, uint64_t count, std::vector<uint8_t>& out) const override;

private:
    int m_fd;
    uint64_t m_size;
};

}  // namespace Platform::internal
