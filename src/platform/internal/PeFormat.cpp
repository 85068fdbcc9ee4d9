// The resource directory of a PE file: three levels of directories (type, name, language)
// whose leaves are data entries holding the RVA and size of the resource bytes.
#include <unordered_set>

#include "platform/internal/ByteReader.h"
#include "platform/internal/ContainerFormats.h"

namespace Platform::internal {
namespace {

constexpr uint32_t kHighBit = 0x80000000u;

struct Section {
    uint32_t virtualAddress = 0;
    uint32_t mappedSize = 0;  // bytes of the file mapped at virtualAddress
    uint32_t rawOffset = 0;
};

class PeResourceWalker {
public:
    PeResourceWalker(const DataSource& source, const std::vector<Section>& sections,
                     ResourceImage& image, uint32_t directoryBuffer, uint32_t directoryRva)
        : m_source(source),
          m_sections(sections),
          m_image(image),
          m_buffer(directoryBuffer),
          m_rva(directoryRva),
          m_dir(image.Buffer(directoryBuffer)) {}

    uint32_t Walk() {
        ResourceEntry entry;
        return WalkDirectory(0, 0, entry);
    }

private:
    uint32_t WalkDirectory(uint32_t offset, int level, ResourceEntry& entry) {
        // A directory reached twice is a loop, or at least no linker's output.
        if (!m_visited.insert(offset).second) return ResourceErrors::InvalidData;
        uint16_t named = 0, numbered = 0;
        if (!m_dir.U16(uint64_t{offset} + 12, named) || !m_dir.U16(uint64_t{offset} + 14, numbered))
            return ResourceErrors::InvalidData;
        const uint32_t count = uint32_t{named} + numbered;
        if (!m_dir.Has(uint64_t{offset} + 16, uint64_t{count} * 8))
            return ResourceErrors::InvalidData;
        for (uint32_t i = 0; i < count; ++i) {
            const uint64_t at = uint64_t{offset} + 16 + uint64_t{i} * 8;
            uint32_t nameField = 0, target = 0;
            m_dir.U32(at, nameField);
            m_dir.U32(at + 4, target);
            ResourceName name;
            if (uint32_t error = ReadName(nameField, name)) return error;
            switch (level) {
                case 0:
                    entry.type = name;
                    break;
                case 1:
                    entry.name = name;
                    break;
                default:
                    if (!name.IsNumber()) return ResourceErrors::InvalidData;
                    entry.language = name.Number();
                    break;
            }
            const bool isDirectory = (target & kHighBit) != 0;
            if (level < 2) {
                if (!isDirectory) return ResourceErrors::InvalidData;
                if (uint32_t error = WalkDirectory(target & ~kHighBit, level + 1, entry))
                    return error;
            } else {
                if (isDirectory) return ResourceErrors::InvalidData;
                if (uint32_t error = AddData(target, entry)) return error;
            }
        }
        return 0;
    }

    uint32_t ReadName(uint32_t field, ResourceName& out) const {
        if (!(field & kHighBit)) {
            if (field > 0xFFFF) return ResourceErrors::InvalidData;
            out = ResourceName(static_cast<uint16_t>(field));
            return 0;
        }
        const uint64_t at = field & ~kHighBit;
        uint16_t length = 0;
        std::span<const uint8_t> chars;
        if (!m_dir.U16(at, length) || !m_dir.Slice(at + 2, uint64_t{length} * 2, chars))
            return ResourceErrors::InvalidData;
        std::u16string text(length, u'\0');
        for (uint16_t i = 0; i < length; ++i)
            text[i] = static_cast<char16_t>(chars[2 * i] | (chars[2 * i + 1] << 8));
        out = ResourceName(std::move(text));
        return 0;
    }

