// ResourceLib::StorageBase: what every storage shares. It binds the storage to its
// manager, caches each resource it has handed out (by id and by name), empties the caches
// when the manager's language or skin has changed since the last request (then calls
// Reload), expands placeholders in strings, and forwards each cache miss to one protected
// loader that the concrete storages override.
//
// Errors: the public operations follow the optional-pointer convention of IStorage. The
// loaders are always called with a non-null `error` set to success; they report a
// failure by storing a code there (ReportError) and return the empty result.
//
// Ids: any non-negative 32-bit id reaches the loaders; the tables by id keep memory
// bounded for large ids (IdTable.h).
//
// Thread safety: used by one manager, which serialises the calls.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "storages/IStorage.h"
#include "storages/IdTable.h"

namespace ResourceLib {

class StorageBase : public IStorage,
                    public InterfaceCore::HeirClassBase<IStorage>,
                    public InterfaceCore::EnumeratableClassBase<StorageBase> {
public:
    StorageBase();

    bool SetManager(boost::weak_ptr<IManager> manager, Error* error = nullptr) override;
    std::wstring GetString(ResourceName name, Error* error = nullptr) override;
    std::wstring GetString(int32_t id, Error* error = nullptr) override;
    BitmapHandle GetBitmap(ResourceName name, bool premultiplyAlpha,
                           Error* error = nullptr) override;
    BitmapHandle GetBitmap(int32_t id, bool premultiplyAlpha, Error* error = nullptr) override;
    IconHandle GetIcon(ResourceName name, int32_t width, int32_t height,
                       Error* error = nullptr) override;
    IconHandle GetIcon(int32_t id, int32_t width, int32_t height, Error* error = nullptr) override;
    ByteView GetBinary(ResourceName name, Error* error = nullptr) override;
    ByteView GetBinary(int32_t id, Error* error = nullptr) override;
    COLORREF GetColor(ResourceName name, Error* error = nullptr) override;
    COLORREF GetColor(int32_t id, Error* error = nullptr) override;
    FontHandle GetFont(ResourceName name, Error* error = nullptr) override;
    FontHandle GetFont(int32_t id, Error* error = nullptr) override;
    int32_t GetInteger(ResourceName name, Error* error = nullptr) override;
    int32_t GetInteger(int32_t id, Error* error = nullptr) override;
    std::wstring GetFilePath(int32_t id, uint32_t type, Error* error = nullptr) override;
    bool ClearCache(Error* error = nullptr) override;
    bool ReleaseResource(int32_t id, uint32_t type, Error* error = nullptr) override;
    // GetSupportedTypes and IsAvailable are each concrete storage's own.

protected:
    // Called after the caches were emptied for a new language or skin; its result is
    // ignored by the caller. The default does nothing and returns true.
    virtual bool Reload(Error* error);
    // The loaders: the default of each reports NotSupported.
    virtual std::wstring LoadStringByName(ResourceName name, Error* error);
    virtual std::wstring LoadStringById(int32_t id, Error* error);
    virtual BitmapHandle LoadBitmapByName(ResourceName name, bool premultiplyAlpha, Error* error);
    virtual BitmapHandle LoadBitmapById(int32_t id, bool premultiplyAlpha, Error* error);
    virtual IconHandle LoadIconByName(ResourceName name, int32_t width, int32_t height,
                                      Error* error);
    virtual IconHandle LoadIconById(int32_t id, int32_t width, int32_t height, Error* error);
    virtual void LoadBinaryByName(ResourceName name, std::vector<uint8_t>& data, Error* error);
    virtual void LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error);
    virtual COLORREF LoadColorByName(ResourceName name, Error* error);
    virtual COLORREF LoadColorById(int32_t id, Error* error);
    virtual FontHandle LoadFontByName(ResourceName name, Error* error);
    virtual FontHandle LoadFontById(int32_t id, Error* error);
    virtual int32_t LoadIntegerByName(ResourceName name, Error* error);
    virtual int32_t LoadIntegerById(int32_t id, Error* error);
    virtual std::wstring LoadFilePath(int32_t id, uint32_t type, Error* error);

    // For the concrete storages: the manager (null when gone), and the language and skin
    // the caches were filled for (null when none is set).
    InternalManagerPtr GetManager() const;
    const LanguagePtr& GetCurrentLanguage() const { return language; }
    const SkinPtr& GetCurrentSkin() const { return skin; }
    // The name the manager registered for `id` of `type`: InvalidResourceID for a
    // negative id, InvalidStorageState without a manager, InvalidResourceName when the
    // name is empty.
    std::wstring ResolveResourceName(int32_t id, uint32_t type, Error* error) const;

private:
    // A cached value of a type that has one variant per resource.
    template <class T>
    struct Entry {
        T value{};
        bool loaded = false;
    };
    // Bitmaps are kept once per premultiplyAlpha variant, icons once per size.
    struct BitmapVariant {
        BitmapHandle handle;
        bool premultiplyAlpha = false;
    };
    struct IconVariant {
        IconHandle handle;
        int32_t width = 0;
        int32_t height = 0;
    };
    using BitmapList = std::vector<BitmapVariant>;
    using IconList = std::vector<IconVariant>;
    template <class E>
    using ByName = std::map<std::wstring, E>;

    // Lock the manager, and when its language or skin differs from the one the caches were
    // filled for, empty the caches and Reload. InvalidStorageState without a manager.
    bool CheckContext(Error* error);
    void ClearCaches();
    std::wstring ExpandPlaceholders(std::wstring text, const std::wstring& selfName) const;
    // The value a placeholder `name` stands for, or "" when none. `managerGone` is set when
    // the manager's own string lookup could not be asked.
    std::wstring PlaceholderValue(const std::wstring& name, bool& managerGone) const;

    IdTable<Entry<std::wstring>> stringsById;
    IdTable<BitmapList> bitmapsById;
    IdTable<IconList> iconsById;
    IdTable<Entry<std::vector<uint8_t>>> binariesById;
    IdTable<Entry<COLORREF>> colorsById;
    IdTable<Entry<FontHandle>> fontsById;
    IdTable<Entry<int32_t>> integersById;
    ByName<Entry<std::wstring>> stringsByName;
    ByName<BitmapList> bitmapsByName;
    ByName<IconList> iconsByName;
    ByName<Entry<FontHandle>> fontsByName;
    ByName<Entry<COLORREF>> colorsByName;
    ByName<Entry<int32_t>> integersByName;

    LanguagePtr language;
    SkinPtr skin;
    // False until the first context check after construction: that one always reloads,
    // even when the manager has neither a language nor a skin (both null compare equal).
    bool contextSeen = false;
    boost::weak_ptr<IInternalManager> manager;
    std::vector<std::pair<std::wstring, std::wstring>> placeholders;
};

}  // namespace ResourceLib
