// ResourceLib::IStorage: one source of resources for the resource manager. The manager
// binds each storage to itself (SetManager) and asks its storages in turn.
//
// Errors follow the optional-pointer convention of ResourceErrors.h: with `error` given a
// failure is stored there (codes of ResourceLib::error_category) and the empty result is
// returned; without it, boost::system::system_error is thrown.
//
// Thread safety: a storage is used by its manager, which serialises the calls.
#pragma once

#include <cstdint>
#include <string>

#include <boost/system/error_code.hpp>
#include <boost/weak_ptr.hpp>

#include "foundation/InterfaceCore.h"
#include "storages/IManager.h"
#include "storages/ResourceTypes.h"

namespace ResourceLib {

struct IStorage : InterfaceCore::IInterfaceCore<IStorage> {
    using Error = boost::system::error_code;

    // Binds the storage to `manager`; false when it is gone. Throws std::bad_cast
    // "Failed to cast to an internal interface" when it is no IInternalManager.
    virtual bool SetManager(boost::weak_ptr<IManager> manager, Error* error = nullptr) {
        (void)manager, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual std::wstring GetString(ResourceName name, Error* error = nullptr) {
        (void)name, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual std::wstring GetString(int32_t id, Error* error = nullptr) {
        (void)id, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual BitmapHandle GetBitmap(ResourceName name, bool premultiplyAlpha,
                                   Error* error = nullptr) {
        (void)name, (void)premultiplyAlpha, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual BitmapHandle GetBitmap(int32_t id, bool premultiplyAlpha, Error* error = nullptr) {
        (void)id, (void)premultiplyAlpha, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual IconHandle GetIcon(ResourceName name, int32_t width, int32_t height,
                               Error* error = nullptr) {
        (void)name, (void)width, (void)height, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual IconHandle GetIcon(int32_t id, int32_t width, int32_t height, Error* error = nullptr) {
        (void)id, (void)width, (void)height, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual ByteView GetBinary(ResourceName name, Error* error = nullptr) {
        (void)name, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual ByteView GetBinary(int32_t id, Error* error = nullptr) {
        (void)id, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual COLORREF GetColor(ResourceName name, Error* error = nullptr) {
        (void)name, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual COLORREF GetColor(int32_t id, Error* error = nullptr) {
        (void)id, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual FontHandle GetFont(ResourceName name, Error* error = nullptr) {
        (void)name, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual FontHandle GetFont(int32_t id, Error* error = nullptr) {
        (void)id, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual int32_t GetInteger(ResourceName name, Error* error = nullptr) {
        (void)name, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual int32_t GetInteger(int32_t id, Error* error = nullptr) {
        (void)id, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    // Not cached: asks the storage's source every time.
    virtual std::wstring GetFilePath(int32_t id, uint32_t type, Error* error = nullptr) {
        (void)id, (void)type, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    // Writes the set of resource types the storage serves into `mask`.
    virtual void GetSupportedTypes(uint32_t& mask, Error* error = nullptr) {
        (void)mask, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool IsAvailable(Error* error = nullptr) {
        (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool ClearCache(Error* error = nullptr) {
        (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool ReleaseResource(int32_t id, uint32_t type, Error* error = nullptr) {
        (void)id, (void)type, (void)error;
        InterfaceCore::ThrowPureVirtualCall();
    }
};

}  // namespace ResourceLib
