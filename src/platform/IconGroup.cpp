#include "platform/IconGroup.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "platform/SystemMessages.h"
#include "platform/internal/ByteReader.h"
#include "platform/internal/DataSource.h"

namespace Platform {
namespace {

constexpr uint64_t kMaxIcoFileSize = uint64_t{64} << 20;

void PutU16(std::vector<uint8_t>& out, uint16_t v) {
    out.push_back(static_cast<uint8_t>(v));
    out.push_back(static_cast<uint8_t>(v >> 8));
}
void PutU32(std::vector<uint8_t>& out, uint32_t v) {
    PutU16(out, static_cast<uint16_t>(v));
    PutU16(out, static_cast<uint16_t>(v >> 16));
}

uint32_t ReadWholeFile(const std::string& path, std::vector<uint8_t>& out) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return LastWin32Error();
    struct stat info {};
    uint32_t error = 0;
    if (::fstat(fd, &info) != 0)
        error = LastWin32Error();
    else if (!S_ISREG(info.st_mode) || static_cast<uint64_t>(info.st_size) > kMaxIcoFileSize)
        error = ResourceErrors::BadFormat;
    else
        error = internal::FileSource(fd, static_cast<uint64_t>(info.st_size))
                    .Read(0, static_cast<uint64_t>(info.st_size), out);
    ::close(fd);
    return error;
}

bool NameOrder(const ResourceName& a, const ResourceName& b) {
    if (a.IsNumber() != b.IsNumber()) return !a.IsNumber();  // named groups come first
    if (a.IsNumber()) return a.Number() < b.Number();
    return a.Text() < b.Text();
}

}  // namespace

bool IconGroup::LooksLikeIcoFile(std::span<const uint8_t> bytes) {
    return bytes.size() >= 6 && bytes[0] == 0 && bytes[1] == 0 && bytes[2] == 1 && bytes[3] == 0;
}

uint32_t IconGroup::ParseGroup(std::span<const uint8_t> bytes) {
    return ParseDirectory(bytes, false);
}

uint32_t IconGroup::ParseIcoFile(std::span<const uint8_t> bytes) {
    if (!LooksLikeIcoFile(bytes)) return ResourceErrors::BadFormat;
    return ParseDirectory(bytes, true);
}

// ICONDIR (reserved, type 1, count) and its entries: 16 bytes ending in the image's
// offset in a file, 14 bytes ending in the RT_ICON number in a group resource.
uint32_t IconGroup::ParseDirectory(std::span<const uint8_t> bytes, bool isFile) {
    m_images.clear();
    const internal::ByteReader reader(bytes);
    uint16_t type = 0, count = 0;
    if (!reader.U16(2, type) || !reader.U16(4, count) || type != 1)
        return ResourceErrors::InvalidData;
    const uint64_t entrySize = isFile ? 16 : 14;
    if (!reader.Has(6, count * entrySize)) return ResourceErrors::InvalidData;
    for (uint16_t i = 0; i < count; ++i) {
        const uint64_t at = 6 + i * entrySize;
        IconImageInfo info;
        uint8_t w = 0, h = 0;
        reader.U8(at, w);
        reader.U8(at + 1, h);
        info.width = w ? w : 256;
        info.height = h ? h : 256;
        reader.U8(at + 2, info.colorCount);
        reader.U16(at + 4, info.planes);
        reader.U16(at + 6, info.bitCount);
        reader.U32(at + 8, info.bytesInRes);
        if (isFile) {
            reader.U32(at + 12, info.offset);
            if (!reader.Has(info.offset, info.bytesInRes)) return ResourceErrors::InvalidData;
        } else {
            reader.U16(at + 12, info.id);
        }
        m_images.push_back(info);
    }
    return 0;
}

int IconGroup::BestImage(int cx, int cy) const {
    int best = -1;
    long bestDistance = 0;
    auto depth = [](const IconImageInfo& i) {
        return i.bitCount ? i.bitCount : (i.colorCount ? 4 : 8);
    };
    for (std::size_t i = 0; i < m_images.size(); ++i) {
        const IconImageInfo& image = m_images[i];
        const long distance =
            std::labs(long{image.width} - cx) + std::labs(long{image.height} - cy);
        bool better = best < 0 || distance < bestDistance;
        if (!better && distance == bestDistance) {
            const IconImageInfo& current = m_images[static_cast<std::size_t>(best)];
            const long area = long{image.width} * image.height;
            const long currentArea = long{current.width} * current.height;
            better = area > currentArea || (area == currentArea && depth(image) > depth(current));
        }
        if (better) {
            best = static_cast<int>(i);
            bestDistance = distance;
        }
    }
    return best;
}

