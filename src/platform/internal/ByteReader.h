// Bounds-checked reading of little- and big-endian integers from a byte span. Every read
// says whether it fitted; nothing here reads outside the span, whatever the offsets are.
//
// Thread safety: a reader is a view; any number of threads may read one span.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace Platform::internal {

class ByteReader {
public:
    explicit ByteReader(std::span<const uint8_t> bytes, bool bigEndian = false)
        : m_bytes(bytes), m_bigEndian(bigEndian) {}

    std::size_t Size() const { return m_bytes.size(); }
    std::span<const uint8_t> Bytes() const { return m_bytes; }

    // True when [offset, offset + count) lies inside the span (no overflow possible).
    bool Has(uint64_t offset, uint64_t count) const {
        return offset <= m_bytes.size() && count <= m_bytes.size() - offset;
    }

    bool U8(uint64_t offset, uint8_t& out) const { return Read(offset, 1, out); }
    bool U16(uint64_t offset, uint16_t& out) const { return Read(offset, 2, out); }
    bool U32(uint64_t offset, uint32_t& out) const { return Read(offset, 4, out); }
    bool U64(uint64_t offset, uint64_t& out) const { return Read(offset, 8, out); }

    // The sub-span [offset, offset + count), or false when it does not lie inside.
    bool Slice(uint64_t offset, uint64_t count, std::span<const uint8_t>& out) const {
        if (!Has(offset, count)) return false;
        out = m_bytes.subspan(static_cast<std::size_t>(offset), static_cast<std::size_t>(count));
        return true;
    }

    // A NUL-terminated UTF-16LE text starting at offset; `next` receives the offset after
    // the terminator. False when no terminator comes before the end of the span.
    bool Utf16z(uint64_t offset, std::u16string& out, uint64_t& next) const {
        out.clear();
        for (uint64_t at = offset;; at += 2) {
            uint16_t ch = 0;
            if (!U16(at, ch)) return false;
            if (ch == 0) {
                next = at + 2;
                return true;
            }
            out.push_back(static_cast<char16_t>(ch));
        }
    }

private:
    template <class T>
    bool Read(uint64_t offset, unsigned width, T& out) const {
        if (!Has(offset, width)) return false;
        uint64_t value = 0;
        const uint8_t* p = m_bytes.data() + offset;
        for (unsigned i = 0; i < width; ++i) {
            const unsigned shift = m_bigEndian ? 8 * (width - 1 - i) : 8 * i;
            value |= static_cast<uint64_t>(p[i]) << shift;
        }
        out = static_cast<T>(value);
        return true;
    }

    std::span<const uint8_t> m_bytes;
    bool m_bigEndian;
};

constexpr uint64_t AlignUp4(uint64_t value) {
    return (value + 3) & ~uint64_t{3};
}

}  // namespace Platform::internal
