// Fonts described as a LOGFONT does, turned into QFont and back.
//
// Heights: a negative height is the character (em) height in pixels, which is what Qt's
// pixel size means. A positive height is the cell height, which Qt has no measure for; it
// is approximated by a font of that many pixels but recorded as a point size (at 96 dots
// per inch), so that DescribeFont can tell the two kinds apart again. A height of 0 sets
// no size at all, and a font whose size was never set reads back as 0. Weight works the
// same way: 0 leaves the weight unset and reads back as 0.
#include <QFont>
#include <QString>

#include <algorithm>
#include <cmath>
#include <memory>

#include "graphics/Images.h"

namespace CommonGuiLib {

namespace {

constexpr double kPointsPerPixel = 72.0 / 96.0;
// Larger sizes are no font anyone can draw; they are capped rather than overflowing.
constexpr int64_t kMaxPixelSize = 0x7FFF;

// LOGFONT output qualities, from DEFAULT_QUALITY (0) to CLEARTYPE_NATURAL_QUALITY (6).
constexpr int kStrategies[] = {
    QFont::PreferDefault,
    QFont::PreferBitmap,
    QFont::PreferQuality,
    QFont::NoAntialias,
    QFont::PreferAntialias | QFont::NoSubpixelAntialias,
    QFont::PreferAntialias,
    QFont::PreferAntialias | QFont::PreferQuality,
};

}  // namespace

SharedFont CreateFontIndirect(const LogFont& font) {
    auto owned = std::make_unique<QFont>();
    QFont* qfont = owned.get();
    SharedFont result = boost::make_shared<SharedGDIObjectImpl<kFontObject>>(qfont);
    owned.release();  // the holder owns it now
    const int64_t height = font.height;
    if (height < 0) {
        qfont->setPixelSize(static_cast<int>(std::min(-height, kMaxPixelSize)));
    } else if (height > 0) {
        qfont->setPointSizeF(static_cast<double>(std::min(height, kMaxPixelSize)) *
                             kPointsPerPixel);
    }
    if (font.weight != 0)
        qfont->setWeight(static_cast<QFont::Weight>(std::clamp<int32_t>(font.weight, 1, 1000)));
    qfont->setItalic(font.italic);
    qfont->setUnderline(font.underline);
    qfont->setStrikeOut(font.strikeOut);
    if (font.quality < std::size(kStrategies))
        qfont->setStyleStrategy(static_cast<QFont::StyleStrategy>(kStrategies[font.quality]));
    if (!font.faceName.empty()) qfont->setFamily(QString::fromStdWString(font.faceName));
    return result;
}

SharedFont WrapFont(QFont* font) {
    return boost::make_shared<SharedGDIObjectImpl<kFontObject>>(font);
}

LogFont DescribeFont(const SharedFont& font) {
    LogFont description;
    const QFont* qfont = font ? font->GetHandle() : nullptr;
    if (!qfont) return description;
    const uint mask = qfont->resolveMask();
    if (mask & QFont::SizeResolved) {
        if (qfont->pixelSize() > 0)
            description.height = -qfont->pixelSize();
        else if (qfont->pointSizeF() > 0)
            description.height =
                static_cast<int32_t>(std::lround(qfont->pointSizeF() / kPointsPerPixel));
    }
    if (mask & QFont::WeightResolved) description.weight = qfont->weight();
    description.italic = qfont->italic();
    description.underline = qfont->underline();
    description.strikeOut = qfont->strikeOut();
    const int strategy = qfont->styleStrategy();
    for (std::size_t quality = 0; quality < std::size(kStrategies); ++quality) {
        if (kStrategies[quality] == strategy) description.quality = static_cast<uint8_t>(quality);
    }
    if (mask & (QFont::FamilyResolved | QFont::FamiliesResolved))
        description.faceName = qfont->family().toStdWString();
    return description;
}

}  // namespace CommonGuiLib
