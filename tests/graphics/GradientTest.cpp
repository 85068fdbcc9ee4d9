#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include "graphics/Images.h"

namespace CommonGuiLib {
namespace {

constexpr uint32_t kUntouched = 0xFF123456u;
const GradientColor kBlack{0, 0, 0};
const GradientColor kWhite{255, 255, 255};

// Paints the gradient at (x, y) into a bitmap that held kUntouched everywhere.
SharedBitmap Painted(int32_t bitmapWidth, int32_t bitmapHeight, int32_t x, int32_t y,
                     GradientDescription gradient) {
    const SharedBitmap bitmap = CreateCompatibleBitmap(bitmapWidth, bitmapHeight);
    bitmap->GetHandle()->fill(kUntouched);
    PaintGradient(bitmap, x, y, gradient);
    return bitmap;
}

uint32_t Grey(uint32_t level) {
    return 0xFF000000u | level << 16 | level << 8 | level;
}

TEST(Gradient, StripesBetweenStops) {
    const SharedBitmap horizontal =
        Painted(100, 10, 0, 0, {100, 10, 0, {{0, kBlack}, {1, kWhite}}});
    EXPECT_EQ(GetPixelArgb(horizontal, 50, 9), Grey(127));
    EXPECT_EQ(GetPixelArgb(horizontal, 99, 5), Grey(252));

    // Stops at 25% and 75%: the top and bottom quarters keep what was there.
    const SharedBitmap vertical = Painted(3, 8, 0, 0, {3, 8, 1, {{0.25, kWhite}, {0.75, kBlack}}});
    EXPECT_EQ(GetPixelArgb(vertical, 1, 1), kUntouched);
    EXPECT_EQ(GetPixelArgb(vertical, 2, 3), Grey(255 - 255 / 4));
    EXPECT_EQ(GetPixelArgb(vertical, 0, 6), kUntouched);

    // Through a painter, offset; the rest of the device is left alone.
    QImage image(12, 4, QImage::Format_ARGB32);
    image.fill(kUntouched);
    {
        QPainter painter(&image);
        PaintGradient(painter, 2, 1, {10, 2, 0, {{0.0, kBlack}, {0.5, kWhite}}});
    }
    EXPECT_EQ(image.pixel(3, 2), Grey(51));
    for (auto [x, y] : {std::pair{1, 1}, {2, 3}, {7, 1}}) EXPECT_EQ(image.pixel(x, y), kUntouched);
}

TEST(Gradient, OneStopFillsAndDiagonalsNeedTwo) {
    for (uint32_t orientation : {0u, 2u, 3u, 7u}) {
        const SharedBitmap solid = Painted(4, 4, 1, 1, {2, 2, orientation, {{0.3, {10, 20, 30}}}});
        EXPECT_EQ(GetPixelArgb(solid, 2, 2), 0xFF0A141Eu) << orientation;
        EXPECT_EQ(GetPixelArgb(solid, 3, 3), kUntouched) << orientation;
    }
    const SharedBitmap three =
        Painted(5, 5, 0, 0, {5, 5, 2, {{0.0, kBlack}, {0.5, {9, 9, 9}}, {1.0, kWhite}}});
    for (int i = 0; i < 5; ++i) EXPECT_EQ(GetPixelArgb(three, i, i), kUntouched);
    // Nothing for an empty area, and no trouble with a huge one.
    EXPECT_EQ(GetPixelArgb(Painted(2, 2, 0, 0, {0, 2, 0, {{0.0, kBlack}}}), 0, 0), kUntouched);
    Painted(2, 2, -5, -5, {2000000000, 2000000000, 3, {{0, kBlack}, {1, kWhite}}});
}

TEST(Gradient, DiagonalWalksTheBorder) {
    // 4 x 2: step k draws the anti-diagonal x + y = k in grey 255 * k / 6, without the
    // line's end on the top edge.
    const SharedBitmap tlbr = Painted(4, 2, 0, 0, {4, 2, 2, {{0, kBlack}, {1, kWhite}}});
    EXPECT_EQ(GetPixelArgb(tlbr, 0, 1), Grey(42));
    EXPECT_EQ(GetPixelArgb(tlbr, 1, 1), Grey(85));
    EXPECT_EQ(GetPixelArgb(tlbr, 3, 1), Grey(170));
    EXPECT_EQ(GetPixelArgb(tlbr, 2, 0), kUntouched);

    // Mirrored: from the top-right corner, x becomes width - x.
    const SharedBitmap trbl = Painted(4, 2, 0, 0, {4, 2, 3, {{0, kBlack}, {1, kWhite}}});
    EXPECT_EQ(GetPixelArgb(trbl, 3, 1), Grey(85));
    EXPECT_EQ(GetPixelArgb(trbl, 1, 1), Grey(170));
    EXPECT_EQ(GetPixelArgb(trbl, 0, 1), kUntouched);  // the end of line 5
}

}  // namespace
}  // namespace CommonGuiLib
