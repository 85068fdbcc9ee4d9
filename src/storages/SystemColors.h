// The names of the system's display colours ("COLOR_WINDOW", "COLOR_BTNFACE", ...) and
// the colour indices they stand for, shared by the system storage and by the "@COLOR_..."
// colour texts of Resources.xml.
//
// Thread safety: any thread; the name table is built once, on first use.
// Nothing here throws except std::bad_alloc.
#pragma once

#include <cstdint>
#include <string_view>

#include "storages/ResourceTypes.h"

namespace ResourceLib {

// The colour index of a COLOR_ name, matched exactly (case-sensitive); false when the
// name is not in the table.
bool FindSystemColorIndex(std::wstring_view name, int32_t& index);

// The current system colour of a COLOR_ name; false, with `color` untouched, when the
// name is not in the table.
bool LookupSystemColor(std::wstring_view name, COLORREF& color);

}  // namespace ResourceLib
