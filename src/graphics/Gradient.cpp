// Gradient backgrounds: stripes between neighbouring colour stops, or a diagonal sweep of
// one-pixel lines between two points walking the border of the area.
//
// Both entry points raster into an image with the same code, so the painted pixels are
// the same whether the target is a bitmap or a painter; the painter receives an image in
// which every pixel the gradient leaves alone is transparent.
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>

#include "graphics/Images.h"
#include "graphics/internal/QtImages.h"

namespace CommonGuiLib {

namespace {

uint32_t OpaqueArgb(int red, int green, int blue) {
    return 0xFF000000u | (static_cast<uint32_t>(red) << 16) | (static_cast<uint32_t>(green) << 8) |
           static_cast<uint32_t>(blue);
}

// The colour at step k of n from a to b, each channel a + (b - a) * k / n truncated toward 0.
uint32_t Interpolate(const GradientColor& a, const GradientColor& b, int64_t k, int64_t n) {
    const auto channel = [&](uint8_t from, uint8_t to) {
        return static_cast<int>(from + (int64_t{to} - from) * k / n);
    };
    return OpaqueArgb(channel(a.red, b.red), channel(a.green, b.green), channel(a.blue, b.blue));
}

// Pixels of the gradient's area, in the area's own coordinates, written into an image at an
// offset and clipped to both the area and the image.
class AreaCanvas {
public:
    AreaCanvas(QImage& image, int32_t x, int32_t y, int32_t width, int32_t height)
        : m_image(image), m_x(x), m_y(y) {
        m_left = std::max<int64_t>(0, -int64_t{x});
        m_top = std::max<int64_t>(0, -int64_t{y});
        m_right = std::min<int64_t>(width, int64_t{image.width()} - x);
        m_bottom = std::min<int64_t>(height, int64_t{image.height()} - y);
    }

    bool Empty() const { return m_left >= m_right || m_top >= m_bottom; }
    // The visible part of the area: [Left, Right) x [Top, Bottom).
    int64_t Left() const { return m_left; }
    int64_t Top() const { return m_top; }
    int64_t Right() const { return m_right; }
    int64_t Bottom() const { return m_bottom; }

    void Fill(int64_t left, int64_t top, int64_t right, int64_t bottom, uint32_t argb) {
        left = std::max(left, m_left);
        top = std::max(top, m_top);
        right = std::min(right, m_right);
        bottom = std::min(bottom, m_bottom);
        for (int64_t row = top; row < bottom; ++row) {
            auto* line = reinterpret_cast<uint32_t*>(m_image.scanLine(static_cast<int>(row + m_y)));
            std::fill(line + left + m_x, line + right + m_x, argb);
        }
    }

    void Plot(int64_t px, int64_t py, uint32_t argb) {
        if (px < m_left || px >= m_right || py < m_top || py >= m_bottom) return;
        reinterpret_cast<uint32_t*>(m_image.scanLine(static_cast<int>(py + m_y)))[px + m_x] = argb;
    }

