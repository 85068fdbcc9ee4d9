// Icons from .ico files, from the group icons of a module and by "file,index".
//
// The platform's icon reader picks the image and hands it out as a one-image .ico file,
// which Qt's ICO decoder reads whether the image is a DIB with its mask or a PNG.
#include <QImage>

#include <vector>

#include "foundation/TextConversion.h"
#include "graphics/Images.h"
#include "graphics/internal/QtImages.h"
#include "platform/IconGroup.h"
#include "platform/ResourceImage.h"
#include "system/FileHelpers.h"
#include "system/ModuleResources.h"

namespace CommonGuiLib {

namespace {

// The system's large icon size, which an icon asked for at size 0 is chosen for.
constexpr int kDefaultIconSize = 32;
constexpr int kSmallIconSize = 16;

int ChoiceSize(int32_t requested) {
    return requested > 0 ? requested : kDefaultIconSize;
}

// The decoded icon at its own size in each dimension asked for as 0 (or less), else scaled.
SharedIcon DecodeIcon(const std::vector<uint8_t>& icoFile, int32_t cx, int32_t cy) {
    QImage image = internal::DecodeArgb(icoFile, "ICO");
    if (image.isNull()) return internal::MakeIcon({});
    const int width = cx > 0 ? cx : image.width();
    const int height = cy > 0 ? cy : image.height();
    if (width != image.width() || height != image.height()) {
        image = image.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                    .convertToFormat(QImage::Format_ARGB32);
    }
    return internal::MakeIcon(std::move(image));
}

SharedIcon LoadIconFromModuleNamed(const std::wstring& modulePath,
                                   const Platform::ResourceName& name, int32_t cx, int32_t cy) {
    const auto image = System::GetModuleResources(modulePath);
    if (!image) return internal::MakeIcon({});
    std::vector<uint8_t> icoFile;
    if (Platform::LoadIconFromImage(*image, name, Platform::LANG_NEUTRAL, ChoiceSize(cx),
                                    ChoiceSize(cy), icoFile) != 0)
        return internal::MakeIcon({});
    return DecodeIcon(icoFile, cx, cy);
}

}  // namespace

SharedIcon LoadIconFromFile(const std::wstring& path, int32_t cx, int32_t cy) {
    std::vector<uint8_t> file;
    if (path.empty() || !System::ReadWholeFile(path, file)) return internal::MakeIcon({});
    // Only icon files are icons, as for the system's icon loader; other images fail.
    Platform::IconGroup group;
    if (group.ParseIcoFile(file) != 0) return internal::MakeIcon({});
    const int best = group.BestImage(ChoiceSize(cx), ChoiceSize(cy));
    if (best < 0) return internal::MakeIcon({});
    const auto bytes = group.ImageBytes(best, file);
    if (bytes.empty()) return internal::MakeIcon({});
    const std::vector<uint8_t> icoFile =
        Platform::IconGroup::MakeIcoFile(group.Images()[static_cast<std::size_t>(best)], bytes);
    return DecodeIcon(icoFile, cx, cy);
}

SharedIcon LoadIconFromModule(const std::wstring& modulePath, uint32_t id, int32_t cx, int32_t cy) {
    if (id > 0xFFFF) return internal::MakeIcon({});
    return LoadIconFromModuleNamed(modulePath, Platform::ResourceName(static_cast<uint16_t>(id)),
                                   cx, cy);
}

SharedIcon LoadIconFromModule(const std::wstring& modulePath, const std::wstring& name, int32_t cx,
                              int32_t cy) {
    if (name.empty()) return internal::MakeIcon({});
    return LoadIconFromModuleNamed(modulePath, Platform::ResourceName::FromWide(name), cx, cy);
}

SharedIcon ExtractIconFromFile(const std::wstring& file, uint32_t index, bool large) {
    if (file.empty()) return internal::MakeIcon({});
    const int size = large ? kDefaultIconSize : kSmallIconSize;
    std::vector<uint8_t> icoFile;
    if (Platform::ExtractIconFromFile(STLHelpers::WideToUtf8(file), index, size, size, icoFile) !=
        0)
        return internal::MakeIcon({});
    // The extracted icon always has the system's icon size, whatever the image's own.
    return DecodeIcon(icoFile, size, size);
}

int32_t IconWidth(const SharedIcon& icon) {
    const QImage* image = internal::ImageOf(icon);
    return image ? image->width() : 0;
}

int32_t IconHeight(const SharedIcon& icon) {
    const QImage* image = internal::ImageOf(icon);
    return image ? image->height() : 0;
}

}  // namespace CommonGuiLib
