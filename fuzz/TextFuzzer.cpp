// libFuzzer target for the colour, font and decimal texts of Resources.xml: any text as
// each of them.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "FuzzSupport.h"
#include "storages/internal/ColorText.h"
#include "storages/internal/DecimalText.h"
#include "storages/internal/FontText.h"
#include "graphics/GuiSession.h"
#include "graphics/SystemMetrics.h"

using namespace ResourceLib::internal;
using ResourceLib::COLORREF;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    static CommonGuiLib::GuiSession session;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::wstring text = Fuzz::Text(data, size);

    COLORREF color = 0x12345678;
    if (!ParseColorText(text, color) && color != 0x12345678)
        Fuzz::Fail("a refused colour text changed the colour");
    if (ParseColorText(text, color) && (color >> 24) != 0)
        Fuzz::Fail("a colour has bits beyond red, green and blue");

    int32_t value = 0;
    if (ParseDecimal(text, value) &&
        (DecimalOrZero(text) != value || LeadingDecimal(text) != value))
        Fuzz::Fail("the readers of decimal text disagree on a whole number");
    int32_t values[3] = {};
    ScanDecimals(text, L"(", L',', values, 3);
    ScanDecimals(text, L"", L',', values, 3);

    CommonGuiLib::LogFont font;
    static CommonGuiLib::NonClientFonts system;
    static const bool haveSystem = CommonGuiLib::GetNonClientFonts(system);
    for (size_t start = 0; start <= text.size();) {
        const size_t bar = std::min(text.find(L'|', start), text.size());
        ReadFontAlternative(std::wstring_view(text).substr(start, bar - start),
                            haveSystem ? &system : nullptr, font);
        ReadFontAlternative(std::wstring_view(text).substr(start, bar - start), nullptr, font);
        start = bar + 1;
    }
    CreateFontFromText(text);
    return 0;
}
