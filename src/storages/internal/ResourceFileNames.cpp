#include "storages/internal/ResourceFileNames.h"

#include "storages/ResourceTypes.h"

namespace ResourceLib::internal {

namespace {

constexpr std::wstring_view kCommonFolder = L"Common";

void ReplaceAll(std::wstring& text, std::wstring_view from, std::wstring_view to) {
    for (std::size_t pos = text.find(from); pos != std::wstring::npos;
         pos = text.find(from, pos + to.size())) {
        text.replace(pos, from.size(), to);
    }
}

}  // namespace

std::wstring NameOf(const LanguagePtr& language) {
    return language ? language->GetName() : std::wstring();
}

std::wstring NameOf(const SkinPtr& skin) {
    return skin ? skin->GetName() : std::wstring();
}

std::wstring JoinPath(std::wstring_view folder, std::wstring_view name) {
    std::wstring path(folder);
    if (!path.empty() && path.back() != L'/') path += L'/';
    path += name;
    return path;
}

std::vector<std::wstring> CandidateFolders(std::wstring_view directory, std::wstring_view language,
                                           std::wstring_view skin) {
    std::vector<std::wstring> folders;
    const std::wstring common = JoinPath(directory, kCommonFolder);
    if (!language.empty() && !skin.empty()) {
        folders.push_back(JoinPath(JoinPath(directory, language), skin));
    }
    if (!skin.empty()) folders.push_back(JoinPath(common, skin));
    if (!language.empty()) folders.push_back(JoinPath(directory, language));
    folders.push_back(common);
    return folders;
}

std::wstring SkinFolder(std::wstring_view directory, std::wstring_view skin) {
    if (skin.empty()) return {};
    return JoinPath(JoinPath(directory, kCommonFolder), skin);
}

std::wstring_view ResourceFileExtension(uint32_t type) {
    switch (type) {
        case ResourceType_Bitmap:
            return L".bmp";
        case ResourceType_Icon:
            return L".ico";
        case ResourceType_Binary:
            return L".bin";
        default:
            return {};
    }
}

std::wstring ResourceFileName(std::wstring_view name, uint32_t type) {
    std::wstring file(name);
    file += ResourceFileExtension(type);
    ReplaceAll(file, L"__", L"/");
    ReplaceAll(file, L"\\", L"/");
    return file;
}

}  // namespace ResourceLib::internal
