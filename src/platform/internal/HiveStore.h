// The process-wide cache of parsed hives, shared by the value look-ups and the key handles.
#pragma once

#include <memory>

#include "platform/RegFileParser.h"
#include "platform/RegistryHive.h"

namespace Platform::internal {

// The current hive of `root`: the cached one while its file is unchanged, else the file
// parsed again. A missing or unreadable file gives an empty hive. Never null.
// Thread safety: any thread.
std::shared_ptr<const RegHive> LoadHive(RegRoot root);

}  // namespace Platform::internal
