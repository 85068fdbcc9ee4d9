// Access to the Qt objects behind the shared holders, and the few conversions the image
// code shares. Private to the gdi library: only its sources include Qt.
#pragma once

#include <QImage>
#include <QString>

#include <cstdint>
#include <span>
#include <string>
#include <utility>

#include "graphics/SharedGDIObject.h"

namespace CommonGuiLib::internal {

// The image of a holder, or null for an empty holder or a null handle.
inline QImage* ImageOf(const SharedBitmap& bitmap) {
    return bitmap ? bitmap->GetHandle() : nullptr;
}
inline QImage* ImageOf(const SharedIcon& icon) {
    return icon ? icon->GetHandle() : nullptr;
}

// Every loader hands out a holder; a null image gives one with a null handle.
inline SharedBitmap MakeBitmap(QImage image) {
    if (image.isNull()) return boost::make_shared<SharedGDIObjectImpl<kBitmapObject>>();
    return boost::make_shared<SharedGDIObjectImpl<kBitmapObject>>(new QImage(std::move(image)));
}
inline SharedIcon MakeIcon(QImage image) {
    if (image.isNull()) return boost::make_shared<SharedGDIObjectImpl<kIconObject>>();
    return boost::make_shared<SharedGDIObjectImpl<kIconObject>>(new QImage(std::move(image)));
}

// Formats whose pixels are 32-bit words 0xAARRGGBB, so blue, green, red, alpha bytes in
// memory, as a 32-bit DIB keeps them.
inline bool IsDibLayout(QImage::Format format) {
    return format == QImage::Format_ARGB32 || format == QImage::Format_ARGB32_Premultiplied ||
           format == QImage::Format_RGB32;
}

// Decodes image bytes in any format Qt reads, as a 32-bit ARGB image (opaque when the
// format has no alpha). Null when the bytes are no image. `format` is a hint such as "ICO".
inline QImage DecodeArgb(std::span<const uint8_t> bytes, const char* format = nullptr) {
    if (bytes.empty() || bytes.size() > static_cast<std::size_t>(INT32_MAX)) return {};
    QImage image;
    if (!image.loadFromData(bytes.data(), static_cast<int>(bytes.size()), format)) return {};
    return image.convertToFormat(QImage::Format_ARGB32);
}

inline QString ToQString(const std::wstring& text) {
    return QString::fromStdWString(text);
}

}  // namespace CommonGuiLib::internal
