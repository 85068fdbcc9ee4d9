// Resources in the Windows resource format, read from any of the three containers we meet:
//   - a .res image, the output of a resource compiler;
//   - an ELF file carrying such an image in a section named ".rsrc" (our own binaries);
//   - a Windows PE file, 32- or 64-bit: its resource directory.
// Resources are found by type, name and language with the fall-back of FindResourceEx.
//
// Every offset and size in the input is checked before use: a truncated, corrupt or
// hostile file is refused with a Win32 error number, never read out of bounds.
//
// Thread safety: loading fills one image and must not overlap other use of it; a loaded
// image is immutable and may be read from any number of threads. Copies share the bytes.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

// The predefined resource types (the numbers behind RT_xxx).
enum ResourceType : uint16_t {
    RT_CURSOR = 1,
    RT_BITMAP = 2,
    RT_ICON = 3,
    RT_MENU = 4,
    RT_DIALOG = 5,
    RT_STRING = 6,
    RT_FONTDIR = 7,
    RT_FONT = 8,
    RT_ACCELERATOR = 9,
    RT_RCDATA = 10,
    RT_MESSAGETABLE = 11,
    RT_GROUP_CURSOR = 12,
    RT_GROUP_ICON = 14,
    RT_VERSION = 16,
    RT_DLGINCLUDE = 17,
    RT_PLUGPLAY = 19,
    RT_VXD = 20,
    RT_ANICURSOR = 21,
    RT_ANIICON = 22,
    RT_HTML = 23,
    RT_MANIFEST = 24,
};

// The Win32 error numbers the reader reports.
namespace ResourceErrors {
constexpr uint32_t FileNotFound = 2;
constexpr uint32_t InvalidData = 13;  // a structure points outside the file or loops
constexpr uint32_t BadFormat = 193;   // neither a .res image, nor ELF, nor PE
constexpr uint32_t NoResourceSection = 1812;
constexpr uint32_t TypeNotFound = 1813;
constexpr uint32_t NameNotFound = 1814;
constexpr uint32_t LanguageNotFound = 1815;
}  // namespace ResourceErrors

// Language identifiers: primary language in the low 10 bits, sub-language above.
constexpr uint16_t MakeLangId(uint16_t primary, uint16_t sub) {
    return static_cast<uint16_t>((sub << 10) | primary);
}
constexpr uint16_t PrimaryLangId(uint16_t language) {
    return language & 0x3FF;
}
constexpr uint16_t SubLangId(uint16_t language) {
    return language >> 10;
}
constexpr uint16_t LANG_NEUTRAL = 0;

// A resource type or name: a number (an integer resource) or a text. Texts compare
// without regard to ASCII case, as the resource compiler stores them in upper case and
// the system upper-cases the text it looks for.
class ResourceName {
public:
    ResourceName() = default;
    ResourceName(uint16_t number)
        : m_isNumber(true), m_number(number) {}  // NOLINT: as MAKEINTRESOURCE
    explicit ResourceName(std::u16string text) : m_isNumber(false), m_text(std::move(text)) {}

    // "#123" is the number 123 (the system's own convention); any other text is a name.
    static ResourceName Parse(std::u16string_view text);
    static ResourceName FromWide(std::wstring_view text);

    bool IsNumber() const { return m_isNumber; }
    uint16_t Number() const { return m_number; }
    const std::u16string& Text() const { return m_text; }

    // "6" for a number, the text itself (UTF-8) for a name.
    std::string ToUtf8() const;

    friend bool operator==(const ResourceName& a, const ResourceName& b);

private:
    bool m_isNumber = true;
    uint16_t m_number = 0;
    std::u16string m_text;
};

namespace internal {
class DataSource;
}

struct ResourceEntry {
    ResourceName type;
    ResourceName name;
    uint16_t language = 0;
    uint32_t codePage = 0;  // from a PE data entry; 0 elsewhere
    // Where the bytes lie: a buffer of the image, and a range inside it.
    uint32_t buffer = 0;
    std::size_t offset = 0;
    std::size_t size = 0;
};

class ResourceImage {
public:
    enum class Format { None, Res, Elf, Pe32, Pe64 };

    // Reads the file at `path` (UTF-8) and recognises its container by its first bytes.
    // Returns 0, or a Win32 error number: that of the failed open or read, BadFormat,
    // InvalidData, NoResourceSection. On failure the image is left empty.
    uint32_t LoadFile(const std::string& path);

    // The same for a file already in memory. The bytes are copied as far as needed.
    uint32_t LoadBytes(std::span<const uint8_t> bytes);

    Format GetFormat() const { return m_format; }
    // Every resource, in the container's order.
    const std::vector<ResourceEntry>& Entries() const { return m_entries; }

    // The resource of this type and name in `language`, else in the primary language with
    // the neutral sub-language, else in the neutral language, else in the lowest language
    // present. nullptr when there is none; *error (if given) then says whether the type,
    // the name or the language was missing (TypeNotFound, NameNotFound, LanguageNotFound).
    const ResourceEntry* Find(const ResourceName& type, const ResourceName& name,
                              uint16_t language = LANG_NEUTRAL, uint32_t* error = nullptr) const;

    // The bytes of an entry of this image; valid as long as the image lives.
    std::span<const uint8_t> Data(const ResourceEntry& entry) const;

    // The bytes of the found resource, empty when there is none.
    std::span<const uint8_t> FindData(const ResourceName& type, const ResourceName& name,
                                      uint16_t language = LANG_NEUTRAL) const;

    // Used by the container parsers: a new buffer whose bytes entries may point into.
    uint32_t AddBuffer(std::vector<uint8_t> bytes);
    const std::vector<uint8_t>& Buffer(uint32_t index) const { return *m_buffers[index]; }
    void AddEntry(ResourceEntry entry) { m_entries.push_back(std::move(entry)); }
    std::size_t EntryCount() const { return m_entries.size(); }

private:
    void Clear();
    // Parses the container in `source`; on failure the image is left empty.
    uint32_t Load(const internal::DataSource& source);

    Format m_format = Format::None;
    std::vector<std::shared_ptr<const std::vector<uint8_t>>> m_buffers;
    std::vector<ResourceEntry> m_entries;
};

// Most entries a single image may hold; more is taken for a hostile file.
constexpr std::size_t kMaxResourceEntries = 1u << 18;

}  // namespace Platform
