// Font texts of Resources.xml: one or more alternatives separated by "|", each
// "face,height,bold,italic,underline,strikeout,quality" (at least "face," must be there).
// A face "@CaptionFont", "@SmallCaptionFont", "@MenuFont", "@StatusFont" or "@MessageFont"
// starts from that font of the system's non-client metrics: its face replaces the face,
// and its values stand in for the fields left out or empty. Every alternative but the last
// is passed over when its face is not installed.
//
// Thread safety: the thread that runs the GUI session (fonts are Qt objects). Nothing
// here throws except std::bad_alloc.
#pragma once

#include <string_view>

#include "graphics/SystemMetrics.h"
#include "storages/ResourceTypes.h"

namespace ResourceLib::internal {

// Reads one alternative (already split off at "|") into `font`, with `systemFonts` as the
// source of the "@..." base fonts (null when the system's fonts cannot be read). False
// when the alternative has no comma and so names no font.
bool ReadFontAlternative(std::wstring_view alternative,
                         const CommonGuiLib::NonClientFonts* systemFonts,
                         CommonGuiLib::LogFont& font);

// The font of the first alternative that is usable; an empty holder when none gives one.
FontHandle CreateFontFromText(std::wstring_view text);

}  // namespace ResourceLib::internal
