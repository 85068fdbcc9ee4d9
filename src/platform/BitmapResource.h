// Bitmap resources (RT_BITMAP) hold a device-independent bitmap without the file header
// that a .bmp file starts with. Adding that header lets any .bmp decoder read them.
//
// Thread safety: pure functions, any thread.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace Platform {

class BitmapResource {
public:
    // A .bmp file for the DIB `dib` (a BITMAPINFOHEADER or larger header, colour table,
    // pixels). Returns 0, or InvalidData (13) when the header is too short or claims a
    // colour table beyond the bytes; `bmpFile` is then empty.
    static uint32_t MakeBmpFile(std::span<const uint8_t> dib, std::vector<uint8_t>& bmpFile);
};

}  // namespace Platform
