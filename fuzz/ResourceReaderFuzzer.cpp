// libFuzzer target for the resource reader: any bytes, as a whole file and as each kind of
// resource, must be refused or read within bounds.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/BitmapResource.h"
#include "platform/DialogTemplate.h"
#include "platform/IconGroup.h"
#include "platform/ResourceImage.h"
#include "platform/StringTable.h"
#include "platform/VersionInfo.h"

namespace {

void ParseAsEveryType(std::span<const uint8_t> data) {
    std::u16string text;
    for (unsigned i = 0; i < 16; ++i) Platform::StringTable::ReadEntry(data, i, text);

    Platform::DialogTemplate dialog;
    Platform::DialogTemplate::Parse(data, dialog);

    Platform::VersionInfo version;
    if (version.Parse(data) == 0) {
        Platform::VersionInfo::Value value;
        version.Query(u"\\StringFileInfo\\040904B0\\FileVersion", value);
        Platform::VersionInfo::FixedFileInfo fixed;
        version.GetFixedFileInfo(fixed);
        version.Translations();
        version.AllStrings();
    }

    Platform::IconGroup group;
    if (group.ParseIcoFile(data) == 0) {
        const int best = group.BestImage(32, 32);
        const auto bytes = group.ImageBytes(best, data);
        if (best >= 0) Platform::IconGroup::MakeIcoFile(group.Images()[best], bytes);
    }
    group.ParseGroup(data);
    group.BestImage(16, 16);

    std::vector<uint8_t> bmp;
    Platform::BitmapResource::MakeBmpFile(data, bmp);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    const std::span<const uint8_t> data(bytes, size);
    ParseAsEveryType(data);

    Platform::ResourceImage image;
    if (image.LoadBytes(data) != 0) return 0;
    for (const Platform::ResourceEntry& entry : image.Entries()) {
        ParseAsEveryType(image.Data(entry));
        if (entry.type == Platform::ResourceName(Platform::RT_GROUP_ICON)) {
            std::vector<uint8_t> ico;
            Platform::LoadIconFromImage(image, entry.name, entry.language, 32, 32, ico);
        }
    }
    std::u16string text;
    Platform::StringTable::Load(image, 131, 0x0407, text);
    return 0;
}
