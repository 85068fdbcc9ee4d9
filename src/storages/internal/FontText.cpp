#include "storages/internal/FontText.h"

#include <string>
#include <vector>

#include "storages/internal/DecimalText.h"

namespace ResourceLib::internal {

namespace {

constexpr int32_t kBoldWeight = 800;
constexpr uint8_t kDefaultQuality = 5;  // CLEARTYPE_QUALITY

std::vector<std::wstring_view> Split(std::wstring_view text, wchar_t separator, bool skipEmpty) {
    std::vector<std::wstring_view> pieces;
    std::size_t start = 0;
    while (true) {
        const std::size_t end = text.find(separator, start);
        const std::wstring_view piece = text.substr(
            start, end == std::wstring_view::npos ? std::wstring_view::npos : end - start);
        if (!skipEmpty || !piece.empty()) pieces.push_back(piece);
        if (end == std::wstring_view::npos) break;
        start = end + 1;
    }
    return pieces;
}

std::wstring_view Trim(std::wstring_view text) {
    constexpr std::wstring_view kBlanks = L" \t\r\n";
    const std::size_t first = text.find_first_not_of(kBlanks);
    if (first == std::wstring_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

const CommonGuiLib::LogFont* SelectBaseFont(std::wstring_view name,
                                            const CommonGuiLib::NonClientFonts& fonts) {
    if (name == L"CaptionFont") return &fonts.caption;
    if (name == L"SmallCaptionFont") return &fonts.smallCaption;
    if (name == L"MenuFont") return &fonts.menu;
    if (name == L"StatusFont") return &fonts.status;
    if (name == L"MessageFont") return &fonts.message;
    return nullptr;
}

}  // namespace

bool ReadFontAlternative(std::wstring_view alternative,
                         const CommonGuiLib::NonClientFonts* systemFonts,
                         CommonGuiLib::LogFont& font) {
    const std::vector<std::wstring_view> fields = Split(Trim(alternative), L',', false);
    if (fields.size() < 2) return false;

    std::wstring face(fields[0]);
    const CommonGuiLib::LogFont* base = nullptr;
    if (!face.empty() && face[0] == L'@' && systemFonts != nullptr) {
        base = SelectBaseFont(std::wstring_view(face).substr(1), *systemFonts);
        face = base != nullptr ? base->faceName : face.substr(1);
    }

    // A field counts when it is present and not empty; else the base font's value, else
    // the default.
    auto field = [&fields](std::size_t index) -> const std::wstring_view* {
        return index < fields.size() && !fields[index].empty() ? &fields[index] : nullptr;
    };
    auto flag = [&](std::size_t index, bool fromBase) {
        if (const auto* text = field(index)) return LeadingDecimal(*text) != 0;
        return fromBase;
    };

    CommonGuiLib::LogFont result;
    result.faceName = face;
    if (const auto* text = field(1)) {
        result.height = LeadingDecimal(*text);
    } else if (base != nullptr) {
        result.height = base->height;
    }
    result.weight = flag(2, base != nullptr && base->weight > 500) ? kBoldWeight : 0;
    result.italic = flag(3, base != nullptr && base->italic);
    result.underline = flag(4, base != nullptr && base->underline);
    result.strikeOut = flag(5, base != nullptr && base->strikeOut);
    if (const auto* text = field(6)) {
        result.quality = uint8_t(LeadingDecimal(*text));
    } else {
        result.quality = base != nullptr ? base->quality : kDefaultQuality;
    }
    font = std::move(result);
    return true;
}

FontHandle CreateFontFromText(std::wstring_view text) {
    CommonGuiLib::NonClientFonts systemFonts;
    const bool haveSystemFonts = CommonGuiLib::GetNonClientFonts(systemFonts);

    const std::vector<std::wstring_view> alternatives = Split(text, L'|', true);
    for (std::size_t i = 0; i < alternatives.size(); ++i) {
        CommonGuiLib::LogFont font;
        if (!ReadFontAlternative(alternatives[i], haveSystemFonts ? &systemFonts : nullptr, font)) {
            continue;
        }
        // The last alternative is the fallback: used even when its face is not installed.
        const bool isLast = i + 1 == alternatives.size();
        if (!isLast && !CommonGuiLib::IsFontFamilyInstalled(font.faceName)) continue;
        FontHandle handle = CommonGuiLib::CreateFontIndirect(font);
        if (CommonGuiLib::HasHandle(handle)) return handle;
    }
    return {};
}

}  // namespace ResourceLib::internal
