#include "storages/internal/ColorText.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "graphics/SystemMetrics.h"
#include "storages/internal/FontText.h"

using namespace ResourceLib;

namespace {

// The colour, or 0xDEADBEEF when the text is refused.
COLORREF Parse(std::wstring_view text) {
    COLORREF color = 0xDEADBEEF;
    internal::ParseColorText(text, color);
    return color;
}
constexpr COLORREF kRefused = 0xDEADBEEF;

}  // namespace

TEST(ColorText, LiteralAndSystemForms) {
    EXPECT_EQ(Parse(L"#FF0000"), 0x000000FFu);
    EXPECT_EQ(Parse(L"#00ff80"), 0x0080FF00u);
    EXPECT_EQ(Parse(L"#GG0010"), 0x00100000u);  // an unreadable pair is 0
    EXPECT_EQ(Parse(L"255, 0, 0"), 0x000000FFu);
    EXPECT_EQ(Parse(L"256,0,-1"), 0x00FF0000u);  // low 8 bits of each number
    for (const wchar_t* bad : {L"", L"#FFF", L"#FF00000", L"1,2", L"1 ,2,3", L"red", L"@", L"@0",
                               L"@COLOR_UNKNOWN", L"@color_window", L"@5+(1,1)"}) {
        EXPECT_EQ(Parse(bad), kRefused);
    }

    const COLORREF window = CommonGuiLib::GetSysColor(5);
    EXPECT_EQ(Parse(L"@COLOR_WINDOW"), window);
    EXPECT_EQ(Parse(L"@5"), window);
    EXPECT_EQ(Parse(L"@COLOR_WINDOW+(x,y,z)"), window);  // unreadable numbers: no change
    auto clamp = [](int value) { return uint8_t(std::clamp(value, 0, 255)); };
    EXPECT_EQ(Parse(L"@COLOR_WINDOW-(10,10,10)"),
              MakeColor(clamp(RedOf(window) - 10), clamp(GreenOf(window) - 10),
                        clamp(BlueOf(window) - 10)));
    const COLORREF text = CommonGuiLib::GetSysColor(8);
    EXPECT_EQ(Parse(L"@8+(300,0,-5)"), MakeColor(255, GreenOf(text), clamp(BlueOf(text) - 5)));
    EXPECT_EQ(Parse(L"@COLOR_3DHILIGHT"), CommonGuiLib::GetSysColor(20));
}

TEST(FontText, AlternativesAndBaseFonts) {
    CommonGuiLib::NonClientFonts system;
    system.message = {.height = -13,
                      .weight = 700,
                      .italic = true,
                      .strikeOut = true,
                      .quality = 3,
                      .faceName = L"Base Sans"};
    CommonGuiLib::LogFont font;
    ASSERT_TRUE(internal::ReadFontAlternative(L"  Arial,-12,1\r\n", &system, font));
    EXPECT_EQ(font.faceName, L"Arial");
    EXPECT_EQ(font.height, -12);
    EXPECT_EQ(font.weight, 800);
    EXPECT_EQ(font.quality, 5);
    EXPECT_FALSE(internal::ReadFontAlternative(L"Arial", &system, font));
    // Fields left out or empty come from the base font; given ones win.
    ASSERT_TRUE(internal::ReadFontAlternative(L"@MessageFont,,0,,,,", &system, font));
    EXPECT_EQ(font.faceName, L"Base Sans");
    EXPECT_EQ(font.height, -13);
    EXPECT_EQ(font.weight, 0);
    EXPECT_TRUE(font.italic && font.strikeOut && !font.underline);
    EXPECT_EQ(font.quality, 3);
    ASSERT_TRUE(internal::ReadFontAlternative(L"@Nonsense,", &system, font));
    EXPECT_EQ(font.faceName, L"Nonsense");

    // Only the last alternative may name a face that is not installed.
    auto made = internal::CreateFontFromText(L"NoSuchFaceAtAll,-11|Fallback Face,-12,1");
    EXPECT_EQ(CommonGuiLib::DescribeFont(made).faceName, L"Fallback Face");
    EXPECT_EQ(CommonGuiLib::DescribeFont(made).height, -12);
    ASSERT_TRUE(CommonGuiLib::GetNonClientFonts(system));
    made = internal::CreateFontFromText(L"|@MessageFont,,1|NoSuchFaceAtAll,-11");
    EXPECT_EQ(CommonGuiLib::DescribeFont(made).faceName, system.message.faceName);
    EXPECT_EQ(CommonGuiLib::DescribeFont(made).weight, 800);
    EXPECT_FALSE(CommonGuiLib::HasHandle(internal::CreateFontFromText(L"|no comma|")));
}
