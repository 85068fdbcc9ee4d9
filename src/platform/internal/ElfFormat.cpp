// Finding one section of an ELF file (32- or 64-bit, either byte order) by name.
#include <cstring>

#include "platform/internal/ByteReader.h"
#include "platform/internal/ContainerFormats.h"

namespace Platform::internal {
namespace {

constexpr uint32_t kShtNobits = 8;
constexpr uint16_t kShnXindex = 0xFFFF;
constexpr uint64_t kMaxSections = 1u << 20;

struct SectionHeader {
    uint32_t name = 0;
    uint32_t type = 0;
    uint64_t offset = 0;
    uint64_t size = 0;
    uint32_t link = 0;
};

bool ReadSectionHeader(const ByteReader& table, uint64_t at, bool is64, SectionHeader& out) {
    if (is64)
        return table.U32(at, out.name) && table.U32(at + 4, out.type) &&
               table.U64(at + 24, out.offset) && table.U64(at + 32, out.size) &&
               table.U32(at + 40, out.link);
    uint32_t offset = 0, size = 0;
    const bool ok = table.U32(at, out.name) && table.U32(at + 4, out.type) &&
                    table.U32(at + 16, offset) && table.U32(at + 20, size) &&
                    table.U32(at + 24, out.link);
    out.offset = offset;
    out.size = size;
    return ok;
}

}  // namespace

uint32_t ReadElfSection(const DataSource& source, const char* name, std::vector<uint8_t>& out) {
    std::vector<uint8_t> header;
    if (source.Read(0, 52, header) || std::memcmp(header.data(),
                                                  "\x7F"
                                                  "ELF",
                                                  4) != 0)
        return ResourceErrors::BadFormat;
    const uint8_t elfClass = header[4], byteOrder = header[5];
    if ((elfClass != 1 && elfClass != 2) || (byteOrder != 1 && byteOrder != 2))
        return ResourceErrors::BadFormat;
    const bool is64 = elfClass == 2;
    if (is64 && source.Read(0, 64, header)) return ResourceErrors::BadFormat;
    const ByteReader h(header, byteOrder == 2);

    uint64_t tableOffset = 0;
    uint16_t entrySize = 0, count16 = 0, namesIndex16 = 0;
    if (is64) {
        h.U64(0x28, tableOffset);
        h.U16(0x3A, entrySize);
        h.U16(0x3C, count16);
        h.U16(0x3E, namesIndex16);
    } else {
        uint32_t offset32 = 0;
        h.U32(0x20, offset32);
        tableOffset = offset32;
        h.U16(0x2E, entrySize);
        h.U16(0x30, count16);
        h.U16(0x32, namesIndex16);
    }
    if (tableOffset == 0) return ResourceErrors::NoResourceSection;
    if (entrySize < (is64 ? 64 : 40)) return ResourceErrors::InvalidData;

    // With many sections the real count and the names' index live in section 0.
    std::vector<uint8_t> first;
    if (uint32_t error = source.Read(tableOffset, entrySize, first)) return error;
    SectionHeader zero;
    ReadSectionHeader(ByteReader(first, byteOrder == 2), 0, is64, zero);
    const uint64_t count = count16 != 0 ? count16 : zero.size;
    const uint64_t namesIndex = namesIndex16 == kShnXindex ? zero.link : namesIndex16;
    if (count == 0 || count > kMaxSections || namesIndex >= count)
        return ResourceErrors::InvalidData;

    std::vector<uint8_t> tableBytes;
    if (uint32_t error = source.Read(tableOffset, count * entrySize, tableBytes)) return error;
    const ByteReader table(tableBytes, byteOrder == 2);
    SectionHeader names;
    ReadSectionHeader(table, namesIndex * entrySize, is64, names);
    if (names.type == kShtNobits) return ResourceErrors::InvalidData;
    std::vector<uint8_t> nameBytes;
    if (uint32_t error = source.Read(names.offset, names.size, nameBytes)) return error;

    const std::size_t wantedLength = std::strlen(name);
    for (uint64_t i = 1; i < count; ++i) {
        SectionHeader s;
        ReadSectionHeader(table, i * entrySize, is64, s);
        // The name must fit, terminator included, inside the names section.
        if (s.name >= nameBytes.size() || nameBytes.size() - s.name < wantedLength + 1 ||
            std::memcmp(nameBytes.data() + s.name, name, wantedLength + 1) != 0)
            continue;
        if (s.type == kShtNobits) return ResourceErrors::NoResourceSection;
        return source.Read(s.offset, s.size, out);
    }
    return ResourceErrors::NoResourceSection;
}

}  // namespace Platform::internal
