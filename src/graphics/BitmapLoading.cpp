// Bitmaps from image files and from the bitmap resources of a module.
#include <QImage>

#include <vector>

#include "graphics/Images.h"
#include "graphics/internal/QtImages.h"
#include "platform/BitmapResource.h"
#include "platform/ResourceImage.h"
#include "system/FileHelpers.h"
#include "system/ModuleResources.h"

namespace CommonGuiLib {

namespace {

SharedBitmap LoadBitmapResourceNamed(const Platform::ResourceName& name,
                                     const std::wstring& modulePath) {
    const System::ModuleResource resource =
        System::FindModuleResource(modulePath, name, Platform::RT_BITMAP);
    if (!resource) return internal::MakeBitmap({});
    // A bitmap resource is a .bmp file without its file header.
    std::vector<uint8_t> bmpFile;
    if (Platform::BitmapResource::MakeBmpFile(resource.data, bmpFile) != 0)
        return internal::MakeBitmap({});
    return internal::MakeBitmap(internal::DecodeArgb(bmpFile, "BMP"));
}

}  // namespace

SharedBitmap LoadBitmapFromFile(const std::wstring& path) {
    std::vector<uint8_t> bytes;
    // The content decides the format, so a file named for another type still loads.
    if (path.empty() || !System::ReadWholeFile(path, bytes)) return internal::MakeBitmap({});
    return internal::MakeBitmap(internal::DecodeArgb(bytes));
}

SharedBitmap LoadBitmapResource(uint32_t id, const std::wstring& modulePath) {
    // Resource numbers are 16-bit; a larger id names nothing.
    if (id > 0xFFFF) return internal::MakeBitmap({});
    return LoadBitmapResourceNamed(Platform::ResourceName(static_cast<uint16_t>(id)), modulePath);
}

SharedBitmap LoadBitmapResource(const std::wstring& name, const std::wstring& modulePath) {
    if (name.empty()) return internal::MakeBitmap({});
    return LoadBitmapResourceNamed(Platform::ResourceName::FromWide(name), modulePath);
}

SharedBitmap CreateCompatibleBitmap(int32_t width, int32_t height) {
    // A size from a resource file is refused beyond what a screen could show, rather than
    // letting a typing mistake allocate gigabytes.
    constexpr int32_t kMaxSide = 16384;
    constexpr int64_t kMaxPixels = int64_t(64) << 20;  // 256 MiB of 32-bit pixels
    if (width <= 0 || height <= 0 || width > kMaxSide || height > kMaxSide ||
        int64_t(width) * height > kMaxPixels)
        return internal::MakeBitmap({});
    // QImage refuses sizes it cannot allocate by giving a null image.
    QImage image(width, height, QImage::Format_ARGB32);
    if (image.isNull()) return internal::MakeBitmap({});
    image.fill(0u);
    return internal::MakeBitmap(std::move(image));
}

}  // namespace CommonGuiLib
