#include "storages/FileStorage.h"

#include "graphics/Images.h"
#include "storages/ResourceErrors.h"
#include "storages/internal/ResourceFileNames.h"
#include "system/FileHelpers.h"

namespace ResourceLib {

namespace {

ResourceName NameRef(const std::wstring& text) {
    return ResourceName(text.c_str(), static_cast<uint32_t>(text.size()));
}

}  // namespace

FileStorage::FileStorage(std::wstring directory) : directory(std::move(directory)) {}

void FileStorage::GetSupportedTypes(uint32_t& mask, Error* /*error*/) {
    mask = ResourceType_Bitmap | ResourceType_Icon | ResourceType_Binary;
}

bool FileStorage::IsAvailable(Error* /*error*/) {
    return true;
}

bool FileStorage::Reload(Error* /*error*/) {
    searchDirectories.clear();
    const std::wstring language = internal::NameOf(GetCurrentLanguage());
    const std::wstring skin = internal::NameOf(GetCurrentSkin());
    for (std::wstring& folder : internal::CandidateFolders(directory, language, skin)) {
        if (System::FileExists(folder)) searchDirectories.push_back(std::move(folder));
    }
    return true;
}

bool FileStorage::Search(ResourceName name, uint32_t type,
                         const std::function<bool(const std::wstring& path)>& load,
                         Error* error) const {
    if (name.empty()) {
        ReportError(error, InvalidResourceName);
        return false;
    }
    const std::wstring file = internal::ResourceFileName(name.view(), type);
    for (const std::wstring& folder : searchDirectories) {
        if (load(internal::JoinPath(folder, file))) return true;
    }
    ReportError(error, ResourceNotFound);
    return false;
}

BitmapHandle FileStorage::LoadBitmapByName(ResourceName name, bool premultiplyAlpha, Error* error) {
    BitmapHandle bitmap;
    auto load = [&bitmap](const std::wstring& path) {
        bitmap = CommonGuiLib::LoadBitmapFromFile(path);
        return CommonGuiLib::HasHandle(bitmap);
    };
    if (!Search(name, ResourceType_Bitmap, load, error)) return {};
    if (premultiplyAlpha) CommonGuiLib::PremultiplyAlpha(bitmap, false);
    return bitmap;
}

BitmapHandle FileStorage::LoadBitmapById(int32_t id, bool premultiplyAlpha, Error* error) {
    const std::wstring name = ResolveResourceName(id, ResourceType_Bitmap, error);
    if (*error) return {};
    return LoadBitmapByName(NameRef(name), premultiplyAlpha, error);
}

IconHandle FileStorage::LoadIconByName(ResourceName name, int32_t width, int32_t height,
                                       Error* error) {
    // One size given stands for a square icon; none asks for the file's own size.
    if (width == 0) width = height;
    if (height == 0) height = width;
    IconHandle icon;
    auto load = [&icon, width, height](const std::wstring& path) {
        icon = CommonGuiLib::LoadIconFromFile(path, width, height);
        return CommonGuiLib::HasHandle(icon);
    };
    if (!Search(name, ResourceType_Icon, load, error)) return {};
    return icon;
}

IconHandle FileStorage::LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) {
    const std::wstring name = ResolveResourceName(id, ResourceType_Icon, error);
    if (*error) return {};
    return LoadIconByName(NameRef(name), width, height, error);
}

void FileStorage::LoadBinaryByName(ResourceName name, std::vector<uint8_t>& data, Error* error) {
    auto load = [&data](const std::wstring& path) { return System::ReadWholeFile(path, data); };
    if (!Search(name, ResourceType_Binary, load, error)) data.clear();
}

void FileStorage::LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) {
    const std::wstring name = ResolveResourceName(id, ResourceType_Binary, error);
    if (*error) return;
    LoadBinaryByName(NameRef(name), data, error);
}

}  // namespace ResourceLib
