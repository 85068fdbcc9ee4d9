// A version resource (VS_VERSIONINFO): a tree of blocks, each with a key, a binary or text
// value and child blocks. Values are found by paths as the system's version API takes
// them: "\" (the fixed file information), "\VarFileInfo\Translation",
// "\StringFileInfo\040904B0\FileVersion". Keys compare without regard to ASCII case.
//
// Thread safety: a parsed record is immutable; any thread may query it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

class VersionInfo {
public:
    struct FixedFileInfo {
        uint32_t signature = 0;  // 0xFEEF04BD
        uint32_t fileVersionMS = 0, fileVersionLS = 0;
        uint32_t productVersionMS = 0, productVersionLS = 0;
        uint32_t fileFlags = 0, fileOS = 0, fileType = 0;
    };

    struct Value {
        bool isText = false;
        std::span<const uint8_t> bytes;  // the raw value, into this record
        std::u16string text;             // for a text value: up to its first NUL
    };

    // Parses (and copies) the bytes of a version resource. Returns 0, or InvalidData (13)
    // when a block does not fit inside its parent or the tree nests too deep.
    uint32_t Parse(std::span<const uint8_t> bytes);

    bool Empty() const { return m_nodes.empty(); }

    // The value at `path`; false when a key on the way is missing.
    bool Query(std::u16string_view path, Value& out) const;

    // The fixed information, false when the root has none of the right size and signature.
    bool GetFixedFileInfo(FixedFileInfo& out) const;

    // The translation entries (language in the low 16 bits, code page in the high 16 bits).
    std::vector<uint32_t> Translations() const;

    // (key, text) of every string of every table under StringFileInfo, with the table key.
    struct StringValue {
        std::u16string table, key, value;
    };
    std::vector<StringValue> AllStrings() const;

private:
    struct Node {
        std::u16string key;
        uint16_t type = 0;
        std::size_t valueOffset = 0, valueSize = 0;
        std::vector<std::size_t> children;  // indices into m_nodes
    };

    uint32_t ParseNode(uint64_t offset, uint64_t limit, int depth, std::size_t& index);
    Value ValueOf(const Node& node) const;
    const Node* Child(const Node& node, std::u16string_view key) const;

    std::vector<uint8_t> m_bytes;
    std::vector<Node> m_nodes;  // m_nodes[0] is the root
};

}  // namespace Platform
