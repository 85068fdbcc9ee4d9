#include "storages/SystemColors.h"

#include <map>
#include <string>

#include "graphics/SystemMetrics.h"

namespace ResourceLib {

namespace {

const std::map<std::wstring, int32_t, std::less<>>& ColorNames() {
    // The published COLOR_ constants, aliases included.
    static const std::map<std::wstring, int32_t, std::less<>> names = {
        {L"COLOR_3DDKSHADOW", 21},
        {L"COLOR_3DFACE", 15},
        {L"COLOR_3DHIGHLIGHT", 20},
        {L"COLOR_3DHILIGHT", 20},
        {L"COLOR_3DLIGHT", 22},
        {L"COLOR_3DSHADOW", 16},
        {L"COLOR_ACTIVEBORDER", 10},
        {L"COLOR_ACTIVECAPTION", 2},
        {L"COLOR_APPWORKSPACE", 12},
        {L"COLOR_BACKGROUND", 1},
        {L"COLOR_BTNFACE", 15},
        {L"COLOR_BTNHIGHLIGHT", 20},
        {L"COLOR_BTNHILIGHT", 20},
        {L"COLOR_BTNSHADOW", 16},
        {L"COLOR_BTNTEXT", 18},
        {L"COLOR_CAPTIONTEXT", 9},
        {L"COLOR_DESKTOP", 1},
        {L"COLOR_GRADIENTACTIVECAPTION", 27},
        {L"COLOR_GRADIENTINACTIVECAPTION", 28},
        {L"COLOR_GRAYTEXT", 17},
        {L"COLOR_HIGHLIGHT", 13},
        {L"COLOR_HIGHLIGHTTEXT", 14},
        {L"COLOR_HOTLIGHT", 26},
        {L"COLOR_INACTIVEBORDER", 11},
        {L"COLOR_INACTIVECAPTION", 3},
        {L"COLOR_INACTIVECAPTIONTEXT", 19},
        {L"COLOR_INFOBK", 24},
        {L"COLOR_INFOTEXT", 23},
        {L"COLOR_MENU", 4},
        {L"COLOR_MENUHILIGHT", 29},
        {L"COLOR_MENUBAR", 30},
        {L"COLOR_MENUTEXT", 7},
        {L"COLOR_SCROLLBAR", 0},
        {L"COLOR_WINDOW", 5},
        {L"COLOR_WINDOWFRAME", 6},
        {L"COLOR_WINDOWTEXT", 8},
    };
    return names;
}

}  // namespace

bool FindSystemColorIndex(std::wstring_view name, int32_t& index) {
    const auto& names = ColorNames();
    const auto found = names.find(name);
    if (found == names.end()) return false;
    index = found->second;
    return true;
}

bool LookupSystemColor(std::wstring_view name, COLORREF& color) {
    int32_t index = 0;
    if (!FindSystemColorIndex(name, index)) return false;
    color = CommonGuiLib::GetSysColor(index);
    return true;
}

}  // namespace ResourceLib
