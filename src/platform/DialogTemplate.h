// A dialog template resource (RT_DIALOG), extended (DLGTEMPLATEEX) or classic
// (DLGTEMPLATE), turned into a plain description that a user interface can build its
// window from. Coordinates stay in dialog units.
//
// Thread safety: a parsed description is a plain value.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace Platform {

// A field that is either a number (an ordinal: a resource id or a predefined class) or
// a text.
struct TextOrOrdinal {
    bool isOrdinal = false;
    uint16_t ordinal = 0;
    std::wstring text;
};

struct DialogItem {
    uint32_t helpId = 0;
    uint32_t exStyle = 0;
    uint32_t style = 0;
    int16_t x = 0, y = 0, cx = 0, cy = 0;
    uint32_t id = 0;  // 0xFFFFFFFF (or 0xFFFF in a classic template) for "no id"
    // The predefined class ordinals 0x80..0x85 are given as their names ("Button",
    // "Edit", "Static", "ListBox", "ScrollBar", "ComboBox").
    TextOrOrdinal windowClass;
    TextOrOrdinal title;  // an ordinal title names a resource, e.g. the icon of an icon control
    std::vector<uint8_t> creationData;
};

struct DialogTemplate {
    bool extended = false;
    uint32_t helpId = 0;
    uint32_t exStyle = 0;
    uint32_t style = 0;
    int16_t x = 0, y = 0, cx = 0, cy = 0;
    TextOrOrdinal menu;
    TextOrOrdinal windowClass;
    std::wstring title;
    bool hasFont = false;  // DS_SETFONT (0x40) or DS_SHELLFONT
    uint16_t pointSize = 0;
    uint16_t weight = 0;
    bool italic = false;
    uint8_t charSet = 0;
    std::wstring typeface;
    std::vector<DialogItem> items;

    // Parses the resource bytes into `out`. Returns 0 or InvalidData (13) when any field
    // lies outside the bytes.
    static uint32_t Parse(std::span<const uint8_t> bytes, DialogTemplate& out);
};

// Style bits the user interface looks at.
constexpr uint32_t DS_SETFONT = 0x40;
constexpr uint32_t DS_FIXEDSYS = 0x08;
constexpr uint32_t DS_MODALFRAME = 0x80;
constexpr uint32_t WS_VISIBLE = 0x10000000;
constexpr uint32_t WS_POPUP = 0x80000000;
constexpr uint32_t WS_CHILD = 0x40000000;
constexpr uint32_t WS_CAPTION = 0x00C00000;
constexpr uint32_t WS_SYSMENU = 0x00080000;
constexpr uint32_t WS_BORDER = 0x00800000;
constexpr uint32_t WS_TABSTOP = 0x00010000;
constexpr uint32_t WS_EX_APPWINDOW = 0x00040000;

}  // namespace Platform
