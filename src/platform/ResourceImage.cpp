#include "platform/ResourceImage.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "platform/SystemMessages.h"
#include "platform/Utf16Text.h"
#include "platform/internal/ContainerFormats.h"
#include "platform/internal/DataSource.h"
#include "platform/internal/FileDescriptor.h"

namespace Platform {
namespace {

// The empty entry every resource compiler writes first: no data, a 32-byte header,
// type 0 and name 0 as numbers.
constexpr uint8_t kResSignature[16] = {0,    0,    0, 0, 0x20, 0,    0, 0,
                                       0xFF, 0xFF, 0, 0, 0xFF, 0xFF, 0, 0};

// A .res file is read whole; anything larger than this is no resource image of ours.
constexpr uint64_t kMaxResFileSize = uint64_t{1} << 30;

char16_t AsciiUpper(char16_t c) {
    return c >= u'a' && c <= u'z' ? c - (u'a' - u'A') : c;
}

}  // namespace

ResourceName ResourceName::Parse(std::u16string_view text) {
    if (text.size() >= 2 && text.size() <= 6 && text[0] == u'#') {
        uint32_t value = 0;
        bool digits = true;
        for (char16_t c : text.substr(1)) {
            if (c < u'0' || c > u'9') {
                digits = false;
                break;
            }
            value = value * 10 + (c - u'0');
        }
        if (digits && value <= 0xFFFF) return ResourceName(static_cast<uint16_t>(value));
    }
    return ResourceName(std::u16string(text));
}

ResourceName ResourceName::FromWide(std::wstring_view text) {
    return Parse(Utf16FromWide(text));
}

std::string ResourceName::ToUtf8() const {
    return m_isNumber ? std::to_string(m_number) : Utf8FromUtf16(m_text);
}

bool operator==(const ResourceName& a, const ResourceName& b) {
    if (a.m_isNumber != b.m_isNumber) return false;
    if (a.m_isNumber) return a.m_number == b.m_number;
    return std::equal(a.m_text.begin(), a.m_text.end(), b.m_text.begin(), b.m_text.end(),
                      [](char16_t x, char16_t y) { return AsciiUpper(x) == AsciiUpper(y); });
}

void ResourceImage::Clear() {
    m_format = Format::None;
    m_buffers.clear();
    m_entries.clear();
}

uint32_t ResourceImage::AddBuffer(std::vector<uint8_t> bytes) {
    m_buffers.push_back(std::make_shared<const std::vector<uint8_t>>(std::move(bytes)));
    return static_cast<uint32_t>(m_buffers.size() - 1);
}

namespace {

uint32_t LoadFrom(const internal::DataSource& source, ResourceImage& image,
                  ResourceImage::Format& format) {
    std::vector<uint8_t> head;
    if (source.Read(0, std::min<uint64_t>(source.Size(), 16), head))
        return ResourceErrors::BadFormat;
    if (head.size() >= 2 && head[0] == 'M' && head[1] == 'Z') {
        bool is64 = false;
        const uint32_t error = internal::ParsePeResources(source, image, is64);
        format = is64 ? ResourceImage::Format::Pe64 : ResourceImage::Format::Pe32;
        return error;
    }
    if (head.size() >= 4 && std::memcmp(head.data(),
                                        "\x7F"
                                        "ELF",
                                        4) == 0) {
        std::vector<uint8_t> section;
        if (uint32_t error = internal::ReadElfSection(source, ".rsrc", section)) return error;
        format = ResourceImage::Format::Elf;
        return internal::ParseResImage(image, image.AddBuffer(std::move(section)));
    }
    if (head.size() == 16 && std::memcmp(head.data(), kResSignature, 16) == 0) {
        if (source.Size() > kMaxResFileSize) return ResourceErrors::InvalidData;
        std::vector<uint8_t> bytes;
        if (uint32_t error = source.Read(0, source.Size(), bytes)) return error;
        format = ResourceImage::Format::Res;
        return internal::ParseResImage(image, image.AddBuffer(std::move(bytes)));
    }
    return ResourceErrors::BadFormat;
}

}  // namespace

uint32_t ResourceImage::Load(const internal::DataSource& source) {
    Format format = Format::None;
    const uint32_t error = LoadFrom(source, *this, format);
    if (error) {
        Clear();
        return error;
    }
    m_format = format;
    return 0;
}

uint32_t ResourceImage::LoadBytes(std::span<const uint8_t> bytes) {
    Clear();
    return Load(internal::MemorySource(bytes));
}

uint32_t ResourceImage::LoadFile(const std::string& path) {
    Clear();
    const internal::FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    if (fd.Get() < 0) return LastWin32Error();
    struct stat info {};
    if (::fstat(fd.Get(), &info) != 0) return LastWin32Error();
    if (S_ISDIR(info.st_mode)) return 5;  // ERROR_ACCESS_DENIED, as for opening a folder
    if (!S_ISREG(info.st_mode)) return ResourceErrors::BadFormat;
    return Load(internal::FileSource(fd.Get(), static_cast<uint64_t>(info.st_size)));
}

const ResourceEntry* ResourceImage::Find(const ResourceName& type, const ResourceName& name,
                                         uint16_t language, uint32_t* error) const {
    const ResourceEntry* candidates[4] = {};  // exact, primary + neutral, neutral, lowest
    bool typeSeen = false, nameSeen = false;
    for (const ResourceEntry& entry : m_entries) {
        if (!(entry.type == type)) continue;
        typeSeen = true;
        if (!(entry.name == name)) continue;
        nameSeen = true;
        if (entry.language == language && !candidates[0]) candidates[0] = &entry;
        if (entry.language == PrimaryLangId(language) && !candidates[1]) candidates[1] = &entry;
        if (entry.language == LANG_NEUTRAL && !candidates[2]) candidates[2] = &entry;
        if (!candidates[3] || entry.language < candidates[3]->language) candidates[3] = &entry;
    }
    for (const ResourceEntry* found : candidates)
        if (found) {
            if (error) *error = 0;
            return found;
        }
    if (error)
        *error = !typeSeen   ? ResourceErrors::TypeNotFound
                 : !nameSeen ? ResourceErrors::NameNotFound
                             : ResourceErrors::LanguageNotFound;
    return nullptr;
}

std::span<const uint8_t> ResourceImage::Data(const ResourceEntry& entry) const {
    if (entry.buffer >= m_buffers.size()) return {};
    const std::vector<uint8_t>& bytes = *m_buffers[entry.buffer];
    if (entry.offset > bytes.size() || entry.size > bytes.size() - entry.offset) return {};
    return std::span<const uint8_t>(bytes).subspan(entry.offset, entry.size);
}

std::span<const uint8_t> ResourceImage::FindData(const ResourceName& type, const ResourceName& name,
                                                 uint16_t language) const {
    const ResourceEntry* entry = Find(type, name, language);
    return entry ? Data(*entry) : std::span<const uint8_t>();
}

}  // namespace Platform