std::span<const uint8_t> IconGroup::ImageBytes(int index, std::span<const uint8_t> file) const {
    if (index < 0 || static_cast<std::size_t>(index) >= m_images.size()) return {};
    const IconImageInfo& info = m_images[static_cast<std::size_t>(index)];
    std::span<const uint8_t> out;
    return internal::ByteReader(file).Slice(info.offset, info.bytesInRes, out)
               ? out
               : std::span<const uint8_t>();
}

std::span<const uint8_t> IconGroup::ImageBytes(int index, const ResourceImage& image,
                                               uint16_t language) const {
    if (index < 0 || static_cast<std::size_t>(index) >= m_images.size()) return {};
    return image.FindData(RT_ICON, m_images[static_cast<std::size_t>(index)].id, language);
}

std::vector<uint8_t> IconGroup::MakeIcoFile(const IconImageInfo& info,
                                            std::span<const uint8_t> bytes) {
    std::vector<uint8_t> out;
    out.reserve(22 + bytes.size());
    PutU16(out, 0);
    PutU16(out, 1);
    PutU16(out, 1);
    out.push_back(static_cast<uint8_t>(info.width >= 256 ? 0 : info.width));
    out.push_back(static_cast<uint8_t>(info.height >= 256 ? 0 : info.height));
    out.push_back(info.colorCount);
    out.push_back(0);
    PutU16(out, info.planes);
    PutU16(out, info.bitCount);
    PutU32(out, static_cast<uint32_t>(bytes.size()));
    PutU32(out, 22);
    out.insert(out.end(), bytes.begin(), bytes.end());
    return out;
}

uint32_t LoadIconFromImage(const ResourceImage& image, const ResourceName& name, uint16_t language,
                           int cx, int cy, std::vector<uint8_t>& icoFile) {
    uint32_t error = 0;
    const ResourceEntry* entry = image.Find(RT_GROUP_ICON, name, language, &error);
    if (!entry) return error;
    IconGroup group;
    if (uint32_t parseError = group.ParseGroup(image.Data(*entry))) return parseError;
    const int best = group.BestImage(cx, cy);
    const std::span<const uint8_t> bytes = group.ImageBytes(best, image, language);
    if (bytes.empty()) return ResourceErrors::NameNotFound;
    icoFile = IconGroup::MakeIcoFile(group.Images()[static_cast<std::size_t>(best)], bytes);
    return 0;
}

uint32_t ExtractIconFromFile(const std::string& path, unsigned index, int cx, int cy,
                             std::vector<uint8_t>& icoFile) {
    {
        ResourceImage image;
        const uint32_t error = image.LoadFile(path);
        if (error == 0) {
            std::vector<ResourceName> groups;
            for (const ResourceEntry& entry : image.Entries())
                if (entry.type == ResourceName(RT_GROUP_ICON) &&
                    std::find(groups.begin(), groups.end(), entry.name) == groups.end())
                    groups.push_back(entry.name);
            std::sort(groups.begin(), groups.end(), NameOrder);
            if (index >= groups.size()) return ResourceErrors::NameNotFound;
            return LoadIconFromImage(image, groups[index], LANG_NEUTRAL, cx, cy, icoFile);
        }
        if (error != ResourceErrors::BadFormat) return error;
    }
    // Not a container of resources: perhaps an .ico file, whose images are chosen by
    // their position alone, whatever the size asked for.
    std::vector<uint8_t> file;
    if (uint32_t error = ReadWholeFile(path, file)) return error;
    IconGroup group;
    if (uint32_t error = group.ParseIcoFile(file)) return error;
    if (index >= group.Images().size()) return ResourceErrors::NameNotFound;
    const std::span<const uint8_t> bytes = group.ImageBytes(static_cast<int>(index), file);
    icoFile = IconGroup::MakeIcoFile(group.Images()[index], bytes);
    return 0;
}

}  // namespace Platform
