#include "storages/internal/ColorText.h"

#include <algorithm>
#include <cstdint>

#include "graphics/SystemMetrics.h"
#include "storages/SystemColors.h"
#include "storages/internal/DecimalText.h"

namespace ResourceLib::internal {

namespace {

// One hexadecimal pair; digits are read up to the first one that is not hexadecimal, so
// a pair that starts with such a character gives 0.
uint8_t HexPair(std::wstring_view pair) {
    uint32_t value = 0;
    for (wchar_t c : pair) {
        uint32_t digit = 0;
        if (c >= L'0' && c <= L'9') {
            digit = c - L'0';
        } else if (c >= L'a' && c <= L'f') {
            digit = c - L'a' + 10;
        } else if (c >= L'A' && c <= L'F') {
            digit = c - L'A' + 10;
        } else {
            break;
        }
        value = value * 16 + digit;
    }
    return uint8_t(value);
}

uint8_t Adjust(uint8_t channel, int32_t delta, bool add) {
    const int64_t value = add ? int64_t(channel) + delta : int64_t(channel) - delta;
    return uint8_t(std::clamp<int64_t>(value, 0, 255));
}

// The "@..." forms; false sends the caller on to the "r,g,b" form.
bool ParseSystemColorText(std::wstring_view text, COLORREF& color) {
    std::wstring_view name = text.substr(1);
    int32_t delta[3] = {0, 0, 0};
    bool add = true;
    const std::size_t open = text.find(L'(');
    if (open != std::wstring_view::npos) {
        // Shorter texts cannot hold a name, a sign and three numbers; they name nothing.
        if (text.size() > 9 && open >= 2) {
            name = text.substr(1, open - 2);
            add = text[open - 1] == L'+';
            if (!ScanDecimals(text.substr(open), L"(", L',', delta, 3)) {
                std::fill(std::begin(delta), std::end(delta), 0);
            }
        } else {
            name = {};
        }
    }

    COLORREF base = 0;
    int32_t index = 0;
    if (ParseDecimal(name, index) && index != 0) {
        base = CommonGuiLib::GetSysColor(index);
    } else if (!LookupSystemColor(name, base)) {
        return false;
    }
    color = MakeColor(Adjust(RedOf(base), delta[0], add), Adjust(GreenOf(base), delta[1], add),
                      Adjust(BlueOf(base), delta[2], add));
    return true;
}

}  // namespace

bool ParseColorText(std::wstring_view text, COLORREF& color) {
    if (text.empty()) return false;
    if (text[0] == L'#') {
        if (text.size() != 7) return false;
        color = MakeColor(HexPair(text.substr(1, 2)), HexPair(text.substr(3, 2)),
                          HexPair(text.substr(5, 2)));
        return true;
    }
    if (text[0] == L'@' && text.size() >= 2 && ParseSystemColorText(text, color)) return true;

    int32_t channels[3] = {0, 0, 0};
    if (!ScanDecimals(text, L"", L',', channels, 3)) return false;
    color = MakeColor(uint8_t(channels[0] & 0xFF), uint8_t(channels[1] & 0xFF),
                      uint8_t(channels[2] & 0xFF));
    return true;
}

}  // namespace ResourceLib::internal
