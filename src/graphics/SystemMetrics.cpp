// Display colours, non-client fonts, installed font families and screen depth, from Qt
// while a QGuiApplication runs and from fixed defaults otherwise.
#include "graphics/SystemMetrics.h"

#include <QColor>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPalette>
#include <QScreen>
#include <QStringList>

#include <cmath>
#include <optional>

#include "graphics/GuiSession.h"

namespace CommonGuiLib {

namespace {

constexpr uint32_t Rgb(uint32_t red, uint32_t green, uint32_t blue) {
    return red | (green << 8) | (blue << 16);
}

// The colours a standard Windows desktop starts with, by COLOR_ index. Index 25 names no
// element and is black.
constexpr uint32_t kClassicColors[31] = {
    Rgb(200, 200, 200),  // 0 scroll bar
    Rgb(0, 0, 0),        // 1 desktop
    Rgb(153, 180, 209),  // 2 active caption
    Rgb(191, 205, 219),  // 3 inactive caption
    Rgb(240, 240, 240),  // 4 menu
    Rgb(255, 255, 255),  // 5 window
    Rgb(100, 100, 100),  // 6 window frame
    Rgb(0, 0, 0),        // 7 menu text
    Rgb(0, 0, 0),        // 8 window text
    Rgb(0, 0, 0),        // 9 caption text
    Rgb(180, 180, 180),  // 10 active border
    Rgb(244, 247, 252),  // 11 inactive border
    Rgb(171, 171, 171),  // 12 application workspace
    Rgb(51, 153, 255),   // 13 highlight
    Rgb(255, 255, 255),  // 14 highlight text
    Rgb(240, 240, 240),  // 15 button face
    Rgb(160, 160, 160),  // 16 button shadow
    Rgb(109, 109, 109),  // 17 grey text
    Rgb(0, 0, 0),        // 18 button text
    Rgb(67, 78, 84),     // 19 inactive caption text
    Rgb(255, 255, 255),  // 20 button highlight
    Rgb(105, 105, 105),  // 21 3D dark shadow
    Rgb(227, 227, 227),  // 22 3D light
    Rgb(0, 0, 0),        // 23 tooltip text
    Rgb(255, 255, 225),  // 24 tooltip background
    Rgb(0, 0, 0),        // 25 (none)
    Rgb(0, 102, 204),    // 26 hot-tracked item
    Rgb(185, 209, 234),  // 27 active caption gradient
    Rgb(215, 228, 242),  // 28 inactive caption gradient
    Rgb(51, 153, 255),   // 29 menu highlight
    Rgb(240, 240, 240),  // 30 menu bar
};

struct PaletteSource {
    QPalette::ColorGroup group;
    QPalette::ColorRole role;
};

// The palette role that plays the part of a COLOR_ index. Window decorations and the
// desktop have no role in an application's palette and keep the classic colours.
std::optional<PaletteSource> PaletteRole(int32_t index) {
    constexpr auto active = QPalette::Active;
    switch (index) {
        case 0:
            return PaletteSource{active, QPalette::Midlight};
        case 4:
            return PaletteSource{active, QPalette::Window};
        case 5:
            return PaletteSource{active, QPalette::Base};
        case 6:
            return PaletteSource{active, QPalette::Dark};
        case 7:
            return PaletteSource{active, QPalette::WindowText};
        case 8:
            return PaletteSource{active, QPalette::Text};
        case 12:
            return PaletteSource{active, QPalette::Mid};
        case 13:
            return PaletteSource{active, QPalette::Highlight};
        case 14:
            return PaletteSource{active, QPalette::HighlightedText};
        case 15:
            return PaletteSource{active, QPalette::Button};
        case 16:
            return PaletteSource{active, QPalette::Dark};
        case 17:
            return PaletteSource{QPalette::Disabled, QPalette::Text};
        case 18:
            return PaletteSource{active, QPalette::ButtonText};
        case 20:
            return PaletteSource{active, QPalette::Light};
        case 21:
            return PaletteSource{active, QPalette::Shadow};
        case 22:
            return PaletteSource{active, QPalette::Midlight};
        case 23:
            return PaletteSource{active, QPalette::ToolTipText};
        case 24:
            return PaletteSource{active, QPalette::ToolTipBase};
        case 26:
            return PaletteSource{active, QPalette::Link};
        case 29:
            return PaletteSource{active, QPalette::Highlight};
        case 30:
            return PaletteSource{active, QPalette::Window};
        default:
            return std::nullopt;
    }
}

// Without a GUI there is no font to ask for; this is what a desktop usually gives.
LogFont DefaultFont() {
    LogFont font;
    font.height = -12;
    font.weight = 400;
    font.faceName = L"Sans Serif";
    return font;
}

// A Qt font as its LOGFONT: the size as a character height in pixels (points at 96 dots
// per inch), the weight on the same 1..1000 scale.
LogFont ToLogFont(const QFont& qfont) {
    LogFont font = DefaultFont();
    if (qfont.pixelSize() > 0)
        font.height = -qfont.pixelSize();
    else if (qfont.pointSizeF() > 0)
        font.height = -static_cast<int32_t>(std::lround(qfont.pointSizeF() * 96.0 / 72.0));
    font.weight = qfont.weight();
    font.italic = qfont.italic();
    font.underline = qfont.underline();
    font.strikeOut = qfont.strikeOut();
    const std::wstring face = qfont.family().toStdWString();
    if (!face.empty()) font.faceName = face;
    return font;
}

}  // namespace

uint32_t GetSysColor(int32_t index) {
    if (index < 0 || index > 30) return 0;
    if (GuiSession::IsGuiRunning()) {
        if (const auto source = PaletteRole(index)) {
            const QColor color = QGuiApplication::palette().color(source->group, source->role);
            return Rgb(static_cast<uint32_t>(color.red()), static_cast<uint32_t>(color.green()),
                       static_cast<uint32_t>(color.blue()));
        }
    }
    return kClassicColors[index];
}

bool GetNonClientFonts(NonClientFonts& fonts) {
    if (!GuiSession::IsGuiRunning()) {
        fonts.caption = fonts.smallCaption = fonts.menu = fonts.status = fonts.message =
            DefaultFont();
        return true;
    }
    const QFont title = QFontDatabase::systemFont(QFontDatabase::TitleFont);
    const QFont general = QGuiApplication::font();
    fonts.caption = ToLogFont(title);
    fonts.smallCaption = ToLogFont(title);
    fonts.menu = ToLogFont(general);
    fonts.status = ToLogFont(general);
    fonts.message = ToLogFont(general);
    return true;
}

bool IsFontFamilyInstalled(const std::wstring& face) {
    // The font database only exists with a GUI; without one no family counts as installed,
    // so font lists fall through to their last alternative, which is used regardless.
    if (face.empty() || !GuiSession::IsGuiRunning()) return false;
    return QFontDatabase::families().contains(QString::fromStdWString(face), Qt::CaseInsensitive);
}

int32_t GetScreenBitsPerPixel() {
    if (GuiSession::IsGuiRunning()) {
        if (const QScreen* screen = QGuiApplication::primaryScreen();
            screen != nullptr && screen->depth() > 0)
            return screen->depth();
    }
    return 32;
}

}  // namespace CommonGuiLib
