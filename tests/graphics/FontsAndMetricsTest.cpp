#include <gtest/gtest.h>

#include <QFont>
#include <QFontInfo>
#include <QFontMetrics>
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

TEST(Fonts, KeepTheDescriptionTheyWereMadeFrom) {
    ASSERT_TRUE(kOffscreen);
    const LogFont bold{.height = -12,
                       .width = 0,
                       .escapement = 450,
                       .orientation = 900,
                       .weight = 800,
                       .italic = true,
                       .strikeOut = true,
                       .charSet = 2,
                       .quality = 5,
                       .faceName = L"Arial"};
    const SharedFont font = CreateFontIndirect(bold);
    ASSERT_TRUE(HasHandle(font));
    EXPECT_EQ(font->GetHandle()->pixelSize(), 12);
    const LogFont back = DescribeFont(font);
    EXPECT_EQ(std::tie(back.height, back.escapement, back.orientation, back.weight, back.italic,
                       back.underline, back.strikeOut, back.charSet, back.quality, back.faceName),
              std::tie(bold.height, bold.escapement, bold.orientation, bold.weight, bold.italic,
                       bold.underline, bold.strikeOut, bold.charSet, bold.quality, bold.faceName));
    // A cell height stays one; a font made elsewhere is described by its character height.
    EXPECT_EQ(DescribeFont(CreateFontIndirect(LogFont{.height = 16, .faceName = {}})).height, 16);
    QFont* points = new QFont(QStringLiteral("Arial"));
    points->setPixelSize(15);
    EXPECT_EQ(DescribeFont(WrapFont(points)).height, -15);
    EXPECT_FALSE(HasHandle(WrapFont(nullptr)));
}

// What is drawn: a positive height is the measured line height (ascent plus descent) of
// the font, a negative one its character height.
TEST(Fonts, HeightsAreMeasuredOnTheRealFont) {
    GuiSession session;
    for (const wchar_t* face : {L"Arial", L"DejaVu Serif"}) {
        for (const int32_t cell : {11, 13, 17, 24, 40}) {
            const SharedFont font = CreateFontIndirect(LogFont{.height = cell, .faceName = face});
            const int lineHeight = QFontMetrics(*font->GetHandle()).height();
            EXPECT_LE(lineHeight, cell) << cell;
            EXPECT_GE(lineHeight, cell - 1) << cell;
        }
        const SharedFont em = CreateFontIndirect(LogFont{.height = -17, .faceName = face});
        EXPECT_EQ(QFontInfo(*em->GetHandle()).pixelSize(), 17);
        EXPECT_GT(QFontMetrics(*em->GetHandle()).height(), 17);
    }
    // A width narrows the face.
    const SharedFont wide = CreateFontIndirect(LogFont{.height = -20, .faceName = L"Arial"});
    const SharedFont narrow =
        CreateFontIndirect(LogFont{.height = -20, .width = 4, .faceName = L"Arial"});
    const QString text = QStringLiteral("Downloading components");
    EXPECT_LT(QFontMetrics(*narrow->GetHandle()).horizontalAdvance(text),
              QFontMetrics(*wide->GetHandle()).horizontalAdvance(text) * 3 / 4);
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
