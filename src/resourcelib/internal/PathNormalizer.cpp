#include "resourcelib/internal/PathNormalizer.h"

#include <algorithm>

namespace ResourceLib::internal {
namespace {

constexpr const wchar_t* kSeparators = L"\\/";

bool IsSeparator(wchar_t c) {
    return c == L'\\' || c == L'/';
}

}  // namespace

std::wstring NormalizeResourcePath(const std::wstring& path) {
    std::wstring result = path;
    for (std::size_t up = result.find(L".."); up != std::wstring::npos; up = result.find(L"..")) {
        // Four characters are the least that can hold a folder name and its separator
        // ahead of the ".."; anything shorter would climb out of the path.
        if (up < 4 || !IsSeparator(result[up - 1])) return path;
        const std::size_t separator = up - 1;
        const std::size_t folder = result.find_last_of(kSeparators, separator - 1);
        const std::size_t from = folder == std::wstring::npos ? 0 : folder;
        result.erase(from, up + 2 - from);
    }
    std::replace(result.begin(), result.end(), L'\\', L'/');
    if (!result.empty() && result.back() == L'/') result.pop_back();
    return result;
}

}  // namespace ResourceLib::internal
