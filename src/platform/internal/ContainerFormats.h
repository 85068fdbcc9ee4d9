// The three containers of resources. Each parser checks every offset and size it uses
// and returns 0 or a Win32 error number (see ResourceErrors).
#pragma once

#include <cstdint>
#include <vector>

#include "platform/ResourceImage.h"
#include "platform/internal/DataSource.h"

namespace Platform::internal {

// Adds the entries of the .res image held in buffer `buffer` of `image`. Entries of type
// 0 (the empty entry a compiler puts first, also between concatenated images) are skipped.
uint32_t ParseResImage(ResourceImage& image, uint32_t buffer);

// Adds the entries of a PE file's resource directory; `is64` tells PE32+ from PE32.
uint32_t ParsePeResources(const DataSource& source, ResourceImage& image, bool& is64);

// The bytes of the ELF section named `name` (NoResourceSection when there is none).
uint32_t ReadElfSection(const DataSource& source, const char* name, std::vector<uint8_t>& out);

}  // namespace Platform::internal
