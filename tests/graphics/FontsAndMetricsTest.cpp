#include <gtest/gtest.h>

#include <QFont>
#include <QFontInfo>
#include <QGuiApplication>
#include <QPalette>

#include <tuple>

#include "graphics/GuiSession.h"
#include "graphics/Images.h"
#include "graphics/SystemMetrics.h"
#include "platform/Environment.h"

namespace CommonGuiLib {
namespace {

// Sessions made by these tests must not look for a display.
const bool kOffscreen = Platform::SetEnvironment("QT_QPA_PLATFORM", "offscreen") == 0;

TEST(Fonts, LogFontRoundTrip) {
    ASSERT_TRUE(kOffscreen);
    const LogFont bold{.height = -12,
                       .weight = 800,
                       .italic = true,
                       .strikeOut = true,
                       .quality = 5,
                       .faceName = L"Arial"};
    const SharedFont font = CreateFontIndirect(bold);
    ASSERT_TRUE(HasHandle(font));
    EXPECT_EQ(font->GetHandle()->pixelSize(), 12);
    const LogFont back = DescribeFont(font);
    EXPECT_EQ(std::tie(back.height, back.weight, back.italic, back.underline, back.strikeOut,
                       back.quality, back.faceName),
              std::tie(bold.height, bold.weight, bold.italic, bold.underline, bold.strikeOut,
                       bold.quality, bold.faceName));
    // A cell height, the default size and weight, and no face all come back as given.
    LogFont cellHeight;
    cellHeight.height = 16;
    cellHeight.underline = true;
    const LogFont cell = DescribeFont(CreateFontIndirect(cellHeight));
    EXPECT_EQ(std::tie(cell.height, cell.weight, cell.underline, cell.faceName),
              std::make_tuple(16, 0, true, std::wstring()));
    EXPECT_EQ(DescribeFont(CreateFontIndirect(LogFont{})).height, 0);
    EXPECT_FALSE(HasHandle(WrapFont(nullptr)));
}

TEST(SystemMetrics, ClassicValuesWithoutGui) {
    ASSERT_FALSE(GuiSession::IsGuiRunning());
    EXPECT_EQ(GetSysColor(5), 0xFFFFFFu);
    EXPECT_EQ(GetSysColor(15), 0xF0F0F0u);
    EXPECT_EQ(GetSysColor(13), 0xFF9933u);  // COLORREF: blue in the high byte
    EXPECT_EQ(GetSysColor(31), 0u);
    EXPECT_EQ(GetSysColor(-1), 0u);
    EXPECT_EQ(GetScreenBitsPerPixel(), 32);
    EXPECT_FALSE(IsFontFamilyInstalled(L"Sans Serif"));
    NonClientFonts fonts;
    ASSERT_TRUE(GetNonClientFonts(fonts));
    EXPECT_LT(fonts.message.height, 0);
    EXPECT_FALSE(fonts.caption.faceName.empty());
}

TEST(SystemMetrics, PaletteAndFontsWithGui) {
    GuiSession session;
    ASSERT_TRUE(session.OwnsApplication());
    EXPECT_FALSE(GuiSession().OwnsApplication());  // nested: uses the one there is
    ASSERT_TRUE(GuiSession::IsGuiRunning());
    // Roles without a palette counterpart keep the classic colour.
    EXPECT_EQ(GetSysColor(2), 0xD1B499u);
    const QColor base = QGuiApplication::palette().color(QPalette::Active, QPalette::Base);
    EXPECT_EQ(GetSysColor(5),
              static_cast<uint32_t>(base.red() | base.green() << 8 | base.blue() << 16));
    EXPECT_EQ(GetScreenBitsPerPixel(), 32);

    NonClientFonts fonts;
    ASSERT_TRUE(GetNonClientFonts(fonts));
    EXPECT_LT(fonts.message.height, 0);
    EXPECT_GT(fonts.message.weight, 0);
    const SharedFont message = CreateFontIndirect(fonts.message);
    EXPECT_GT(QFontInfo(*message->GetHandle()).pixelSize(), 0);
    EXPECT_FALSE(IsFontFamilyInstalled(L"No Such Face Anywhere"));
}

}  // namespace
}  // namespace CommonGuiLib
