#include "storages/SystemStorage.h"

#include <algorithm>
#include <string>

#include "graphics/Images.h"
#include "graphics/SystemMetrics.h"
#include "storages/ResourceErrors.h"
#include "storages/SystemColors.h"

namespace ResourceLib {

namespace {

// The highest index of the system colour table.
constexpr int32_t kLastColorIndex = 30;

// Splits "file,index" at the last comma; false unless both parts are there and the index
// is nothing but decimal digits.
bool SplitIconName(std::wstring_view name, std::wstring& file, uint32_t& index) {
    const std::size_t comma = name.rfind(L',');
    if (comma == std::wstring_view::npos || comma == 0 || comma + 1 == name.size()) return false;
    uint64_t number = 0;
    for (wchar_t c : name.substr(comma + 1)) {
        if (c < L'0' || c > L'9') return false;
        number = std::min<uint64_t>(number * 10 + uint64_t(c - L'0'), UINT32_MAX);
    }
    file.assign(name.substr(0, comma));
    index = static_cast<uint32_t>(number);
    return true;
}

}  // namespace

void SystemStorage::GetSupportedTypes(uint32_t& mask, Error* /*error*/) {
    mask = ResourceType_Icon | ResourceType_Color;
}

bool SystemStorage::IsAvailable(Error* /*error*/) {
    return true;
}

IconHandle SystemStorage::LoadIconByName(ResourceName name, int32_t width, int32_t height,
                                         Error* error) {
    const bool large = width == 32 && height == 32;
    const bool small = width == 16 && height == 16;
    std::wstring file;
    uint32_t index = 0;
    if ((!large && !small) || !SplitIconName(name.view(), file, index)) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    IconHandle icon = CommonGuiLib::ExtractIconFromFile(file, index, large);
    if (!CommonGuiLib::HasHandle(icon)) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return icon;
}

IconHandle SystemStorage::LoadIconById(int32_t /*id*/, int32_t /*width*/, int32_t /*height*/,
                                       Error* error) {
    // System icons are named by their file; no id stands for one.
    ReportError(error, ResourceNotFound);
    return {};
}

COLORREF SystemStorage::LoadColorByName(ResourceName name, Error* error) {
    COLORREF color = 0;
    if (!LookupSystemColor(name.view(), color)) {
        ReportError(error, ResourceNotFound);
        return 0;
    }
    return color;
}

COLORREF SystemStorage::LoadColorById(int32_t id, Error* error) {
    if (id < 0 || id > kLastColorIndex) {
        ReportError(error, ResourceNotFound);
        return 0;
    }
    return CommonGuiLib::GetSysColor(id);
}

}  // namespace ResourceLib
