// ResourceLib::SystemStorage: colours and icons straight from the system. Colours are the
// current display colours, by COLOR_ name or by index 0..30; icons are named
// "file,index" (the last comma counts) and extracted from an executable, a library or an
// .ico file, at 32 x 32 (large) or 16 x 16 (small) only. Nothing is reloaded on a change
// of language or skin; what StorageBase caches stays until the caches are cleared.
//
// Errors: the loaders follow StorageBase; every miss is ResourceNotFound.
//
// Thread safety: used by one manager, from the thread that runs the GUI session.
#pragma once

#include <cstdint>

#include "storages/StorageBase.h"

namespace ResourceLib {

class SystemStorage : public StorageBase {
public:
    SystemStorage() = default;

    void GetSupportedTypes(uint32_t& mask, Error* error = nullptr) override;
    bool IsAvailable(Error* error = nullptr) override;

protected:
    IconHandle LoadIconByName(ResourceName name, int32_t width, int32_t height,
                              Error* error) override;
    IconHandle LoadIconById(int32_t id, int32_t width, int32_t height, Error* error) override;
    COLORREF LoadColorByName(ResourceName name, Error* error) override;
    COLORREF LoadColorById(int32_t id, Error* error) override;
};

}  // namespace ResourceLib
