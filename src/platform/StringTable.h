// String tables: string id `id` lives in block (id >> 4) + 1 of type RT_STRING, as entry
// id & 15 of the sixteen length-prefixed UTF-16 texts that make up the block.
//
// Thread safety: pure functions over immutable images, any thread.
#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/ResourceImage.h"

namespace Platform {

class StringTable {
public:
    static constexpr uint16_t BlockOf(uint16_t id) { return static_cast<uint16_t>((id >> 4) + 1); }
    static constexpr unsigned EntryOf(uint16_t id) { return id & 15u; }

    // Entry `index` (0..15) of a block. False when the block ends before the entry is
    // complete; an entry of length 0 gives true and an empty text.
    static bool ReadEntry(std::span<const uint8_t> block, unsigned index, std::u16string& out);

    // String `id` of the image in `language` (with the usual language fall-back). True
    // only for an entry of non-zero length; otherwise `out` is empty.
    static bool Load(const ResourceImage& image, uint16_t id, uint16_t language,
                     std::u16string& out);
};

}  // namespace Platform
