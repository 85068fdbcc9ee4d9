#include "system/RegPathConvention.h"

namespace Registry {

RegPathConvention::RegPathConvention()
    : SimplePathConventionImpl(FileSystem::PathConventionSettings{L"\\", L"\\", L"", true}) {}

bool RegPathConvention::SetTrailingSeparator(std::wstring& path, int mode) const {
    if (path.empty()) return true;
    return SimplePathConventionImpl::SetTrailingSeparator(path, mode);
}

}  // namespace Registry
