// What the resource library hands out: the resource types (one bit each; a set of types is
// their OR), the byte view of a binary resource and the shared image and font handles.
#pragma once

#include <cstdint>

#include "foundation/LiteString.h"
#include "graphics/SharedGDIObject.h"

namespace ResourceLib {

enum ResourceType : uint32_t {
    ResourceType_String = 1,
    ResourceType_Unnamed = 2,  // no resource kind; accepted by the name registry only
    ResourceType_Bitmap = 4,
    ResourceType_Icon = 8,
    ResourceType_Binary = 16,
    ResourceType_Color = 32,
    ResourceType_Font = 64,
    ResourceType_Integer = 128,
};
constexpr uint32_t kAllResourceTypes = 0xFF;

// The id that stands for "no id".
constexpr int32_t kNoResourceId = -1;

// A Windows COLORREF: 0x00BBGGRR, red in the low byte.
using COLORREF = uint32_t;
constexpr COLORREF MakeColor(uint8_t red, uint8_t green, uint8_t blue) {
    return red | (uint32_t(green) << 8) | (uint32_t(blue) << 16);
}
constexpr uint8_t RedOf(COLORREF c) {
    return c & 0xFF;
}
constexpr uint8_t GreenOf(COLORREF c) {
    return (c >> 8) & 0xFF;
}
constexpr uint8_t BlueOf(COLORREF c) {
    return (c >> 16) & 0xFF;
}

// A binary resource: valid while the storage's cache holds it. Empty: null and 0.
struct ByteView {
    const uint8_t* data = nullptr;
    uint32_t size = 0;
};

// Resource names travel as references, mostly to literals.
using ResourceName = STLHelpers::litestring;

using BitmapHandle = CommonGuiLib::SharedBitmap;
using IconHandle = CommonGuiLib::SharedIcon;
using FontHandle = CommonGuiLib::SharedFont;

}  // namespace ResourceLib
