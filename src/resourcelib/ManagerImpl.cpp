#include "resourcelib/ManagerImpl.h"

#include <bit>
#include <stdexcept>
#include <utility>

#include <boost/system/error_code.hpp>

#include "resourcelib/internal/PathNormalizer.h"

namespace ResourceLib {
namespace {

// The registry slot of a single type bit; anything else is a caller's mistake.
std::size_t TypeIndex(uint32_t type) {
    if (!std::has_single_bit(type) || type > ResourceType_Integer)
        throw std::logic_error("Invalid resource type encountered");
    return static_cast<std::size_t>(std::countr_zero(type));
}

// A storage that cannot even say what it serves is treated as serving nothing.
bool Serves(IStorage& storage, uint32_t type) {
    uint32_t supported = 0;
    IStorage::Error error;
    storage.GetSupportedTypes(supported, &error);
    return error.value() == 0 && (supported & type) != 0;
}

// A reference to the text of `text`, which must outlive it.
ResourceName NameOf(const std::wstring& text) {
    return ResourceName(text.c_str(), static_cast<uint32_t>(text.size()));
}

// Lends the parent the child's throw-on-failure flag for one forwarded call, and gives
// the parent its own flag back however the call ends.
class LentThrowFlag {
public:
    LentThrowFlag(IManager& manager, bool flag)
        : m_manager(manager), m_saved(manager.GetThrowOnFailure()) {
        m_manager.SetThrowOnFailure(flag);
    }
    ~LentThrowFlag() { m_manager.SetThrowOnFailure(m_saved); }
    LentThrowFlag(const LentThrowFlag&) = delete;
    LentThrowFlag& operator=(const LentThrowFlag&) = delete;

private:
    IManager& m_manager;
    bool m_saved;
};

}  // namespace

template <class Result, class FromStorage, class FromParent>
Result ManagerImpl::Retrieve(uint32_t type, FromStorage&& fromStorage, FromParent&& fromParent) {
    std::lock_guard hold(lock);
    for (const StoragePtr& storage : storages) {
        if (!Serves(*storage, type)) continue;
        IStorage::Error error(0, boost::system::system_category());
        Result result = fromStorage(*storage, &error);
        // An empty answer without an error is an answer: it ends the search.
        if (error.value() == 0) return result;
    }
    if (parent) {
        LentThrowFlag lent(*parent, throwOnFailure.load());
        return fromParent(*parent);
    }
    if (throwOnFailure.load()) throw std::runtime_error("Failed to retrieve a resource");
    return Result{};
}

void ManagerImpl::Clear() {
    std::lock_guard hold(lock);
    storages.clear();
    language.reset();
    languageProvider.reset();
    extraParams.reset();
    skin.reset();
    skinProvider.reset();
    if (parent) parent->Clear();
    parent.reset();
}

bool ManagerImpl::SetParent(ManagerPtr newParent) {
    // Only called during set-up; the lock still keeps the fields consistent for readers.
    std::lock_guard hold(lock);
    parent = std::move(newParent);
    if (!parent) return true;
    parent->SetThrowOnFailure(true);

    SkinPtr parentSkin;
    if (SkinProviderPtr provider = parent->GetSkinProvider(); provider && skin) {
        const std::wstring name = skin->GetName();
        parentSkin = provider->FindSkin(NameOf(name));
    }
    parent->SetSkin(parentSkin);

    LanguagePtr parentLanguage;
    if (LanguageProviderPtr provider = parent->GetLanguageProvider(); provider && language) {
        const std::wstring name = language->GetName();
        parentLanguage = provider->FindLanguage(NameOf(name));
    }
    parent->SetLanguage(parentLanguage);
    return true;
}

bool ManagerImpl::RegisterResourceName(int32_t id, ResourceName name, uint32_t type) {
    ManagerPtr forward;
    {
        std::lock_guard hold(lock);
        forward = parent;
    }
    if (forward) forward->RegisterResourceName(id, name, type);
    if (type == 0) return false;

    std::lock_guard hold(lock);
    const std::size_t index = TypeIndex(type);
    if (id < 0) return false;
    namesById[index].Obtain(id) = name.str();
    idsByName[index].insert_or_assign(name.str(), id);
    return true;
}

bool ManagerImpl::SetLanguageProvider(LanguageProviderPtr provider) {
    if (!provider) return false;
    LanguagePtr initial;
    {
        std::lock_guard hold(lock);
        languageProvider = provider;
        initial = provider->GetDefaultLanguage();
    }
    return SetLanguage(initial);
}

bool ManagerImpl::SetSkinProvider(SkinProviderPtr provider) {
    if (!provider) return false;
    SkinPtr initial;
    {
        std::lock_guard hold(lock);
        skinProvider = provider;
        initial = provider->GetDefaultSkin();
    }
    return SetSkin(initial);
}

bool ManagerImpl::AddStorage(StoragePtr storage) {
    if (!storage) return false;
    std::lock_guard hold(lock);
    const boost::shared_ptr<ManagerImpl> self = shared_from_this();
    IStorage::Error error;
    if (!storage->SetManager(boost::weak_ptr<IManager>(self), &error) || error.value() != 0)
        return false;
    storages.push_back(std::move(storage));
    return true;
}

void ManagerImpl::SetExtraParamsProvider(const ExtraParamsProviderPtr& provider) {
    std::lock_guard hold(lock);
    extraParams = provider;
}

std::wstring ManagerImpl::GetString(ResourceName name) {
    return Retrieve<std::wstring>(
        ResourceType_String, [&](IStorage& s, IStorage::Error* e) { return s.GetString(name, e); },
        [&](IManager& m) { return m.GetString(name); });
}

std::wstring ManagerImpl::GetString(int32_t id) {
    return Retrieve<std::wstring>(
        ResourceType_String, [&](IStorage& s, IStorage::Error* e) { return s.GetString(id, e); },
        [&](IManager& m) { return m.GetString(id); });
}

BitmapHandle ManagerImpl::GetBitmap(ResourceName name, bool premultiplyAlpha) {
    return Retrieve<BitmapHandle>(
        ResourceType_Bitmap,
        [&](IStorage& s, IStorage::Error* e) { return s.GetBitmap(name, premultiplyAlpha, e); },
        [&](IManager& m) { return m.GetBitmap(name, premultiplyAlpha); });
}

BitmapHandle ManagerImpl::GetBitmap(int32_t id, bool premultiplyAlpha) {
    return Retrieve<BitmapHandle>(
        ResourceType_Bitmap,
        [&](IStorage& s, IStorage::Error* e) { return s.GetBitmap(id, premultiplyAlpha, e); },
        [&](IManager& m) { return m.GetBitmap(id, premultiplyAlpha); });
}

IconHandle ManagerImpl::GetIcon(ResourceName name, int32_t width, int32_t height) {
    return Retrieve<IconHandle>(
        ResourceType_Icon,
        [&](IStorage& s, IStorage::Error* e) { return s.GetIcon(name, width, height, e); },
        [&](IManager& m) { return m.GetIcon(name, width, height); });
}

IconHandle ManagerImpl::GetIcon(int32_t id, int32_t width, int32_t height) {
    return Retrieve<IconHandle>(
        ResourceType_Icon,
        [&](IStorage& s, IStorage::Error* e) { return s.GetIcon(id, width, height, e); },
        [&](IManager& m) { return m.GetIcon(id, width, height); });
}

ByteView ManagerImpl::GetBinary(ResourceName name) {
    return Retrieve<ByteView>(
        ResourceType_Binary, [&](IStorage& s, IStorage::Error* e) { return s.GetBinary(name, e); },
        [&](IManager& m) { return m.GetBinary(name); });
}

ByteView ManagerImpl::GetBinary(int32_t id) {
    return Retrieve<ByteView>(
        ResourceType_Binary, [&](IStorage& s, IStorage::Error* e) { return s.GetBinary(id, e); },
        [&](IManager& m) { return m.GetBinary(id); });
}

COLORREF ManagerImpl::GetColor(ResourceName name) {
    return Retrieve<COLORREF>(
        ResourceType_Color, [&](IStorage& s, IStorage::Error* e) { return s.GetColor(name, e); },
        [&](IManager& m) { return m.GetColor(name); });
}

COLORREF ManagerImpl::GetColor(int32_t id) {
    return Retrieve<COLORREF>(
        ResourceType_Color, [&](IStorage& s, IStorage::Error* e) { return s.GetColor(id, e); },
        [&](IManager& m) { return m.GetColor(id); });
}

FontHandle ManagerImpl::GetFont(ResourceName name) {
    return Retrieve<FontHandle>(
        ResourceType_Font, [&](IStorage& s, IStorage::Error* e) { return s.GetFont(name, e); },
        [&](IManager& m) { return m.GetFont(name); });
}

FontHandle ManagerImpl::GetFont(int32_t id) {
    return Retrieve<FontHandle>(
        ResourceType_Font, [&](IStorage& s, IStorage::Error* e) { return s.GetFont(id, e); },
        [&](IManager& m) { return m.GetFont(id); });
}

int32_t ManagerImpl::GetInteger(ResourceName name) {
    return Retrieve<int32_t>(
        ResourceType_Integer,
        [&](IStorage& s, IStorage::Error* e) { return s.GetInteger(name, e); },
        [&](IManager& m) { return m.GetInteger(name); });
}

int32_t ManagerImpl::GetInteger(int32_t id) {
    return Retrieve<int32_t>(
        ResourceType_Integer, [&](IStorage& s, IStorage::Error* e) { return s.GetInteger(id, e); },
        [&](IManager& m) { return m.GetInteger(id); });
}

std::wstring ManagerImpl::GetFilePath(int32_t id, uint32_t type) {
    const std::wstring path = Retrieve<std::wstring>(
        type, [&](IStorage& s, IStorage::Error* e) { return s.GetFilePath(id, type, e); },
        [&](IManager& m) { return m.GetFilePath(id, type); });
    return internal::NormalizeResourcePath(path);
}

bool ManagerImpl::ClearCache() {
    std::lock_guard hold(lock);
    if (parent) parent->ClearCache();
    bool all = true;
    for (const StoragePtr& storage : storages) {
        IStorage::Error error;
        const bool cleared = storage->ClearCache(&error);
        all = all && cleared && error.value() == 0;
    }
    return all;
}

bool ManagerImpl::ReleaseResource(int32_t id, uint32_t type) {
    std::lock_guard hold(lock);
    if (parent) parent->ReleaseResource(id, type);
    bool any = false;
    for (const StoragePtr& storage : storages) {
        if (!Serves(*storage, type)) continue;
        IStorage::Error error;
        const bool released = storage->ReleaseResource(id, type, &error);
        any = any || (released && error.value() == 0);
    }
    return any;
}

std::wstring ManagerImpl::GetResourceName(int32_t id, uint32_t type) {
    ManagerPtr forward;
    {
        std::lock_guard hold(lock);
        // Inside the table the entry answers, even when empty; beyond it, the parent.
        const IdTable<std::wstring>& names = namesById[TypeIndex(type)];
        if (id >= 0 && id < names.Size()) {
            const std::wstring* registered = names.Find(id);
            return registered != nullptr ? *registered : std::wstring();
        }
        forward = parent;
    }
    return forward ? forward->GetResourceName(id, type) : std::wstring();
}

int32_t ManagerImpl::GetResourceId(ResourceName name, uint32_t type) {
    ManagerPtr forward;
    {
        std::lock_guard hold(lock);
        const auto& ids = idsByName[TypeIndex(type)];
        if (auto found = ids.find(name.view()); found != ids.end()) return found->second;
        forward = parent;
    }
    return forward ? forward->GetResourceId(name, type) : kNoResourceId;
}

void ManagerImpl::SetThrowOnFailure(bool flag) {
    throwOnFailure.store(flag);
}

bool ManagerImpl::GetThrowOnFailure() {
    return throwOnFailure.load();
}

LanguageProviderPtr ManagerImpl::GetLanguageProvider() {
    std::lock_guard hold(lock);
    return languageProvider;
}

bool ManagerImpl::SetLanguage(ResourceName name) {
    // Held through the delivery of SetLanguage(language), so a listener sees the switch
    // and nothing after it.
    std::lock_guard hold(lock);
    if (!languageProvider) return false;
    LanguagePtr found = languageProvider->FindLanguage(name);
    if (!found) return false;
    return SetLanguage(std::move(found));
}

bool ManagerImpl::SetLanguage(LanguagePtr newLanguage) {
    LanguagePtr old;
    {
        std::lock_guard hold(lock);
        // The parent follows even when this manager keeps its language: it may have been
        // switched on its own.
        if (parent) {
            LanguagePtr parentLanguage;
            LanguageProviderPtr provider = parent->GetLanguageProvider();
            if (provider && newLanguage) {
                const std::wstring name = newLanguage->GetName();
                parentLanguage = provider->FindLanguage(NameOf(name));
            }
            parent->SetLanguage(parentLanguage);
        }
        if (newLanguage == language) return true;
        old = std::exchange(language, newLanguage);
    }
    const ManagerPtr self = weak_from_this().lock();
    changeListeners.Deliver(
        [&](IManagerListener& listener) { listener.OnLanguageChanged(self, old, newLanguage); });
    return true;
}

LanguagePtr ManagerImpl::GetLanguage() {
    std::lock_guard hold(lock);
    return language;
}

SkinProviderPtr ManagerImpl::GetSkinProvider() {
    std::lock_guard hold(lock);
    return skinProvider;
}

bool ManagerImpl::SetSkin(ResourceName name) {
    std::lock_guard hold(lock);
    if (!skinProvider) return false;
    SkinPtr found = skinProvider->FindSkin(name);
    if (!found) return false;
    return SetSkin(std::move(found));
}

bool ManagerImpl::SetSkin(SkinPtr newSkin) {
    SkinPtr old;
    {
        std::lock_guard hold(lock);
        if (parent) {
            SkinPtr parentSkin;
            SkinProviderPtr provider = parent->GetSkinProvider();
            if (provider && newSkin) {
                const std::wstring name = newSkin->GetName();
                parentSkin = provider->FindSkin(NameOf(name));
            }
            parent->SetSkin(parentSkin);
        }
        if (newSkin == skin) return true;
        old = std::exchange(skin, newSkin);
    }
    const ManagerPtr self = weak_from_this().lock();
    changeListeners.Deliver(
        [&](IManagerListener& listener) { listener.OnSkinChanged(self, old, newSkin); });
    return true;
}

SkinPtr ManagerImpl::GetSkin() {
    std::lock_guard hold(lock);
    return skin;
}

ExtraParamsProviderPtr ManagerImpl::GetExtraParamsProvider() {
    std::lock_guard hold(lock);
    return extraParams;
}

}  // namespace ResourceLib
