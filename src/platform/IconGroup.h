// Icons: the directory of an icon group (RT_GROUP_ICON, whose images are RT_ICON
// resources) or of an .ico file (whose images lie in the file), read by the same code,
// and the choice of the best image for a requested size. An image is handed out as a
// one-image .ico file, which image decoders read directly.
//
// Thread safety: a parsed group is immutable; any thread may read it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/ResourceImage.h"

namespace Platform {

struct IconImageInfo {
    uint16_t width = 0;  // pixels; the directory's 0 means 256
    uint16_t height = 0;
    uint8_t colorCount = 0;
    uint16_t planes = 0;
    uint16_t bitCount = 0;
    uint32_t bytesInRes = 0;
    uint16_t id = 0;      // group: the RT_ICON resource number
    uint32_t offset = 0;  // .ico file: where the image starts
};

class IconGroup {
public:
    // An RT_GROUP_ICON resource. Returns 0 or InvalidData.
    uint32_t ParseGroup(std::span<const uint8_t> bytes);
    // A whole .ico file; every image must lie inside it. Returns 0, BadFormat or InvalidData.
    uint32_t ParseIcoFile(std::span<const uint8_t> bytes);

    static bool LooksLikeIcoFile(std::span<const uint8_t> bytes);

    const std::vector<IconImageInfo>& Images() const { return m_images; }

    // The image closest to cx x cy (least difference of width plus height; on a tie the
    // larger image, then the deeper colour). -1 when the group is empty.
    int BestImage(int cx, int cy) const;

    // The bytes of image `index`: from the .ico file given to ParseIcoFile (`file`), or the
    // RT_ICON resource of `image` in `language`. Empty when missing or out of range.
    std::span<const uint8_t> ImageBytes(int index, std::span<const uint8_t> file) const;
    std::span<const uint8_t> ImageBytes(int index, const ResourceImage& image,
                                        uint16_t language) const;

    // A one-image .ico file holding `bytes` (a DIB or PNG image) described by `info`.
    static std::vector<uint8_t> MakeIcoFile(const IconImageInfo& info,
                                            std::span<const uint8_t> bytes);

private:
    uint32_t ParseDirectory(std::span<const uint8_t> bytes, bool isFile);

    std::vector<IconImageInfo> m_images;
};

// The icon of a file, as the system's icon extraction gives it for "file,index": group icon
// number `index` (in directory order: named groups, then numbered ones ascending) of a
// .res, ELF or PE file, or image `index` of an .ico file, at the image size closest to
// cx x cy. On success `icoFile` holds a one-image .ico file. Returns 0 or a Win32 error
// (NameNotFound when there is no such icon).
uint32_t ExtractIconFromFile(const std::string& path, unsigned index, int cx, int cy,
                             std::vector<uint8_t>& icoFile);

// The group icon `name` of an image, best image for cx x cy, as a one-image .ico file.
uint32_t LoadIconFromImage(const ResourceImage& image, const ResourceName& name, uint16_t language,
                           int cx, int cy, std::vector<uint8_t>& icoFile);

}  // namespace Platform
