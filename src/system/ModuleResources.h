// Strings and raw data from the resources of a module. A module is named by its file path
// (a .res image, an ELF file with a ".rsrc" section, or a PE file); the empty path stands
// for the running executable, whose resources are read once and kept for the process.
//
// Nothing here throws for a missing or unreadable module or resource: the results are
// "", false or an empty record. Thread safety: any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/ResourceImage.h"

namespace System {

// The resources of a module, or null when the file cannot be read or holds none (then
// *error, if given, receives the Win32 error number). The running executable's are cached.
std::shared_ptr<const Platform::ResourceImage> GetModuleResources(const std::wstring& modulePath,
                                                                  uint32_t* error = nullptr);

// String `id` of the module's string tables: block (id >> 4) + 1 of type RT_STRING in
// `language` (with the fall-back to the primary language, neutral, then any), entry
// id & 15. *found (if given) is set when that entry has a non-zero length. A missing
// module, block or entry gives "" and not found.
std::wstring LoadStringResource(uint32_t id, const std::wstring& modulePath = {},
                                uint16_t language = Platform::LANG_NEUTRAL, bool* found = nullptr);

// A resource found in a module; `data` stays valid as long as `image` is held.
struct ModuleResource {
    std::shared_ptr<const Platform::ResourceImage> image;
    const Platform::ResourceEntry* entry = nullptr;
    std::span<const uint8_t> data;

    explicit operator bool() const { return entry != nullptr; }
};

// The resource `name` of `type` (numbers, or texts such as "BINARY"), in the neutral
// language unless one is given. An empty record when the module or resource is missing.
ModuleResource FindModuleResource(const std::wstring& modulePath,
                                  const Platform::ResourceName& name,
                                  const Platform::ResourceName& type,
                                  uint16_t language = Platform::LANG_NEUTRAL);

// The bytes of that resource, copied into `data` (emptied first). False when missing.
bool LoadModuleResource(const std::wstring& modulePath, const Platform::ResourceName& name,
                        const Platform::ResourceName& type, std::vector<uint8_t>& data,
                        uint16_t language = Platform::LANG_NEUTRAL);

}  // namespace System
