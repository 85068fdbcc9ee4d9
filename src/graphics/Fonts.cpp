// Fonts described as a LOGFONT does, turned into QFont and back.
//
// Heights: a negative height is the character (em) height in pixels, which is what Qt's
// pixel size means. A positive height is the cell height, ascent plus descent: the font is
// made with the largest pixel size whose measured line height is at most that many pixels.
// Measuring needs the font database; without a GUI the cell height is taken as the pixel
// size, which nobody sees, as nothing is drawn then. A height of 0 sets no size at all.
//
// Every font made here keeps the description it was made from, as a GDI font object does,
// so DescribeFont gives back exactly what was asked for (a positive height stays a cell
// height). Fonts made elsewhere and wrapped are described from what Qt reports.
#include <QFont>
#include <QFontMetrics>
#include <QString>

#include <algorithm>
#include <cmath>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "graphics/GuiSession.h"
#include "graphics/Images.h"
#include "graphics/internal/FontRecords.h"

namespace CommonGuiLib {

namespace {

// Larger sizes are no font anyone can draw; they are capped rather than overflowing.
constexpr int64_t kMaxPixelSize = 0x7FFF;
constexpr double kPixelsPerPoint = 96.0 / 72.0;
// Qt's stretch factor is a percentage between these.
constexpr int kMinStretch = 1;
constexpr int kMaxStretch = 4000;

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

struct Records {
    std::mutex lock;
    std::unordered_map<const QFont*, LogFont> byFont;
};

// Never destroyed: fonts held by static objects may be released at exit, after it.
Records& FontRecords() {
    static auto* records = new Records;
    return *records;
}

int LineHeightAt(QFont font, int pixelSize) {
    font.setPixelSize(pixelSize);
    return QFontMetrics(font).height();
}

// The largest pixel size whose line height (ascent plus descent) is at most `cell`, and at
// least 1. Starts from the proportion measured at `cell` and walks to the boundary, as
// hinting makes line heights step unevenly.
int PixelSizeForCellHeight(const QFont& font, int cell) {
    const int measured = LineHeightAt(font, cell);
    if (measured <= 0) return cell;
    int size = static_cast<int>(std::clamp<int64_t>(
        std::lround(static_cast<double>(cell) * cell / measured), 1, kMaxPixelSize));
    while (size > 1 && LineHeightAt(font, size) > cell) --size;
    while (size < kMaxPixelSize && LineHeightAt(font, size + 1) <= cell) ++size;
    return size;
}

}  // namespace

SharedFont CreateFontIndirect(const LogFont& font) {
    auto owned = std::make_unique<QFont>();
    QFont* qfont = owned.get();
    if (!font.faceName.empty()) qfont->setFamily(QString::fromStdWString(font.faceName));
    if (font.weight != 0)
        qfont->setWeight(static_cast<QFont::Weight>(std::clamp<int32_t>(font.weight, 1, 1000)));
    qfont->setItalic(font.italic);
    qfont->setUnderline(font.underline);
    qfont->setStrikeOut(font.strikeOut);
    if (font.quality < std::size(kStrategies))
        qfont->setStyleStrategy(static_cast<QFont::StyleStrategy>(kStrategies[font.quality]));
    // Qt picks the script from the text itself, so the character set is only recorded; the
    // escapement and orientation are applied by whoever draws (Qt fonts carry no angle).
    const bool canMeasure = GuiSession::IsGuiRunning();
    const int64_t height = font.height;
    if (height < 0) {
        qfont->setPixelSize(static_cast<int>(std::min(-height, kMaxPixelSize)));
    } else if (height > 0) {
        const int cell = static_cast<int>(std::min(height, kMaxPixelSize));
        qfont->setPixelSize(canMeasure ? PixelSizeForCellHeight(*qfont, cell) : cell);
    }
    if (font.width > 0 && canMeasure) {
        // A width is the average character width; Qt scales the face horizontally.
        const int natural = QFontMetrics(*qfont).averageCharWidth();
        if (natural > 0)
            qfont->setStretch(static_cast<int>(std::clamp<int64_t>(
                std::lround(100.0 * font.width / natural), kMinStretch, kMaxStretch)));
    }

    SharedFont result = boost::make_shared<SharedGDIObjectImpl<kFontObject>>(qfont);
    owned.release();  // the holder owns it now
    Records& records = FontRecords();
    const std::lock_guard<std::mutex> guard(records.lock);
    records.byFont[qfont] = font;
    return result;
}

SharedFont WrapFont(QFont* font) {
    return boost::make_shared<SharedGDIObjectImpl<kFontObject>>(font);
}

LogFont DescribeFont(const SharedFont& font) {
    LogFont description;
    const QFont* qfont = font ? font->GetHandle() : nullptr;
    if (!qfont) return description;
    {
        Records& records = FontRecords();
        const std::lock_guard<std::mutex> guard(records.lock);
        if (const auto found = records.byFont.find(qfont); found != records.byFont.end())
            return found->second;
    }
    const uint mask = qfont->resolveMask();
    if (mask & QFont::SizeResolved) {
        if (qfont->pixelSize() > 0)
            description.height = -qfont->pixelSize();
        else if (qfont->pointSizeF() > 0)
            description.height =
                -static_cast<int32_t>(std::lround(qfont->pointSizeF() * kPixelsPerPoint));
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

namespace internal {

void ForgetFontRecord(const QFont* font) {
    Records& records = FontRecords();
    const std::lock_guard<std::mutex> guard(records.lock);
    records.byFont.erase(font);
}

}  // namespace internal

}  // namespace CommonGuiLib