    uint32_t AddData(uint32_t offset, ResourceEntry entry) {
        uint32_t rva = 0, size = 0, codePage = 0;
        if (!m_dir.U32(offset, rva) || !m_dir.U32(uint64_t{offset} + 4, size) ||
            !m_dir.U32(uint64_t{offset} + 8, codePage))
            return ResourceErrors::InvalidData;
        if (m_image.EntryCount() >= kMaxResourceEntries) return ResourceErrors::InvalidData;
        entry.codePage = codePage;
        entry.size = size;
        // Linkers put the bytes right after the directory, in the buffer we already hold.
        if (rva >= m_rva && m_dir.Has(uint64_t{rva} - m_rva, size)) {
            entry.buffer = m_buffer;
            entry.offset = rva - m_rva;
            m_image.AddEntry(std::move(entry));
            return 0;
        }
        for (const Section& s : m_sections) {
            if (rva < s.virtualAddress || rva - s.virtualAddress > s.mappedSize ||
                size > s.mappedSize - (rva - s.virtualAddress))
                continue;
            std::vector<uint8_t> bytes;
            if (uint32_t error =
                    m_source.Read(uint64_t{s.rawOffset} + (rva - s.virtualAddress), size, bytes))
                return error;
            entry.buffer = m_image.AddBuffer(std::move(bytes));
            entry.offset = 0;
            m_image.AddEntry(std::move(entry));
            return 0;
        }
        return ResourceErrors::InvalidData;
    }

    const DataSource& m_source;
    const std::vector<Section>& m_sections;
    ResourceImage& m_image;
    uint32_t m_buffer;
    uint32_t m_rva;
    ByteReader m_dir;
    std::unordered_set<uint32_t> m_visited;
};

}  // namespace

uint32_t ParsePeResources(const DataSource& source, ResourceImage& image, bool& is64) {
    std::vector<uint8_t> bytes;
    if (source.Read(0, 64, bytes) || bytes[0] != 'M' || bytes[1] != 'Z')
        return ResourceErrors::BadFormat;
    uint32_t peOffset = 0;
    ByteReader(bytes).U32(0x3C, peOffset);
    if (uint32_t error = source.Read(peOffset, 24, bytes)) return error;
    const ByteReader coff(bytes);
    if (bytes[0] != 'P' || bytes[1] != 'E' || bytes[2] != 0 || bytes[3] != 0)
        return ResourceErrors::BadFormat;
    uint16_t sectionCount = 0, optionalSize = 0;
    coff.U16(6, sectionCount);
    coff.U16(20, optionalSize);

    std::vector<uint8_t> optional;
    if (uint32_t error = source.Read(uint64_t{peOffset} + 24, optionalSize, optional)) return error;
    const ByteReader opt(optional);
    uint16_t magic = 0;
    if (!opt.U16(0, magic) || (magic != 0x10B && magic != 0x20B)) return ResourceErrors::BadFormat;
    is64 = magic == 0x20B;
    const uint64_t countAt = is64 ? 108 : 92;
    uint32_t directoryCount = 0, resourceRva = 0, resourceSize = 0;
    if (!opt.U32(countAt, directoryCount)) return ResourceErrors::InvalidData;
    if (directoryCount <= 2 || !opt.U32(countAt + 4 + 2 * 8, resourceRva) ||
        !opt.U32(countAt + 4 + 2 * 8 + 4, resourceSize) || resourceRva == 0)
        return ResourceErrors::NoResourceSection;

    std::vector<uint8_t> table;
    if (uint32_t error =
            source.Read(uint64_t{peOffset} + 24 + optionalSize, uint64_t{sectionCount} * 40, table))
        return error;
    const ByteReader sectionTable(table);
    std::vector<Section> sections;
    for (uint16_t i = 0; i < sectionCount; ++i) {
        uint32_t virtualSize = 0, rawSize = 0;
        Section s;
        sectionTable.U32(i * 40 + 8, virtualSize);
        sectionTable.U32(i * 40 + 12, s.virtualAddress);
        sectionTable.U32(i * 40 + 16, rawSize);
        sectionTable.U32(i * 40 + 20, s.rawOffset);
        // Bytes past the virtual size are not mapped; a virtual size of 0 means "raw size".
        s.mappedSize = virtualSize != 0 && virtualSize < rawSize ? virtualSize : rawSize;
        sections.push_back(s);
    }

    // The directory, its names and (usually) the data follow each other in one section:
    // take everything of that section from the directory to its end.
    for (const Section& s : sections) {
        if (resourceRva < s.virtualAddress || resourceRva - s.virtualAddress >= s.mappedSize)
            continue;
        const uint32_t skip = resourceRva - s.virtualAddress;
        std::vector<uint8_t> directory;
        if (uint32_t error =
                source.Read(uint64_t{s.rawOffset} + skip, s.mappedSize - skip, directory))
            return error;
        const uint32_t buffer = image.AddBuffer(std::move(directory));
        return PeResourceWalker(source, sections, image, buffer, resourceRva).Walk();
    }
    return ResourceErrors::InvalidData;
}

}  // namespace Platform::internal
