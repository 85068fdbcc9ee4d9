// ResourceLib::IManager: what callers of the resource library talk to. A manager asks its
// storages in the order they were added, falls back to a parent manager, maps numeric ids
// to names per resource type, and keeps the current language and skin.
//
// Errors: the typed getters return the type's empty result for a resource nobody has, or
// throw std::runtime_error "Failed to retrieve a resource" when throw-on-failure is set.
// The name registry throws std::logic_error "Invalid resource type encountered" for a
// type that is not exactly one bit of 1..128. An operation a class does not implement
// throws std::runtime_error "Pure virtual function call".
//
// Thread safety: implementations serialise their operations; in this system all calls
// come from the user-interface thread.
#pragma once

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "foundation/InterfaceCore.h"
#include "foundation/ObserverList.h"
#include "storages/ILanguage.h"
#include "storages/ResourceTypes.h"

namespace ResourceLib {

struct IManager;
struct IStorage;
using ManagerPtr = boost::shared_ptr<IManager>;
using StoragePtr = boost::shared_ptr<IStorage>;

// Supplies the values of placeholders such as "{ProductName}".
struct IManagerExtraParamsProvider : InterfaceCore::IInterfaceCore<IManagerExtraParamsProvider> {
    // The parameter's value, or "" when there is none.
    virtual std::wstring GetParam(ResourceName name) const {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
};
using ExtraParamsProviderPtr = boost::shared_ptr<IManagerExtraParamsProvider>;

// Told when a manager's language or skin changes; called on the thread that changed it.
struct IManagerListener : InterfaceCore::IInterfaceCore<IManagerListener> {
    virtual void OnLanguageChanged(const ManagerPtr& manager, const LanguagePtr& oldLanguage,
                                   const LanguagePtr& newLanguage) = 0;
    virtual void OnSkinChanged(const ManagerPtr& manager, const SkinPtr& oldSkin,
                               const SkinPtr& newSkin) = 0;
};

struct IManager : InterfaceCore::IInterfaceCore<IManager> {
    virtual void Clear() { InterfaceCore::ThrowPureVirtualCall(); }
    virtual bool SetParent(ManagerPtr parent) {
        (void)parent;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool RegisterResourceName(int32_t id, ResourceName name, uint32_t type) {
        (void)id, (void)name, (void)type;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool SetLanguageProvider(LanguageProviderPtr provider) {
        (void)provider;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool SetSkinProvider(SkinProviderPtr provider) {
        (void)provider;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool AddStorage(StoragePtr storage) {
        (void)storage;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual void SetExtraParamsProvider(const ExtraParamsProviderPtr& provider) {
        (void)provider;
        InterfaceCore::ThrowPureVirtualCall();
    }

    virtual std::wstring GetString(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual std::wstring GetString(int32_t id) {
        (void)id;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual BitmapHandle GetBitmap(ResourceName name, bool premultiplyAlpha) {
        (void)name, (void)premultiplyAlpha;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual BitmapHandle GetBitmap(int32_t id, bool premultiplyAlpha) {
        (void)id, (void)premultiplyAlpha;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual IconHandle GetIcon(ResourceName name, int32_t width, int32_t height) {
        (void)name, (void)width, (void)height;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual IconHandle GetIcon(int32_t id, int32_t width, int32_t height) {
        (void)id, (void)width, (void)height;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual ByteView GetBinary(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual ByteView GetBinary(int32_t id) {
        (void)id;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual COLORREF GetColor(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual COLORREF GetColor(int32_t id) {
        (void)id;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual FontHandle GetFont(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual FontHandle GetFont(int32_t id) {
        (void)id;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual int32_t GetInteger(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual int32_t GetInteger(int32_t id) {
        (void)id;
        InterfaceCore::ThrowPureVirtualCall();
    }
    // The file path a storage records for the resource, normalised.
    virtual std::wstring GetFilePath(int32_t id, uint32_t type) {
        (void)id, (void)type;
        InterfaceCore::ThrowPureVirtualCall();
    }

    virtual bool ClearCache() { InterfaceCore::ThrowPureVirtualCall(); }
    virtual bool ReleaseResource(int32_t id, uint32_t type) {
        (void)id, (void)type;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual std::wstring GetResourceName(int32_t id, uint32_t type) {
        (void)id, (void)type;
        InterfaceCore::ThrowPureVirtualCall();
    }
    // kNoResourceId (0xFFFFFFFF) when the name is registered nowhere.
    virtual int32_t GetResourceId(ResourceName name, uint32_t type) {
        (void)name, (void)type;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual void SetThrowOnFailure(bool flag) {
        (void)flag;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool GetThrowOnFailure() { InterfaceCore::ThrowPureVirtualCall(); }

    virtual LanguageProviderPtr GetLanguageProvider() { InterfaceCore::ThrowPureVirtualCall(); }
    virtual bool SetLanguage(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool SetLanguage(LanguagePtr language) {
        (void)language;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual LanguagePtr GetLanguage() { InterfaceCore::ThrowPureVirtualCall(); }
    // Switches to the named language and tells whether it is now current; logs what went
    // wrong. An empty name keeps the current language and gives true. Not overridden.
    virtual bool SetLanguageVerify(ResourceName name);
    // The current language's name, or "". Not overridden.
    virtual std::wstring GetLanguageName();

    virtual SkinProviderPtr GetSkinProvider() { InterfaceCore::ThrowPureVirtualCall(); }
    virtual bool SetSkin(ResourceName name) {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual bool SetSkin(SkinPtr skin) {
        (void)skin;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual SkinPtr GetSkin() { InterfaceCore::ThrowPureVirtualCall(); }
    // The current skin's name, or "". Not overridden.
    virtual std::wstring GetSkinName();

    virtual ExtraParamsProviderPtr GetExtraParamsProvider() {
        InterfaceCore::ThrowPureVirtualCall();
    }

    // Told of language and skin changes; empty in this system, but delivered to.
    Synchronization::ObserverList<IManagerListener> changeListeners;
};

// The interface storages hold their manager by; adds no operation.
struct IInternalManager : IManager, InterfaceCore::IInterfaceCore<IInternalManager> {};

using InternalManagerPtr = boost::shared_ptr<IInternalManager>;

}  // namespace ResourceLib
