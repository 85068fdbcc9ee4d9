#include "platform/VersionInfo.h"

#include <algorithm>

#include "platform/ResourceImage.h"
#include "platform/internal/ByteReader.h"

namespace Platform {
namespace {

constexpr int kMaxDepth = 8;
constexpr uint32_t kFixedSignature = 0xFEEF04BD;

bool KeyEquals(std::u16string_view a, std::u16string_view b) {
    auto upper = [](char16_t c) { return c >= u'a' && c <= u'z' ? c - (u'a' - u'A') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char16_t x, char16_t y) { return upper(x) == upper(y); });
}

}  // namespace

uint32_t VersionInfo::Parse(std::span<const uint8_t> bytes) {
    m_bytes.assign(bytes.begin(), bytes.end());
    m_nodes.clear();
    std::size_t root = 0;
    const uint32_t error = ParseNode(0, m_bytes.size(), 0, root);
    if (error) {
        m_bytes.clear();
        m_nodes.clear();
    }
    return error;
}

// A block: wLength, wValueLength, wType, the key (NUL-terminated), padding to 4, the
// value, padding to 4, then the children up to wLength.
uint32_t VersionInfo::ParseNode(uint64_t offset, uint64_t limit, int depth, std::size_t& index) {
    if (depth > kMaxDepth) return ResourceErrors::InvalidData;
    const internal::ByteReader reader(m_bytes);
    uint16_t length = 0, valueLength = 0, type = 0;
    if (!reader.U16(offset, length) || !reader.U16(offset + 2, valueLength) ||
        !reader.U16(offset + 4, type) || length < 6 || offset + length > limit)
        return ResourceErrors::InvalidData;
    const uint64_t end = offset + length;
    std::span<const uint8_t> nodeBytes;
    reader.Slice(0, end, nodeBytes);  // keeps the key inside this block
    Node node;
    uint64_t at = 0;
    if (!internal::ByteReader(nodeBytes).Utf16z(offset + 6, node.key, at))
        return ResourceErrors::InvalidData;
    node.type = type;
    at = std::min(internal::AlignUp4(at), end);
    // Text lengths count characters; some writers count bytes, so a text is cut at the
    // block's end rather than refused.
    uint64_t valueSize = type == 1 ? uint64_t{valueLength} * 2 : valueLength;
    if (valueSize > end - at) {
        if (type != 1) return ResourceErrors::InvalidData;
        valueSize = end - at;
    }
    node.valueOffset = static_cast<std::size_t>(at);
    node.valueSize = static_cast<std::size_t>(valueSize);
    index = m_nodes.size();
    m_nodes.push_back(std::move(node));
    for (uint64_t child = internal::AlignUp4(at + valueSize); child + 6 <= end;) {
        uint16_t childLength = 0;
        reader.U16(child, childLength);
        if (childLength == 0) break;  // padding
        std::size_t childIndex = 0;
        if (uint32_t error = ParseNode(child, end, depth + 1, childIndex)) return error;
        m_nodes[index].children.push_back(childIndex);
        child = internal::AlignUp4(child + childLength);
    }
    return 0;
}

VersionInfo::Value VersionInfo::ValueOf(const Node& node) const {
    Value value;
    value.isText = node.type == 1;
    value.bytes = std::span<const uint8_t>(m_bytes).subspan(node.valueOffset, node.valueSize);
    if (value.isText) {
        for (std::size_t i = 0; i + 1 < value.bytes.size(); i += 2) {
            const auto ch = static_cast<char16_t>(value.bytes[i] | (value.bytes[i + 1] << 8));
            if (ch == 0) break;
            value.text.push_back(ch);
        }
    }
    return value;
}

const VersionInfo::Node* VersionInfo::Child(const Node& node, std::u16string_view key) const {
    for (std::size_t index : node.children)
        if (KeyEquals(m_nodes[index].key, key)) return &m_nodes[index];
    return nullptr;
}

bool VersionInfo::Query(std::u16string_view path, Value& out) const {
    if (m_nodes.empty()) return false;
    const Node* node = &m_nodes[0];
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t stop = path.find(u'\\', start);
        if (stop == std::u16string_view::npos) stop = path.size();
        if (stop > start) {
            node = Child(*node, path.substr(start, stop - start));
            if (!node) return false;
        }
        start = stop + 1;
    }
    out = ValueOf(*node);
    return true;
}

bool VersionInfo::GetFixedFileInfo(FixedFileInfo& out) const {
    Value root;
    if (!Query(u"\\", root) || root.bytes.size() < 52) return false;
    const internal::ByteReader reader(root.bytes);
    reader.U32(0, out.signature);
    reader.U32(8, out.fileVersionMS);
    reader.U32(12, out.fileVersionLS);
    reader.U32(16, out.productVersionMS);
    reader.U32(20, out.productVersionLS);
    reader.U32(28, out.fileFlags);
    reader.U32(32, out.fileOS);
    reader.U32(36, out.fileType);
    return out.signature == kFixedSignature;
}

std::vector<uint32_t> VersionInfo::Translations() const {
    std::vector<uint32_t> result;
    Value value;
    if (!Query(u"\\VarFileInfo\\Translation", value)) return result;
    const internal::ByteReader reader(value.bytes);
    for (std::size_t at = 0; at + 4 <= value.bytes.size(); at += 4) {
        uint32_t entry = 0;
        reader.U32(at, entry);
        result.push_back(entry);
    }
    return result;
}

std::vector<VersionInfo::StringValue> VersionInfo::AllStrings() const {
    std::vector<StringValue> result;
    if (m_nodes.empty()) return result;
    const Node* files = Child(m_nodes[0], u"StringFileInfo");
    if (!files) return result;
    for (std::size_t tableIndex : files->children) {
        const Node& table = m_nodes[tableIndex];
        for (std::size_t stringIndex : table.children) {
            const Node& string = m_nodes[stringIndex];
            result.push_back({table.key, string.key, ValueOf(string).text});
        }
    }
    return result;
}

}  // namespace Platform
