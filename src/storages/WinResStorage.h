// ResourceLib::WinResStorage: resources compiled into the running executable (its
// ".rsrc" resource image): strings from the string tables, bitmaps, icons and blobs of
// the resource type "BINARY". A library id maps to the module resource id
// (idBase + id) mod 65536, so the library's ids can live in a range of their own.
// Strings come in the language of the thread locale, which every Reload sets from the
// manager's current language.
//
// Errors: the loaders follow StorageBase; every miss is ResourceNotFound. A string by name
// needs the manager's name registry: InvalidStorageState without a manager.
//
// Thread safety: used by one manager. Reload changes the calling thread's locale and
// user-interface language, which stay set afterwards for all code on that thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "storages/StorageBase.h"

namespace ResourceLib {

class WinResStorage : public StorageBase {
public:
    explicit WinResStorage(int32_t idBase);

    void GetSupportedTypes(uint32_t& mask, Error* error = nullptr) override;
    bool IsAvailable(Error* error = nullptr) override;

    // The module resource id of library id `id`.
    uint16_t ModuleId(int32_t id) const;

protected:
    bool Reload(Error* error) override;
    std::wstring LoadStringByName(ResourceName name, Error* error) override;
    std::wstring LoadStringById(int32_t id, Error* error) override;
    BitmapHandle LoadBitmapByName(ResourceName name, bool premultiplyAlpha, Error* error) override;
    BitmapHandle LoadBitmapById(int32_t id, bool premultiplyAlpha, Error* error) override;
    IconHandle LoadIconByName(ResourceName name, int32_t width, int32_t height,
                              Error* error) override;
    IconHandle LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) override;
    void LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) override;

private:
    int32_t idBase;
};

}  // namespace ResourceLib
