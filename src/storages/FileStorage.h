// ResourceLib::FileStorage: bitmaps (".bmp"), icons (".ico") and binary blobs (".bin")
// that lie as plain files in a resources directory, one file per resource, named after
// it. It searches the same language and skin folders as the XML storage (see
// internal/ResourceFileNames.h), taking those that exist at the last Reload; the most
// specific folder that holds a loadable file wins.
//
// Errors: the loaders follow StorageBase: InvalidResourceName for an empty name,
// ResourceNotFound when no folder gives a loadable file; InvalidResourceID and
// InvalidStorageState for requests by id that cannot be resolved to a name.
//
// Thread safety: used by one manager, from the thread that runs the GUI session.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "storages/StorageBase.h"

namespace ResourceLib {

class FileStorage : public StorageBase {
public:
    // Nothing is looked at before the first request.
    explicit FileStorage(std::wstring directory);

    void GetSupportedTypes(uint32_t& mask, Error* error = nullptr) override;
    bool IsAvailable(Error* error = nullptr) override;

protected:
    bool Reload(Error* error) override;
    BitmapHandle LoadBitmapByName(ResourceName name, bool premultiplyAlpha, Error* error) override;
    BitmapHandle LoadBitmapById(int32_t id, bool premultiplyAlpha, Error* error) override;
    IconHandle LoadIconByName(ResourceName name, int32_t width, int32_t height,
                              Error* error) override;
    IconHandle LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) override;
    void LoadBinaryByName(ResourceName name, std::vector<uint8_t>& data, Error* error) override;
    void LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) override;

private:
    // Tries `load` on the resource's file in each search folder, in order, until it
    // succeeds; reports InvalidResourceName or ResourceNotFound otherwise.
    bool Search(ResourceName name, uint32_t type,
                const std::function<bool(const std::wstring& path)>& load, Error* error) const;

    std::wstring directory;
    std::vector<std::wstring> searchDirectories;
};

}  // namespace ResourceLib
