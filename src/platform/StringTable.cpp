#include "platform/StringTable.h"

#include "platform/internal/ByteReader.h"

namespace Platform {

bool StringTable::ReadEntry(std::span<const uint8_t> block, unsigned index, std::u16string& out) {
    out.clear();
    if (index > 15) return false;
    const internal::ByteReader reader(block);
    uint64_t at = 0;
    for (unsigned i = 0;; ++i) {
        uint16_t length = 0;
        if (!reader.U16(at, length) || !reader.Has(at + 2, uint64_t{length} * 2)) return false;
        if (i == index) {
            out.resize(length);
            for (uint16_t k = 0; k < length; ++k)
                out[k] =
                    static_cast<char16_t>(block[at + 2 + 2 * k] | (block[at + 3 + 2 * k] << 8));
            return true;
        }
        at += 2 + uint64_t{length} * 2;
    }
}

bool StringTable::Load(const ResourceImage& image, uint16_t id, uint16_t language,
                       std::u16string& out) {
    out.clear();
    const std::span<const uint8_t> block = image.FindData(RT_STRING, BlockOf(id), language);
    if (block.empty() || !ReadEntry(block, EntryOf(id), out)) {
        out.clear();
        return false;
    }
    return !out.empty();
}

}  // namespace Platform
