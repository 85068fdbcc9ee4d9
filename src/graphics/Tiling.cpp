// Tiling a bitmap over a rectangle, copying or blending tile by tile.
#include <QImage>
#include <QPainter>

#include <algorithm>

#include "graphics/Images.h"
#include "graphics/internal/QtImages.h"

namespace CommonGuiLib {

namespace {

// The same bytes seen in another 32-bit layout, without a copy; `image` must outlive it.
QImage Reinterpreted(const QImage& image, QImage::Format format) {
    return QImage(image.constBits(), image.width(), image.height(), image.bytesPerLine(), format);
}

}  // namespace

void DrawTiled(QPainter& dc, const SharedBitmap& image, const Rect& rect,
               uint32_t transparencyPercent, bool perPixelAlpha, bool alreadyPremultiplied) {
    transparencyPercent = std::min<uint32_t>(transparencyPercent, 100);
    const QImage* source = internal::ImageOf(image);
    if (!source || source->width() == 0 || source->height() == 0) return;
    const int64_t tileWidth = source->width(), tileHeight = source->height();
    const int64_t width = rect.right - int64_t{rect.left};
    const int64_t height = rect.bottom - int64_t{rect.top};
    if (width <= 0 || height <= 0) return;

    const bool blend = transparencyPercent > 0 || perPixelAlpha;
    // What is drawn: for a blend the colour bytes as the blender takes them. With per-pixel
    // alpha they must be premultiplied; without it the source alpha is ignored.
    SharedBitmap premultiplied;
    QImage drawn;
    if (!blend) {
        drawn = source->format() == QImage::Format_ARGB32
                    ? *source
                    : source->convertToFormat(QImage::Format_ARGB32);
    } else if (perPixelAlpha) {
        const QImage* bytes = source;
        if (!alreadyPremultiplied || !internal::IsDibLayout(source->format())) {
            // One copy serves every tile; the result is the same as a copy per tile.
            premultiplied = CopyBitmapPremultiplied(image);
            bytes = internal::ImageOf(premultiplied);
            if (!bytes) return;
        }
        drawn = Reinterpreted(*bytes, QImage::Format_ARGB32_Premultiplied);
    } else {
        const QImage* bytes = source;
        QImage converted;
        if (!internal::IsDibLayout(source->format())) {
            converted = source->convertToFormat(QImage::Format_ARGB32);
            bytes = &converted;
        }
        drawn = Reinterpreted(*bytes, QImage::Format_RGB32).copy();
    }
    if (drawn.isNull()) return;

    dc.save();
    if (blend) {
        dc.setCompositionMode(QPainter::CompositionMode_SourceOver);
        dc.setOpacity(static_cast<qreal>((100 - transparencyPercent) * 255 / 100) / 255.0);
    } else {
        dc.setCompositionMode(QPainter::CompositionMode_Source);
        dc.setOpacity(1.0);
    }
    const int64_t columns = (width + tileWidth - 1) / tileWidth;
    const int64_t rows = (height + tileHeight - 1) / tileHeight;
    // A small tile over a large rectangle makes many tiles; those outside the device
    // cannot show, so they are skipped when the painter only moves its drawing.
    int64_t firstColumn = 0, lastColumn = columns, firstRow = 0, lastRow = rows;
    if (const QPaintDevice* device = dc.device();
        device != nullptr && dc.worldTransform().type() <= QTransform::TxTranslate) {
        const int64_t dx = static_cast<int64_t>(dc.worldTransform().dx());
        const int64_t dy = static_cast<int64_t>(dc.worldTransform().dy());
        const int64_t visibleLeft = -dx - 1, visibleTop = -dy - 1;
        const int64_t visibleRight = device->width() - dx + 1;
        const int64_t visibleBottom = device->height() - dy + 1;
        firstColumn = std::clamp<int64_t>((visibleLeft - rect.left) / tileWidth, 0, columns);
        lastColumn = std::clamp<int64_t>((visibleRight - rect.left) / tileWidth + 1, 0, columns);
        firstRow = std::clamp<int64_t>((visibleTop - rect.top) / tileHeight, 0, rows);
        lastRow = std::clamp<int64_t>((visibleBottom - rect.top) / tileHeight + 1, 0, rows);
    }
    for (int64_t column = firstColumn; column < lastColumn; ++column) {
        const int64_t left = rect.left + column * tileWidth;
        const int64_t cx = std::min(tileWidth, rect.right - left);
        for (int64_t row = firstRow; row < lastRow; ++row) {
            const int64_t top = rect.top + row * tileHeight;
            const int64_t cy = std::min(tileHeight, rect.bottom - top);
            dc.drawImage(QPoint(static_cast<int>(left), static_cast<int>(top)), drawn,
                         QRect(0, 0, static_cast<int>(cx), static_cast<int>(cy)));
        }
    }
    dc.restore();
}

}  // namespace CommonGuiLib
