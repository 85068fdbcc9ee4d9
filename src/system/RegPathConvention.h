// The convention of registry paths: "\" between components, "\" alone for the root, no
// prefix. Unlike file paths, an empty registry path may be extended: Append("", "Software")
// gives "Software".
//
// Thread safety: constant after construction; use from any thread.
#pragma once

#include "system/PathConvention.h"

namespace Registry {

class RegPathConvention : public FileSystem::SimplePathConventionImpl<RegPathConvention> {
public:
    RegPathConvention();

    // True for an empty path, which stays empty; otherwise as the generic rules.
    bool SetTrailingSeparator(std::wstring& path, int mode) const override;
};

}  // namespace Registry
