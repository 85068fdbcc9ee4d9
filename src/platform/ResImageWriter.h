// Writing resources as a .res image, the form a resource compiler produces and our binaries
// carry in their ".rsrc" section. The image starts with the empty entry that compilers put
// first, so that it may follow other images in a section.
//
// Thread safety: pure functions, any thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/ResourceImage.h"

namespace Platform {

struct ResourceToWrite {
    ResourceName type;
    ResourceName name;
    uint16_t language = 0;
    std::vector<uint8_t> data;
};

// The image holding `resources` in the given order. Never fails.
std::vector<uint8_t> WriteResImage(std::span<const ResourceToWrite> resources);

}  // namespace Platform
