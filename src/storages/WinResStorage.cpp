#include "storages/WinResStorage.h"

#include "foundation/TextConversion.h"
#include "graphics/Images.h"
#include "platform/ResourceImage.h"
#include "storages/ResourceErrors.h"
#include "system/Language.h"
#include "system/ModuleResources.h"

namespace ResourceLib {

namespace {

// The module is the running executable, named by the empty path.
const std::wstring kOwnModule;

Platform::ResourceName BinaryType() {
    return Platform::ResourceName(std::u16string(u"BINARY"));
}

}  // namespace

WinResStorage::WinResStorage(int32_t idBase) : idBase(idBase) {}

void WinResStorage::GetSupportedTypes(uint32_t& mask, Error* /*error*/) {
    mask = ResourceType_String | ResourceType_Bitmap | ResourceType_Icon | ResourceType_Binary;
}

bool WinResStorage::IsAvailable(Error* /*error*/) {
    return true;
}

uint16_t WinResStorage::ModuleId(int32_t id) const {
    return static_cast<uint16_t>((static_cast<uint32_t>(idBase) + static_cast<uint32_t>(id)) &
                                 0xFFFF);
}

bool WinResStorage::Reload(Error* /*error*/) {
    const LanguagePtr& language = GetCurrentLanguage();
    if (!language) return true;
    const int32_t lcid = language->GetLocale();
    if (lcid == 0) return true;
    System::SetThreadLocale(static_cast<uint32_t>(lcid));
    // The user-interface language takes the primary language alone.
    System::SetThreadUILanguage(static_cast<uint16_t>(lcid & 0x3FF));
    return true;
}

std::wstring WinResStorage::LoadStringById(int32_t id, Error* error) {
    bool found = false;
    const uint16_t language = static_cast<uint16_t>(System::GetThreadLocale() & 0xFFFF);
    std::wstring text = System::LoadStringResource(ModuleId(id), kOwnModule, language, &found);
    if (!found) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return text;
}

std::wstring WinResStorage::LoadStringByName(ResourceName name, Error* error) {
    const InternalManagerPtr manager = GetManager();
    if (!manager) {
        ReportError(error, InvalidStorageState);
        return {};
    }
    const int32_t id = manager->GetResourceId(name, ResourceType_String);
    if (id == kNoResourceId) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return LoadStringById(id, error);
}

BitmapHandle WinResStorage::LoadBitmapById(int32_t id, bool /*premultiplyAlpha*/, Error* error) {
    // Module bitmaps are handed out as loaded, premultiplied or not.
    BitmapHandle bitmap = CommonGuiLib::LoadBitmapResource(ModuleId(id));
    if (!CommonGuiLib::HasHandle(bitmap)) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return bitmap;
}

BitmapHandle WinResStorage::LoadBitmapByName(ResourceName name, bool /*premultiplyAlpha*/,
                                             Error* error) {
    BitmapHandle bitmap = CommonGuiLib::LoadBitmapResource(name.str());
    if (!CommonGuiLib::HasHandle(bitmap)) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return bitmap;
}

IconHandle WinResStorage::LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) {
    IconHandle icon = CommonGuiLib::LoadIconFromModule(kOwnModule, ModuleId(id), width, height);
    if (!CommonGuiLib::HasHandle(icon)) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return icon;
}

IconHandle WinResStorage::LoadIconByName(ResourceName name, int32_t width, int32_t height,
                                         Error* error) {
    IconHandle icon = CommonGuiLib::LoadIconFromModule(kOwnModule, name.str(), width, height);
    if (!CommonGuiLib::HasHandle(icon)) {
        ReportError(error, ResourceNotFound);
        return {};
    }
    return icon;
}

void WinResStorage::LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) {
    if (!System::LoadModuleResource(kOwnModule, ModuleId(id), BinaryType(), data)) {
        data.clear();
        ReportError(error, ResourceNotFound);
    }
}

}  // namespace ResourceLib
