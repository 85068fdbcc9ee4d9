#include "platform/VersionResourceWriter.h"

#include <algorithm>
#include <charconv>

#include "platform/internal/ByteWriter.h"

namespace Platform {
namespace {

using internal::PadTo4;
using internal::PutU16;
using internal::PutU32;

constexpr uint32_t kFixedSignature = 0xFEEF04BD;
constexpr uint32_t kFixedStructVersion = 0x00010000;
constexpr uint32_t kFileFlagsMask = 0x3F;
constexpr uint32_t kFileTypeApplication = 1;

// One block of the tree: its key, its value (text values count characters, binary ones
// bytes) and its children.
struct Block {
    std::u16string key;
    bool isText = false;
    std::vector<uint8_t> value;
    uint16_t valueLength = 0;
    std::vector<Block> children;
};

Block TextBlock(std::u16string key, const std::u16string& text) {
    Block block{std::move(key), true, {}, 0, {}};
    for (char16_t ch : text) PutU16(block.value, static_cast<uint16_t>(ch));
    PutU16(block.value, 0);
    block.valueLength = static_cast<uint16_t>(std::min<std::size_t>(text.size() + 1, 0xFFFF));
    return block;
}

// Appends the block; false when it is longer than its 16-bit length field allows.
bool PutBlock(std::vector<uint8_t>& out, const Block& block) {
    PadTo4(out);
    const std::size_t start = out.size();
    PutU16(out, 0);  // length, known at the end
    PutU16(out, block.valueLength);
    PutU16(out, block.isText ? 1 : 0);
    for (char16_t ch : block.key) PutU16(out, static_cast<uint16_t>(ch));
    PutU16(out, 0);
    PadTo4(out);
    out.insert(out.end(), block.value.begin(), block.value.end());
    for (const Block& child : block.children)
        if (!PutBlock(out, child)) return false;
    const std::size_t length = out.size() - start;
    if (length > 0xFFFF) return false;
    out[start] = static_cast<uint8_t>(length);
    out[start + 1] = static_cast<uint8_t>(length >> 8);
    return true;
}

std::u16string Ascii16(std::string_view text) {
    return std::u16string(text.begin(), text.end());
}

}  // namespace

bool ParseVersionQuad(std::string_view text, VersionQuad& out) {
    VersionQuad parsed{};
    const char* at = text.data();
    const char* end = text.data() + text.size();
    for (std::size_t i = 0; i < parsed.size(); ++i) {
        if (i > 0) {
            if (at == end || *at != '.') return false;
            ++at;
        }
        // from_chars takes neither a sign nor spaces; digits only.
        unsigned value = 0;
        const auto [next, error] = std::from_chars(at, end, value);
        if (error != std::errc() || next == at || value > 0xFFFF) return false;
        parsed[i] = static_cast<uint16_t>(value);
        at = next;
    }
    if (at != end) return false;
    out = parsed;
    return true;
}

std::string FormatVersionQuad(const VersionQuad& version) {
    return std::to_string(version[0]) + "." + std::to_string(version[1]) + "." +
           std::to_string(version[2]) + "." + std::to_string(version[3]);
}

std::vector<uint8_t> WriteVersionResource(const VersionResourceFields& fields) {
    const VersionQuad& v = fields.version;
    const uint32_t ms = (uint32_t{v[0]} << 16) | v[1];
    const uint32_t ls = (uint32_t{v[2]} << 16) | v[3];

    Block root{u"VS_VERSION_INFO", false, {}, 0, {}};
    for (uint32_t word :
         {kFixedSignature, kFixedStructVersion, ms, ls, ms, ls, kFileFlagsMask, 0u /* flags */,
          0u /* OS: none of Windows' */, kFileTypeApplication, 0u /* subtype */, 0u, 0u /* date */})
        PutU32(root.value, word);
    root.valueLength = static_cast<uint16_t>(root.value.size());

    const std::u16string dotted = Ascii16(FormatVersionQuad(v));
    Block table{u"040904B0", true, {}, 0, {}};
    if (!fields.company.empty())
        table.children.push_back(TextBlock(u"CompanyName", fields.company));
    if (!fields.description.empty())
        table.children.push_back(TextBlock(u"FileDescription", fields.description));
    table.children.push_back(TextBlock(u"FileVersion", dotted));
    if (!fields.product.empty())
        table.children.push_back(TextBlock(u"ProductName", fields.product));
    table.children.push_back(TextBlock(u"ProductVersion", dotted));
    Block strings{u"StringFileInfo", true, {}, 0, {std::move(table)}};

    Block translation{u"Translation", false, {}, 4, {}};
    PutU16(translation.value, kVersionResourceLanguage);
    PutU16(translation.value, 1200);  // Unicode
    Block vars{u"VarFileInfo", true, {}, 0, {std::move(translation)}};

    root.children.push_back(std::move(strings));
    root.children.push_back(std::move(vars));
    std::vector<uint8_t> out;
    if (!PutBlock(out, root)) return {};
    return out;
}

}  // namespace Platform
