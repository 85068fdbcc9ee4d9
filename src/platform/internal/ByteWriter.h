// Little-endian output for the resource formats we write (.res images, version blocks): the
// counterpart of ByteReader.h.
#pragma once

#include <cstdint>
#include <vector>

namespace Platform::internal {

inline void PutU16(std::vector<uint8_t>& out, uint16_t value) {
    out.push_back(static_cast<uint8_t>(value));
    out.push_back(static_cast<uint8_t>(value >> 8));
}

inline void PutU32(std::vector<uint8_t>& out, uint32_t value) {
    PutU16(out, static_cast<uint16_t>(value));
    PutU16(out, static_cast<uint16_t>(value >> 16));
}

// Entries of both formats start on 32-bit boundaries.
inline void PadTo4(std::vector<uint8_t>& out) {
    while (out.size() % 4 != 0) out.push_back(0);
}

}  // namespace Platform::internal
