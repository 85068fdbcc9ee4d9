#include "platform/DialogTemplate.h"

#include "platform/ResourceImage.h"
#include "platform/Utf16Text.h"
#include "platform/internal/ByteReader.h"

namespace Platform {
namespace {

using internal::ByteReader;

const wchar_t* PredefinedClass(uint16_t ordinal) {
    switch (ordinal) {
        case 0x80:
            return L"Button";
        case 0x81:
            return L"Edit";
        case 0x82:
            return L"Static";
        case 0x83:
            return L"ListBox";
        case 0x84:
            return L"ScrollBar";
        case 0x85:
            return L"ComboBox";
        default:
            return nullptr;
    }
}

class Cursor {
public:
    explicit Cursor(std::span<const uint8_t> bytes) : m_reader(bytes) {}

    bool U8(uint8_t& v) { return Advance(m_reader.U8(m_at, v), 1); }
    bool U16(uint16_t& v) { return Advance(m_reader.U16(m_at, v), 2); }
    bool U32(uint32_t& v) { return Advance(m_reader.U32(m_at, v), 4); }
    bool I16(int16_t& v) {
        uint16_t raw = 0;
        if (!U16(raw)) return false;
        v = static_cast<int16_t>(raw);
        return true;
    }
    bool Text(std::wstring& out) {
        std::u16string text;
        uint64_t next = 0;
        if (!m_reader.Utf16z(m_at, text, next)) return false;
        m_at = next;
        out = WideFromUtf16(text);
        return true;
    }
    // 0x0000: empty; 0xFFFF and a number: an ordinal; else a text.
    bool TextOrNumber(TextOrOrdinal& out) {
        uint16_t first = 0;
        if (!m_reader.U16(m_at, first)) return false;
        if (first == 0xFFFF) {
            m_at += 2;
            out.isOrdinal = true;
            return U16(out.ordinal);
        }
        return Text(out.text);
    }
    bool Bytes(uint64_t count, std::vector<uint8_t>& out) {
        std::span<const uint8_t> slice;
        if (!m_reader.Slice(m_at, count, slice)) return false;
        out.assign(slice.begin(), slice.end());
        m_at += count;
        return true;
    }
    void Align4() { m_at = internal::AlignUp4(m_at); }

private:
    bool Advance(bool ok, unsigned width) {
        if (ok) m_at += width;
        return ok;
    }

    ByteReader m_reader;
    uint64_t m_at = 0;
};

bool ParseItem(Cursor& c, bool extended, DialogItem& item) {
    c.Align4();
    bool ok = true;
    if (extended) {
        ok = c.U32(item.helpId) && c.U32(item.exStyle) && c.U32(item.style);
    } else {
        ok = c.U32(item.style) && c.U32(item.exStyle);
    }
    ok = ok && c.I16(item.x) && c.I16(item.y) && c.I16(item.cx) && c.I16(item.cy);
    if (extended) {
        ok = ok && c.U32(item.id);
    } else {
        uint16_t id = 0;
        ok = ok && c.U16(id);
        item.id = id;
    }
    ok = ok && c.TextOrNumber(item.windowClass) && c.TextOrNumber(item.title);
    if (!ok) return false;
    if (item.windowClass.isOrdinal) {
        if (const wchar_t* name = PredefinedClass(item.windowClass.ordinal)) {
            item.windowClass.isOrdinal = false;
            item.windowClass.text = name;
        }
    }
    uint16_t extra = 0;
    return c.U16(extra) && c.Bytes(extra, item.creationData);
}

}  // namespace

uint32_t DialogTemplate::Parse(std::span<const uint8_t> bytes, DialogTemplate& out) {
    out = DialogTemplate();
    Cursor c(bytes);
    uint16_t version = 0, signature = 0, count = 0;
    const ByteReader head(bytes);
    if (!head.U16(0, version) || !head.U16(2, signature)) return ResourceErrors::InvalidData;
    out.extended = version == 1 && signature == 0xFFFF;
    bool ok = true;
    if (out.extended) {
        ok = c.U16(version) && c.U16(signature) && c.U32(out.helpId) && c.U32(out.exStyle) &&
             c.U32(out.style);
    } else {
        ok = c.U32(out.style) && c.U32(out.exStyle);
    }
    ok = ok && c.U16(count) && c.I16(out.x) && c.I16(out.y) && c.I16(out.cx) && c.I16(out.cy) &&
         c.TextOrNumber(out.menu) && c.TextOrNumber(out.windowClass) && c.Text(out.title);
    if (!ok) return ResourceErrors::InvalidData;
    out.hasFont = (out.style & DS_SETFONT) != 0;
    if (out.hasFont) {
        ok = c.U16(out.pointSize);
        if (out.extended) {
            uint8_t italic = 0;
            ok = ok && c.U16(out.weight) && c.U8(italic) && c.U8(out.charSet);
            out.italic = italic != 0;
        }
        if (!ok || !c.Text(out.typeface)) return ResourceErrors::InvalidData;
    }
    for (uint16_t i = 0; i < count; ++i) {
        DialogItem item;
        if (!ParseItem(c, out.extended, item)) {
            out = DialogTemplate();
            return ResourceErrors::InvalidData;
        }
        out.items.push_back(std::move(item));
    }
    return 0;
}

}  // namespace Platform
