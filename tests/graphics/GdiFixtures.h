// Image fixtures the gdi tests write themselves: 32-bit one-colour icon images, .ico files
// with several images, and .res images with a bitmap and a group icon.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace GdiFixtures {

// Little-endian 16- or 32-bit values.
inline void Put(std::string& out, uint32_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((value >> (8 * i)) & 0xFF));
}

// A 32-bit DIB of one colour 0xAARRGGBB; an icon image has a doubled height and a mask.
inline std::string Dib(int width, int height, uint32_t argb, bool icon) {
    std::string dib;
    for (uint32_t field : {40u, uint32_t(width), uint32_t(icon ? height * 2 : height)})
        Put(dib, field, 4);
    Put(dib, 1, 2);
    Put(dib, 32, 2);
    dib.append(24, '\0');
    for (int i = 0; i < width * height; ++i) Put(dib, argb, 4);
    if (icon) dib.append(static_cast<std::size_t>((width + 31) / 32 * 4 * height), '\0');
    return dib;
}

struct IconImage {
    int size;
    uint32_t argb;
};

// An icon directory: entries end with the image's offset in a file, or with the RT_ICON
// number (1, 2, ...) in a group resource. The images go to `dibs`.
inline std::string IconDirectory(const std::vector<IconImage>& images, bool file,
                                 std::vector<std::string>& dibs) {
    std::string out;
    for (uint32_t field : {0u, 1u, uint32_t(images.size())}) Put(out, field, 2);
    uint32_t offset = 6 + 16 * static_cast<uint32_t>(images.size());
    for (std::size_t i = 0; i < images.size(); ++i) {
        dibs.push_back(Dib(images[i].size, images[i].size, images[i].argb, true));
        const auto size = static_cast<uint32_t>(dibs.back().size());
        Put(out, images[i].size | images[i].size << 8, 4);
        Put(out, 1 | 32 << 16, 4);
        Put(out, size, 4);
        Put(out, file ? offset : uint32_t(i + 1), file ? 4 : 2);
        offset += size;
    }
    return out;
}

inline std::string IcoFile(const std::vector<IconImage>& images) {
    std::vector<std::string> dibs;
    std::string out = IconDirectory(images, true, dibs);
    for (const std::string& dib : dibs) out += dib;
    return out;
}

// A .res image: bitmap 7 (3 x 2 of `bitmapArgb`) and group icon 9 made of `icons`.
inline std::string ResImage(uint32_t bitmapArgb, const std::vector<IconImage>& icons) {
    std::string out;
    const auto entry = [&](uint16_t type, uint16_t name, const std::string& data) {
        Put(out, static_cast<uint32_t>(data.size()), 4);
        Put(out, 32, 4);
        Put(out, 0xFFFFu | uint32_t(type) << 16, 4);
        Put(out, 0xFFFFu | uint32_t(name) << 16, 4);
        out.append(16, '\0');  // version, flags, language 0, characteristics
        out += data;
        out.append((4 - out.size() % 4) % 4, '\0');
    };
    entry(0, 0, "");
    entry(2, 7, Dib(3, 2, bitmapArgb, false));
    std::vector<std::string> dibs;
    const std::string group = IconDirectory(icons, false, dibs);
    for (std::size_t i = 0; i < dibs.size(); ++i) entry(3, static_cast<uint16_t>(i + 1), dibs[i]);
    entry(14, 9, group);
    return out;
}

}  // namespace GdiFixtures
