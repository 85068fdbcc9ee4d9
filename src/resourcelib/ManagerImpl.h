// ResourceLib::ManagerImpl: the resource manager. It asks its storages in the order they
// were added, then its parent, keeps the current language and skin chosen through the
// providers, and maps numeric ids to names per resource type.
//
// Id registry: each type has a table indexed by id that reads as if grown to the largest
// id registered; any non-negative id can be registered without memory growing with it.
//
// Errors: see IManager.h. Errors that storages report stay inside: a storage that fails is
// passed over. AddStorage needs the manager to be owned by a boost::shared_ptr (it throws
// boost::bad_weak_ptr otherwise); without an owner, change notifications name no manager.
//
// Thread safety: every operation from any thread; one re-entrant lock serialises them and
// is held across calls into storages and into the parent (so the order is always child
// before parent). Change notifications run without this manager's own hold of the lock,
// except that SetLanguage(name) and SetSkin(name) keep theirs while they are delivered.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "storages/IManager.h"
#include "storages/IStorage.h"
#include "storages/IdTable.h"

namespace ResourceLib {

class ManagerImpl : public IInternalManager,
                    public InterfaceCore::HeirClassBase<IInternalManager>,
                    public InterfaceCore::EnumeratableClassBase<ManagerImpl> {
public:
    ManagerImpl() = default;
    ManagerImpl(const ManagerImpl&) = delete;
    ManagerImpl& operator=(const ManagerImpl&) = delete;

    // Keeps the registry and the throw-on-failure flag; clears and forgets the parent.
    void Clear() override;
    // Sets `parent` to throw on failure and brings its language and skin in line. True.
    bool SetParent(ManagerPtr parent) override;
    // Registers in the parent too. False for type 0 and for negative ids;
    // std::logic_error for a type that is not one of the eight bits.
    bool RegisterResourceName(int32_t id, ResourceName name, uint32_t type) override;
    // Switch to the provider's default (possibly null) item; false for a null provider.
    bool SetLanguageProvider(LanguageProviderPtr provider) override;
    bool SetSkinProvider(SkinProviderPtr provider) override;
    // False for null, or when the storage refuses this manager (reports an error or false).
    bool AddStorage(StoragePtr storage) override;
    void SetExtraParamsProvider(const ExtraParamsProviderPtr& provider) override;

    std::wstring GetString(ResourceName name) override;
    std::wstring GetString(int32_t id) override;
    BitmapHandle GetBitmap(ResourceName name, bool premultiplyAlpha) override;
    BitmapHandle GetBitmap(int32_t id, bool premultiplyAlpha) override;
    IconHandle GetIcon(ResourceName name, int32_t width, int32_t height) override;
    IconHandle GetIcon(int32_t id, int32_t width, int32_t height) override;
    ByteView GetBinary(ResourceName name) override;
    ByteView GetBinary(int32_t id) override;
    COLORREF GetColor(ResourceName name) override;
    COLORREF GetColor(int32_t id) override;
    FontHandle GetFont(ResourceName name) override;
    FontHandle GetFont(int32_t id) override;
    int32_t GetInteger(ResourceName name) override;
    int32_t GetInteger(int32_t id) override;
    // Storages serving any bit of `type` are asked; the path found is normalised ("/").
    std::wstring GetFilePath(int32_t id, uint32_t type) override;

    // True when every storage cleared its cache (also with no storages).
    bool ClearCache() override;
    // True when any storage serving a bit of `type` dropped an entry.
    bool ReleaseResource(int32_t id, uint32_t type) override;
    // An id inside the table answers here, even with an empty name; else the parent.
    std::wstring GetResourceName(int32_t id, uint32_t type) override;
    std::int32_t GetResourceId(ResourceName name, uint32_t type) override;
    void SetThrowOnFailure(bool flag) override;
    bool GetThrowOnFailure() override;

    LanguageProviderPtr GetLanguageProvider() override;
    // False without a provider or when it has no such language.
    bool SetLanguage(ResourceName name) override;
    // Always true; null is allowed. Notifies only when the language object changes.
    bool SetLanguage(LanguagePtr language) override;
    LanguagePtr GetLanguage() override;

    SkinProviderPtr GetSkinProvider() override;
    bool SetSkin(ResourceName name) override;
    bool SetSkin(SkinPtr skin) override;
    SkinPtr GetSkin() override;

    ExtraParamsProviderPtr GetExtraParamsProvider() override;

private:
    // The one lookup behind every getter: storages serving a bit of `type` in order, then
    // the parent (with this manager's throw-on-failure flag for the call), then the failure
    // rule. `fromStorage(storage, error)` and `fromParent(manager)` make the one call that
    // differs between getters. Defined in the .cpp, the only place that uses it.
    template <class Result, class FromStorage, class FromParent>
    Result Retrieve(uint32_t type, FromStorage&& fromStorage, FromParent&& fromParent);

    std::recursive_mutex lock;
    ManagerPtr parent;
    LanguageProviderPtr languageProvider;
    LanguagePtr language;
    SkinProviderPtr skinProvider;
    SkinPtr skin;
    std::vector<StoragePtr> storages;
    ExtraParamsProviderPtr extraParams;
    std::array<IdTable<std::wstring>, 8> namesById;
    std::array<std::map<std::wstring, int32_t, std::less<>>, 8> idsByName;
    std::atomic<bool> throwOnFailure{false};
};

}  // namespace ResourceLib
