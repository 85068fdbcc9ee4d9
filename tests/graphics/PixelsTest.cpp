#include <gtest/gtest.h>

#include <QImage>
#include <QPainter>

#include <cstdlib>

#include "graphics/Images.h"

namespace CommonGuiLib {
namespace {

SharedBitmap Owned(QImage image) {
    return boost::make_shared<SharedGDIObjectImpl<kBitmapObject>>(new QImage(std::move(image)));
}

// Whether the red and green bytes of 0xAARRGGBB are within 2 of the values given.
bool Near(uint32_t argb, int red, int green) {
    return std::abs(int((argb >> 16) & 0xFF) - red) <= 2 &&
           std::abs(int((argb >> 8) & 0xFF) - green) <= 2;
}

TEST(Pixels, PremultiplyByTheIntegerRule) {
    QImage image(2, 1, QImage::Format_ARGB32);
    image.setPixel(0, 0, 0x803264C8u);  // blue 200, green 100, red 50, alpha 128
    image.setPixel(1, 0, 0x00FFFFFFu);
    const SharedBitmap bitmap = Owned(image);

    const SharedBitmap copy = CopyBitmapPremultiplied(bitmap);
    EXPECT_EQ(GetPixelArgb(copy, 0, 0), 0x80193264u);  // (blue 100, green 50, red 25, 128)
    EXPECT_EQ(GetPixelArgb(copy, 1, 0), 0u);
    EXPECT_EQ(GetPixelArgb(bitmap, 0, 0), 0x803264C8u);  // the original is untouched

    PremultiplyAlpha(bitmap, true);
    EXPECT_EQ(GetPixelArgb(bitmap, 0, 0), 0x80193264u);
    // Offscreen and headless screens have 32 bits, so the unforced form works too.
    PremultiplyAlpha(bitmap, false);
    EXPECT_EQ(GetPixelArgb(bitmap, 0, 0), 0x800C1932u);

    EXPECT_FALSE(HasHandle(CopyBitmapPremultiplied(SharedBitmap())));
}

TEST(Pixels, TilesCoverTheRectangleFromItsCorner) {
    // Every pixel of the 10 x 10 tile is distinct, so the target shows which part went where.
    QImage tile(10, 10, QImage::Format_ARGB32);
    for (int y = 0; y < 10; ++y)
        for (int x = 0; x < 10; ++x) tile.setPixel(x, y, 0xFF000000u | (x << 16) | (y << 8));
    const SharedBitmap bitmap = Owned(tile);

    QImage target(40, 20, QImage::Format_ARGB32);
    target.fill(0xFFFFFFFFu);
    {
        QPainter painter(&target);
        DrawTiled(painter, bitmap, Rect{3, 2, 28, 14}, 0, false, false);  // 25 x 12
    }
    // 3 x 2 tiles: columns at 3, 13, 23 (the last 5 wide), rows at 2, 12 (the last 2 high).
    EXPECT_EQ(target.pixel(3, 2), 0xFF000000u);
    EXPECT_EQ(target.pixel(22, 11), 0xFF090900u);
    EXPECT_EQ(target.pixel(27, 13), 0xFF040100u);
    for (auto [x, y] : {std::pair{28, 13}, {27, 14}, {2, 2}})
        EXPECT_EQ(target.pixel(x, y), 0xFFFFFFFFu);

    // Transparency 100 is a blend with constant alpha 0: nothing shows.
    target.fill(0xFFFFFFFFu);
    {
        QPainter painter(&target);
        DrawTiled(painter, bitmap, Rect{0, 0, 40, 20}, 250, false, false);
        DrawTiled(painter, SharedBitmap(), Rect{0, 0, 40, 20}, 0, false, false);
    }
    EXPECT_EQ(target.pixel(5, 5), 0xFFFFFFFFu);
}

TEST(Pixels, TilesBlendWithConstantAndPerPixelAlpha) {
    QImage red(2, 2, QImage::Format_ARGB32);
    red.fill(0x80FF0000u);  // half-transparent red, not premultiplied
    const SharedBitmap bitmap = Owned(red);
    QImage target(4, 2, QImage::Format_ARGB32);
    target.fill(0xFF00FF00u);
    {
        QPainter painter(&target);
        // Constant alpha 127, the source's own alpha ignored.
        DrawTiled(painter, bitmap, Rect{0, 0, 2, 2}, 50, false, false);
        // The source's alpha 128 over green: red 128, green 127.
        DrawTiled(painter, bitmap, Rect{2, 0, 4, 2}, 0, true, false);
    }
    EXPECT_TRUE(Near(target.pixel(1, 1), 127, 128));
    EXPECT_TRUE(Near(target.pixel(3, 1), 128, 127));
    EXPECT_EQ(GetPixelArgb(bitmap, 0, 0), 0x80FF0000u);  // drawing premultiplied a copy
}

}  // namespace
}  // namespace CommonGuiLib
