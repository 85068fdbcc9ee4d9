// Colour texts of Resources.xml ("Color" elements and gradient "Pin" colours) turned into
// a COLORREF (red in the low byte):
//   "#RRGGBB"                     hexadecimal pairs, exactly 7 characters
//   "@COLOR_WINDOW", "@5"         a system colour by name or by index (not 0)
//   "@COLOR_WINDOW+(10,0,0)"      a system colour with each channel raised ("+") or lowered
//   "@5-(10,10,10)"               (any other sign character) and clamped to 0..255
//   "255,128,0"                   decimal red, green, blue; each channel keeps the low 8
//                                 bits of its number
//
// Thread safety: the GUI thread while a GUI runs (system colours come from its palette),
// else any thread. Nothing here throws except std::bad_alloc.
#pragma once

#include <string_view>

#include "storages/ResourceTypes.h"

namespace ResourceLib::internal {

// False, with `color` untouched, when the text is none of the forms above.
bool ParseColorText(std::wstring_view text, COLORREF& color);

}  // namespace ResourceLib::internal
