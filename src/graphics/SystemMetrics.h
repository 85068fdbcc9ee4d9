// The system's display colours, fonts and screen depth, as the resource library asks for
// them: the desktop palette while a GUI runs, otherwise the classic Windows defaults.
//
// Thread safety: the GUI thread while a GUI runs (palette and font database are its own),
// else any thread; values are read when asked.
#pragma once

#include <cstdint>
#include <string>

#include "graphics/Images.h"

namespace CommonGuiLib {

// The colour of system colour index 0..30 as a COLORREF (0x00BBGGRR); 0 for any other.
uint32_t GetSysColor(int32_t index);

// The fonts of the system's non-client metrics.
struct NonClientFonts {
    LogFont caption;
    LogFont smallCaption;
    LogFont menu;
    LogFont status;
    LogFont message;
};
// False when they cannot be read.
bool GetNonClientFonts(NonClientFonts& fonts);

// Whether a font family of that name is installed (case-insensitive).
bool IsFontFamilyInstalled(const std::wstring& face);

// Bits per pixel of the screen (32 on every screen Qt offers).
int32_t GetScreenBitsPerPixel();

}  // namespace CommonGuiLib
