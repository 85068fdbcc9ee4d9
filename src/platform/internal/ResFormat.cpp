#include <algorithm>

#include "platform/internal/ByteReader.h"
#include "platform/internal/ContainerFormats.h"

namespace Platform::internal {
namespace {

// A type or name field of a .res header: 0xFFFF and a number, or a NUL-terminated text.
bool ReadNameField(const ByteReader& header, uint64_t& at, ResourceName& out) {
    uint16_t first = 0;
    if (!header.U16(at, first)) return false;
    if (first == 0xFFFF) {
        uint16_t number = 0;
        if (!header.U16(at + 2, number)) return false;
        out = ResourceName(number);
        at += 4;
        return true;
    }
    std::u16string text;
    if (!header.Utf16z(at, text, at)) return false;
    out = ResourceName(std::move(text));
    return true;
}

}  // namespace

uint32_t ParseResImage(ResourceImage& image, uint32_t buffer) {
    const std::vector<uint8_t>& bytes = image.Buffer(buffer);
    const ByteReader reader(bytes);
    uint64_t offset = 0;
    while (offset < bytes.size()) {
        // A linker may pad the section that carries the image: trailing zeros end it.
        if (bytes.size() - offset < 32 &&
            std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(offset), bytes.end(),
                        [](uint8_t b) { return b == 0; }))
            break;
        uint32_t dataSize = 0, headerSize = 0;
        if (!reader.U32(offset, dataSize) || !reader.U32(offset + 4, headerSize))
            return ResourceErrors::InvalidData;
        std::span<const uint8_t> headerBytes;
        if (headerSize < 8 || !reader.Slice(offset, headerSize, headerBytes))
            return ResourceErrors::InvalidData;
        const ByteReader header(headerBytes);
        uint64_t at = 8;
        ResourceEntry entry;
        if (!ReadNameField(header, at, entry.type) || !ReadNameField(header, at, entry.name))
            return ResourceErrors::InvalidData;
        at = AlignUp4(at);
        // DataVersion (4), MemoryFlags (2), LanguageId (2), Version (4), Characteristics (4).
        if (!header.U16(at + 6, entry.language) || !header.Has(at, 16))
            return ResourceErrors::InvalidData;
        const uint64_t dataOffset = offset + headerSize;
        if (!reader.Has(dataOffset, dataSize)) return ResourceErrors::InvalidData;
        if (!(entry.type.IsNumber() && entry.type.Number() == 0)) {
            if (image.EntryCount() >= kMaxResourceEntries) return ResourceErrors::InvalidData;
            entry.buffer = buffer;
            entry.offset = static_cast<std::size_t>(dataOffset);
            entry.size = dataSize;
            image.AddEntry(std::move(entry));
        }
        offset = AlignUp4(dataOffset + dataSize);
    }
    return 0;
}

}  // namespace Platform::internal
