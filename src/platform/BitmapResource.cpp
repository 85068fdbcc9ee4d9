#include "platform/BitmapResource.h"

#include "platform/ResourceImage.h"
#include "platform/internal/ByteReader.h"

namespace Platform {

uint32_t BitmapResource::MakeBmpFile(std::span<const uint8_t> dib, std::vector<uint8_t>& bmpFile) {
    bmpFile.clear();
    const internal::ByteReader reader(dib);
    uint32_t headerSize = 0, compression = 0, colorsUsed = 0;
    uint16_t bitCount = 0;
    if (!reader.U32(0, headerSize)) return ResourceErrors::InvalidData;
    uint64_t colorTable = 0;
    if (headerSize == 12) {  // BITMAPCOREHEADER: three-byte colour entries
        if (!reader.U16(10, bitCount)) return ResourceErrors::InvalidData;
        colorTable = bitCount <= 8 ? (uint64_t{1} << bitCount) * 3 : 0;
    } else {
        if (headerSize < 40 || !reader.U16(14, bitCount) || !reader.U32(16, compression) ||
            !reader.U32(32, colorsUsed))
            return ResourceErrors::InvalidData;
        if (colorsUsed != 0)
            colorTable = uint64_t{colorsUsed} * 4;
        else if (bitCount <= 8)
            colorTable = (uint64_t{1} << bitCount) * 4;
        // BI_BITFIELDS in a plain info header: three masks follow it.
        if (compression == 3 && headerSize == 40) colorTable += 12;
    }
    const uint64_t pixels = uint64_t{headerSize} + colorTable;
    if (pixels > dib.size()) return ResourceErrors::InvalidData;
    const uint64_t fileSize = 14 + uint64_t{dib.size()};
    if (fileSize > 0xFFFFFFFFu) return ResourceErrors::InvalidData;
    const auto put32 = [&](uint64_t v) {
        for (int i = 0; i < 4; ++i) bmpFile.push_back(static_cast<uint8_t>(v >> (8 * i)));
    };
    bmpFile.reserve(static_cast<std::size_t>(fileSize));
    bmpFile.push_back('B');
    bmpFile.push_back('M');
    put32(fileSize);
    put32(0);
    put32(14 + pixels);
    bmpFile.insert(bmpFile.end(), dib.begin(), dib.end());
    return 0;
}

}  // namespace Platform
