// Pixel-level helpers on 32-bit bitmaps: size queries, pixel reads, forcing opacity and
// premultiplying colour by alpha with the integer rule c * a / 255.
#include <QImage>

#include "graphics/Images.h"
#include "graphics/SystemMetrics.h"
#include "graphics/internal/QtImages.h"

namespace CommonGuiLib {

namespace {

// Brings a deeper image that is not in the DIB layout into it, so the byte rules below
// apply; images of fewer than 32 bits have no alpha and are left alone (false).
bool EnsureDibLayout(QImage& image) {
    if (internal::IsDibLayout(image.format())) return true;
    if (image.depth() < 32 || !image.hasAlphaChannel()) return false;
    image.convertTo(QImage::Format_ARGB32);
    return !image.isNull();
}

template <class Visit>
void ForEachPixel(QImage& image, Visit visit) {
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<uint32_t*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) row[x] = visit(row[x]);
    }
}

}  // namespace

void SetOpaque(const SharedBitmap& bitmap) {
    QImage* image = internal::ImageOf(bitmap);
    if (!image || image->isNull() || !EnsureDibLayout(*image)) return;
    ForEachPixel(*image, [](uint32_t pixel) { return pixel | 0xFF000000u; });
}

int32_t BitmapWidth(const SharedBitmap& bitmap) {
    const QImage* image = internal::ImageOf(bitmap);
    return image ? image->width() : 0;
}

int32_t BitmapHeight(const SharedBitmap& bitmap) {
    const QImage* image = internal::ImageOf(bitmap);
    return image ? image->height() : 0;
}

int32_t BitmapBitsPerPixel(const SharedBitmap& bitmap) {
    const QImage* image = internal::ImageOf(bitmap);
    return image ? image->depth() : 0;
}

uint32_t GetPixelArgb(const SharedBitmap& bitmap, int32_t x, int32_t y) {
    const QImage* image = internal::ImageOf(bitmap);
    if (!image || x < 0 || y < 0 || x >= image->width() || y >= image->height()) return 0;
    // The stored word, not Qt's interpretation of it: premultiplied bytes stay as they are.
    if (internal::IsDibLayout(image->format()))
        return reinterpret_cast<const uint32_t*>(image->constScanLine(y))[x];
    return image->pixel(x, y);
}

void PremultiplyAlpha(const SharedBitmap& bitmap, bool force) {
    if (!force && GetScreenBitsPerPixel() != 32) return;
    QImage* image = internal::ImageOf(bitmap);
    if (!image || image->isNull() || !EnsureDibLayout(*image)) return;
    ForEachPixel(*image, [](uint32_t pixel) {
        const uint32_t alpha = pixel >> 24;
        const uint32_t red = ((pixel >> 16) & 0xFF) * alpha / 255;
        const uint32_t green = ((pixel >> 8) & 0xFF) * alpha / 255;
        const uint32_t blue = (pixel & 0xFF) * alpha / 255;
        return (alpha << 24) | (red << 16) | (green << 8) | blue;
    });
}

SharedBitmap CopyBitmapPremultiplied(const SharedBitmap& bitmap) {
    const QImage* image = internal::ImageOf(bitmap);
    if (!image || image->isNull()) return internal::MakeBitmap({});
    // A deep copy as a 32-bit bitmap, so the original keeps its bytes.
    QImage copy = image->format() == QImage::Format_ARGB32
                      ? image->copy()
                      : image->convertToFormat(QImage::Format_ARGB32);
    SharedBitmap result = internal::MakeBitmap(std::move(copy));
    PremultiplyAlpha(result, true);
    return result;
}

}  // namespace CommonGuiLib