    // A one-pixel 45-degree line from (x0, y0) towards (x1, y1) that, like the system's
    // line drawing, leaves out its end point; only the visible pixels are visited.
    void Diagonal(int64_t x0, int64_t y0, int64_t x1, int64_t y1, uint32_t argb) {
        const int64_t length = std::llabs(x1 - x0);
        const int64_t sx = x1 < x0 ? -1 : 1, sy = y1 < y0 ? -1 : 1;
        int64_t first = 0, last = length;  // pixels i in [first, last)
        const auto clip = [&](int64_t origin, int64_t step, int64_t low, int64_t high) {
            // origin + i * step must lie in [low, high)
            if (step > 0) {
                first = std::max(first, low - origin);
                last = std::min(last, high - origin);
            } else {
                first = std::max(first, origin - high + 1);
                last = std::min(last, origin - low + 1);
            }
        };
        clip(x0, sx, m_left, m_right);
        clip(y0, sy, m_top, m_bottom);
        for (int64_t i = first; i < last; ++i) Plot(x0 + i * sx, y0 + i * sy, argb);
    }

private:
    QImage& m_image;
    int64_t m_x, m_y;
    int64_t m_left = 0, m_top = 0, m_right = 0, m_bottom = 0;
};

void PaintStripes(AreaCanvas& canvas, const GradientDescription& gradient, bool horizontal) {
    const int64_t extent = horizontal ? gradient.width : gradient.height;
    const auto offset = [&](double position) {
        // Positions far outside 0..1 would overflow; beyond the area nothing shows anyway.
        const double value = std::trunc(position * static_cast<double>(extent));
        return static_cast<int64_t>(std::clamp(value, -4.0 * extent - 1, 4.0 * extent + 1));
    };
    for (auto stop = gradient.stops.begin(); std::next(stop) != gradient.stops.end(); ++stop) {
        const auto next = std::next(stop);
        const int64_t start = offset(stop->first);
        const int64_t span = offset(next->first) - start;
        // Only the stripes that can be seen are worth computing.
        const int64_t first = (horizontal ? canvas.Left() : canvas.Top()) - start;
        const int64_t last = (horizontal ? canvas.Right() : canvas.Bottom()) - start;
        for (int64_t k = std::max<int64_t>(0, first); k < std::min(span, last); ++k) {
            const uint32_t argb = Interpolate(stop->second, next->second, k, span);
            if (horizontal)
                canvas.Fill(start + k, 0, start + k + 1, gradient.height, argb);
            else
                canvas.Fill(0, start + k, gradient.width, start + k + 1, argb);
        }
    }
}

void PaintDiagonal(AreaCanvas& canvas, const GradientDescription& gradient, bool fromTopRight) {
    if (gradient.stops.size() != 2) return;
    const GradientColor& from = gradient.stops.begin()->second;
    const GradientColor& to = std::prev(gradient.stops.end())->second;
    const int64_t width = gradient.width, height = gradient.height;
    const auto mirror = [&](int64_t x) { return fromTopRight ? width - x : x; };
    // P runs down the left edge then along the bottom, Q along the top then down the right
    // edge, one pixel per step, and step k draws the line from P to Q. Both stay on the
    // anti-diagonal x + y = k, so only the steps whose line crosses the visible part are
    // drawn; the walk ends when P reaches x = width, at step width + height.
    const int64_t steps = width + height;
    int64_t firstStep = 1, lastStep = steps;
    if (fromTopRight) {  // mirrored: y - x' = k - width
        firstStep = std::max(firstStep, width + canvas.Top() - (canvas.Right() - 1));
        lastStep = std::min(lastStep, width + canvas.Bottom() - 1 - canvas.Left());
    } else {
        firstStep = std::max(firstStep, canvas.Left() + canvas.Top());
        lastStep = std::min(lastStep, canvas.Right() - 1 + canvas.Bottom() - 1);
    }
    for (int64_t k = firstStep; k <= lastStep; ++k) {
        const int64_t px = k <= height ? 0 : k - height, py = std::min(k, height);
        const int64_t qx = std::min(k, width), qy = k <= width ? 0 : k - width;
        canvas.Diagonal(mirror(px), py, mirror(qx), qy, Interpolate(from, to, k, steps));
    }
}

void PaintArea(AreaCanvas& canvas, const GradientDescription& gradient) {
    if (gradient.width <= 0 || gradient.height <= 0 || canvas.Empty()) return;
    if (gradient.stops.empty()) return;
    if (gradient.stops.size() == 1) {
        const GradientColor& color = gradient.stops.begin()->second;
        canvas.Fill(0, 0, gradient.width, gradient.height,
                    OpaqueArgb(color.red, color.green, color.blue));
        return;
    }
    switch (gradient.orientation) {
        case Gradient_Horizontal:
            PaintStripes(canvas, gradient, true);
            break;
        case Gradient_Vertical:
            PaintStripes(canvas, gradient, false);
            break;
        case Gradient_DiagonalTLBR:
            PaintDiagonal(canvas, gradient, false);
            break;
        case Gradient_DiagonalTRBL:
            PaintDiagonal(canvas, gradient, true);
            break;
        default:  // an orientation we do not know paints nothing
            break;
    }
}

}  // namespace

void PaintGradient(QPainter& dc, int32_t x, int32_t y, const GradientDescription& gradient) {
    if (gradient.width <= 0 || gradient.height <= 0 || gradient.stops.empty()) return;
    QImage layer(gradient.width, gradient.height, QImage::Format_ARGB32);
    if (layer.isNull()) return;
    layer.fill(0u);
    AreaCanvas canvas(layer, 0, 0, gradient.width, gradient.height);
    PaintArea(canvas, gradient);
    // Painted pixels are opaque and replace what is below; the rest is fully transparent.
    dc.save();
    dc.setCompositionMode(QPainter::CompositionMode_SourceOver);
    dc.setOpacity(1.0);
    dc.drawImage(x, y, layer);
    dc.restore();
}

void PaintGradient(const SharedBitmap& target, int32_t x, int32_t y,
                   const GradientDescription& gradient) {
    QImage* image = internal::ImageOf(target);
    if (!image || image->isNull()) return;
    if (!internal::IsDibLayout(image->format())) {
        image->convertTo(QImage::Format_ARGB32);
        if (image->isNull()) return;
    }
    AreaCanvas canvas(*image, x, y, gradient.width, gradient.height);
    PaintArea(canvas, gradient);
}

}  // namespace CommonGuiLib
