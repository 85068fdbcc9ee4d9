#include "storages/StorageBase.h"

#include <algorithm>
#include <typeinfo>
#include <vector>

#include <boost/lexical_cast.hpp>
#include <boost/pointer_cast.hpp>

#include "foundation/Check.h"
#include "storages/ResourceErrors.h"

namespace ResourceLib {
namespace {

class InternalInterfaceCastError : public std::bad_cast {
public:
    const char* what() const noexcept override { return "Failed to cast to an internal interface"; }
};

// Strings that name each other would recurse through the manager without end. So a name
// met again inside its own expansion stays as it stands, and a chain of look-ups ends at
// this depth. Texts may be of any length.
constexpr int kMaxExpansionDepth = 16;
thread_local int expansionDepth = 0;
thread_local std::vector<std::wstring> namesInExpansion;

struct NameInExpansion {
    explicit NameInExpansion(const std::wstring& name) { namesInExpansion.push_back(name); }
    ~NameInExpansion() { namesInExpansion.pop_back(); }
    NameInExpansion(const NameInExpansion&) = delete;
    NameInExpansion& operator=(const NameInExpansion&) = delete;
};

struct DepthGuard {
    DepthGuard() { ++expansionDepth; }
    ~DepthGuard() { --expansionDepth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;
};

// "{0}" and "{12}" are left for later formatting by the caller.
bool IsShortNumber(const std::wstring& name) {
    int ignored = 0;
    return name.size() < 3 && boost::conversion::try_lexical_convert(name, ignored);
}

ResourceName NameOf(const std::wstring& text) {
    return ResourceName(text.c_str(), static_cast<uint32_t>(text.size()));
}

// --- The one cache procedure every typed getter shares -------------------------------

// What distinguishes cached variants of one resource.
struct SingleVariant {};
struct BitmapKey {
    bool premultiplyAlpha;
};
struct IconKey {
    int32_t width;
    int32_t height;
};

template <class E>
E* FindEntry(IdTable<E>& table, int32_t id) {
    return table.Find(id);
}
template <class E>
E& ObtainEntry(IdTable<E>& table, int32_t id) {
    return table.Obtain(id);
}
// A request for an id beyond the table grows it first; a name needs no room.
template <class E>
void Reserve(IdTable<E>& table, int32_t id) {
    table.Grow(id);
}
template <class E>
void Reserve(std::map<std::wstring, E>&, const std::wstring&) {}
template <class E>
E* FindEntry(std::map<std::wstring, E>& map, const std::wstring& name) {
    const auto found = map.find(name);
    return found != map.end() ? &found->second : nullptr;
}
template <class E>
E& ObtainEntry(std::map<std::wstring, E>& map, const std::wstring& name) {
    return map[name];
}

template <class E>
auto Match(const E& entry, SingleVariant) -> decltype(&entry.value) {
    return entry.loaded ? &entry.value : nullptr;
}
template <class E, class T>
auto Store(E& entry, SingleVariant, T&& value) -> decltype(&entry.value) {
    entry.value = std::forward<T>(value);
    entry.loaded = true;
    return &entry.value;
}
template <class List>
const BitmapHandle* Match(const List& list, BitmapKey key) {
    for (const auto& item : list)
        if (item.premultiplyAlpha == key.premultiplyAlpha) return &item.handle;
    return nullptr;
}
template <class List>
const BitmapHandle* Store(List& list, BitmapKey key, BitmapHandle handle) {
    list.push_back({std::move(handle), key.premultiplyAlpha});
    return &list.back().handle;
}
template <class List>
const IconHandle* Match(const List& list, IconKey key) {
    for (const auto& item : list)
        if (item.width == key.width && item.height == key.height && item.handle)
            return &item.handle;
    return nullptr;
}
template <class List>
const IconHandle* Store(List& list, IconKey key, IconHandle handle) {
    // An empty icon of this size is replaced rather than joined by another, so asking again
    // for an icon a loader gave as empty does not grow the list.
    for (auto& item : list)
        if (item.width == key.width && item.height == key.height && !item.handle) {
            item.handle = std::move(handle);
            return &item.handle;
        }
    list.push_back({std::move(handle), key.width, key.height});
    return &list.back().handle;
}

// The cached value for `key` in the `variant` asked for, else the loader's value, stored.
// A failed load is reported and not cached, so the next request asks the loader again.
// The entry is looked up again after the load because a loader (through placeholder
// expansion and the manager) may come back into this storage and change the caches.
// The pointer stays valid until the caches change.
template <class Cache, class Key, class Variant, class Loader>
auto Fetch(Cache& cache, const Key& key, Variant variant, IStorage::Error* error, Loader&& load)
    -> decltype(Match(ObtainEntry(cache, key), variant)) {
    if (auto* entry = FindEntry(cache, key))
        if (auto cached = Match(*entry, variant)) return cached;
    Reserve(cache, key);
    IStorage::Error loadError;
    auto value = load(&loadError);
    if (loadError) {
        ReportError(error, loadError);
        return nullptr;
    }
    return Store(ObtainEntry(cache, key), variant, std::move(value));
}

template <class T>
T ValueOr(const T* value) {
    return value != nullptr ? *value : T{};
}

bool CheckId(int32_t id, IStorage::Error* error) {
    if (id >= 0) return true;
    ReportError(error, InvalidResourceID);
    return false;
}

bool CheckName(ResourceName name, IStorage::Error* error) {
    if (!name.empty()) return true;
    ReportError(error, InvalidResourceName);
    return false;
}

template <class T>
T NotSupportedResult(IStorage::Error* error) {
    ReportError(error, NotSupported);
    return T{};
}

}  // namespace

StorageBase::StorageBase() : placeholders{{L"nl", L"\n"}, {L"tab", L"\t"}} {}

bool StorageBase::SetManager(boost::weak_ptr<IManager> newManager, Error* error) {
    (void)error;
    const ManagerPtr locked = newManager.lock();
    if (!locked) return false;
    InternalManagerPtr internal = boost::dynamic_pointer_cast<IInternalManager>(locked);
    if (!internal) throw InternalInterfaceCastError();
    manager = internal;
    return true;
}

InternalManagerPtr StorageBase::GetManager() const {
    return manager.lock();
}

bool StorageBase::CheckContext(Error* error) {
    const InternalManagerPtr current = manager.lock();
    if (!current) {
        ReportError(error, InvalidStorageState);
        return false;
    }
    LanguagePtr currentLanguage = current->GetLanguage();
    SkinPtr currentSkin = current->GetSkin();
    if (contextSeen && currentLanguage == language && currentSkin == skin) return true;
    ClearCaches();
    language = std::move(currentLanguage);
    skin = std::move(currentSkin);
    contextSeen = true;
    Error ignored;
    Reload(&ignored);
    return true;
}

void StorageBase::ClearCaches() {
    stringsById.Clear();
    bitmapsById.Clear();
    iconsById.Clear();
    binariesById.Clear();
    colorsById.Clear();
    fontsById.Clear();
    integersById.Clear();
    stringsByName.clear();
    bitmapsByName.clear();
    iconsByName.clear();
    fontsByName.clear();
    colorsByName.clear();
    integersByName.clear();
}

std::wstring StorageBase::ResolveResourceName(int32_t id, uint32_t type, Error* error) const {
    if (id < 0) {
        ReportError(error, InvalidResourceID);
        return {};
    }
    const InternalManagerPtr current = manager.lock();
    if (!current) {
        ReportError(error, InvalidStorageState);
        return {};
    }
    std::wstring name = current->GetResourceName(id, type);
    if (name.empty()) ReportError(error, InvalidResourceName);
    return name;
}

// --- Strings and placeholders -----------------------------------------------------------

std::wstring StorageBase::GetString(ResourceName name, Error* error) {
    if (!CheckName(name, error) || !CheckContext(error)) return {};
    const std::wstring key = name.str();
    return ValueOr(Fetch(stringsByName, key, SingleVariant{}, error, [&](Error* e) {
        std::wstring raw = LoadStringByName(name, e);
        return *e ? raw : ExpandPlaceholders(std::move(raw), key);
    }));
}

std::wstring StorageBase::GetString(int32_t id, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(stringsById, id, SingleVariant{}, error, [&](Error* e) {
        std::wstring raw = LoadStringById(id, e);
        return *e ? raw : ExpandPlaceholders(std::move(raw), std::wstring());
    }));
}

std::wstring StorageBase::ExpandPlaceholders(std::wstring text,
                                             const std::wstring& selfName) const {
    const DepthGuard depth;
    std::size_t position = 0;
    std::size_t previousStart = std::wstring::npos;
    while (position != previousStart) {
        previousStart = position;
        const std::size_t open = text.find(L'{', position);
        if (open == std::wstring::npos) break;
        const std::size_t close = text.find(L'}', open + 1);
        if (close == std::wstring::npos) break;

        const std::wstring name = text.substr(open + 1, close - open - 1);
        if (name.empty() || name == selfName || IsShortNumber(name)) {
            position = close + 1;
            continue;
        }
        bool managerGone = false;
        const std::wstring value = PlaceholderValue(name, managerGone);
        if (managerGone) return text;
        if (value.empty()) {
            position = close + 1;
            continue;
        }
        // Continue behind the inserted value: it is never scanned again.
        text.replace(open, close - open + 1, value);
        position = open + value.size();
    }
    return text;
}

std::wstring StorageBase::PlaceholderValue(const std::wstring& name, bool& managerGone) const {
    for (const auto& [key, value] : placeholders)
        if (key == name && !value.empty()) return value;

    const InternalManagerPtr holder = manager.lock();
    IInternalManager* pManager = holder.get();
    if (CHECK_DEBUG(pManager).Succeeded()) {
        const ExtraParamsProviderPtr extraHolder = pManager->GetExtraParamsProvider();
        const IManagerExtraParamsProvider* pExtra = extraHolder.get();
        if (CHECK_DEBUG(pExtra).Succeeded()) {
            std::wstring value = pExtra->GetParam(NameOf(name));
            if (!value.empty()) return value;
        }
    }

    if (CHECK_GUARDED(pManager).Failed()) {
        managerGone = true;
        return {};
    }
    if (expansionDepth > kMaxExpansionDepth ||
        std::find(namesInExpansion.begin(), namesInExpansion.end(), name) != namesInExpansion.end())
        return {};
    const NameInExpansion lookingUp(name);
    return pManager->GetString(NameOf(name));
}

// --- The other typed getters --------------------------------------------------------

BitmapHandle StorageBase::GetBitmap(ResourceName name, bool premultiplyAlpha, Error* error) {
    if (!CheckName(name, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(bitmapsByName, name.str(), BitmapKey{premultiplyAlpha}, error,
                         [&](Error* e) { return LoadBitmapByName(name, premultiplyAlpha, e); }));
}

BitmapHandle StorageBase::GetBitmap(int32_t id, bool premultiplyAlpha, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(bitmapsById, id, BitmapKey{premultiplyAlpha}, error,
                         [&](Error* e) { return LoadBitmapById(id, premultiplyAlpha, e); }));
}

IconHandle StorageBase::GetIcon(ResourceName name, int32_t width, int32_t height, Error* error) {
    if (!CheckName(name, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(iconsByName, name.str(), IconKey{width, height}, error,
                         [&](Error* e) { return LoadIconByName(name, width, height, e); }));
}

IconHandle StorageBase::GetIcon(int32_t id, int32_t width, int32_t height, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(iconsById, id, IconKey{width, height}, error,
                         [&](Error* e) { return LoadIconById(id, width, height, e); }));
}

ByteView StorageBase::GetBinary(ResourceName name, Error* error) {
    // Binary resources are served by id only.
    if (!CheckName(name, error) || !CheckContext(error)) return {};
    return NotSupportedResult<ByteView>(error);
}

ByteView StorageBase::GetBinary(int32_t id, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return {};
    const std::vector<uint8_t>* data =
        Fetch(binariesById, id, SingleVariant{}, error, [&](Error* e) {
            std::vector<uint8_t> bytes;
            LoadBinaryById(id, bytes, e);
            return bytes;
        });
    if (data == nullptr || data->empty()) return {};
    return {data->data(), static_cast<uint32_t>(data->size())};
}

COLORREF StorageBase::GetColor(ResourceName name, Error* error) {
    if (!CheckName(name, error) || !CheckContext(error)) return 0;
    return ValueOr(Fetch(colorsByName, name.str(), SingleVariant{}, error,
                         [&](Error* e) { return LoadColorByName(name, e); }));
}

COLORREF StorageBase::GetColor(int32_t id, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return 0;
    return ValueOr(Fetch(colorsById, id, SingleVariant{}, error,
                         [&](Error* e) { return LoadColorById(id, e); }));
}

FontHandle StorageBase::GetFont(ResourceName name, Error* error) {
    if (!CheckName(name, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(fontsByName, name.str(), SingleVariant{}, error,
                         [&](Error* e) { return LoadFontByName(name, e); }));
}

FontHandle StorageBase::GetFont(int32_t id, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return {};
    return ValueOr(Fetch(fontsById, id, SingleVariant{}, error,
                         [&](Error* e) { return LoadFontById(id, e); }));
}

int32_t StorageBase::GetInteger(ResourceName name, Error* error) {
    if (!CheckName(name, error) || !CheckContext(error)) return 0;
    return ValueOr(Fetch(integersByName, name.str(), SingleVariant{}, error,
                         [&](Error* e) { return LoadIntegerByName(name, e); }));
}

int32_t StorageBase::GetInteger(int32_t id, Error* error) {
    if (!CheckId(id, error) || !CheckContext(error)) return 0;
    return ValueOr(Fetch(integersById, id, SingleVariant{}, error,
                         [&](Error* e) { return LoadIntegerById(id, e); }));
}

std::wstring StorageBase::GetFilePath(int32_t id, uint32_t type, Error* error) {
    if (!CheckContext(error)) return {};
    Error loadError;
    std::wstring path = LoadFilePath(id, type, &loadError);
    if (loadError) {
        ReportError(error, loadError);
        return {};
    }
    return path;
}

// --- Cache maintenance --------------------------------------------------------------

bool StorageBase::ClearCache(Error* error) {
    (void)error;
    ClearCaches();
    return true;
}

bool StorageBase::ReleaseResource(int32_t id, uint32_t type, Error* error) {
    (void)error;
    if (id < 0) return false;
    const auto resetEntry = [id](auto& table) {
        auto* entry = FindEntry(table, id);
        if (entry == nullptr || !entry->loaded) return false;
        *entry = {};
        return true;
    };
    const auto emptyList = [id](auto& table) {
        auto* list = FindEntry(table, id);
        if (list == nullptr || list->empty()) return false;
        list->clear();
        return true;
    };
    switch (type) {
        case ResourceType_String:
            return resetEntry(stringsById);
        case ResourceType_Bitmap:
            return emptyList(bitmapsById);
        case ResourceType_Icon:
            return emptyList(iconsById);
        case ResourceType_Binary:
            return resetEntry(binariesById);
        case ResourceType_Color:
            return resetEntry(colorsById);
        case ResourceType_Font:
            return resetEntry(fontsById);
        case ResourceType_Integer:
            return resetEntry(integersById);
        default:
            return false;
    }
}

// --- Loader defaults ----------------------------------------------------------------

bool StorageBase::Reload(Error* error) {
    (void)error;
    return true;
}

std::wstring StorageBase::LoadStringByName(ResourceName, Error* error) {
    return NotSupportedResult<std::wstring>(error);
}
std::wstring StorageBase::LoadStringById(int32_t, Error* error) {
    return NotSupportedResult<std::wstring>(error);
}
BitmapHandle StorageBase::LoadBitmapByName(ResourceName, bool, Error* error) {
    return NotSupportedResult<BitmapHandle>(error);
}
BitmapHandle StorageBase::LoadBitmapById(int32_t, bool, Error* error) {
    return NotSupportedResult<BitmapHandle>(error);
}
IconHandle StorageBase::LoadIconByName(ResourceName, int32_t, int32_t, Error* error) {
    return NotSupportedResult<IconHandle>(error);
}
IconHandle StorageBase::LoadIconById(int32_t, int32_t, int32_t, Error* error) {
    return NotSupportedResult<IconHandle>(error);
}
void StorageBase::LoadBinaryByName(ResourceName, std::vector<uint8_t>& data, Error* error) {
    data.clear();
    ReportError(error, NotSupported);
}
void StorageBase::LoadBinaryById(int32_t, std::vector<uint8_t>& data, Error* error) {
    data.clear();
    ReportError(error, NotSupported);
}
COLORREF StorageBase::LoadColorByName(ResourceName, Error* error) {
    return NotSupportedResult<COLORREF>(error);
}
COLORREF StorageBase::LoadColorById(int32_t, Error* error) {
    return NotSupportedResult<COLORREF>(error);
}
FontHandle StorageBase::LoadFontByName(ResourceName, Error* error) {
    return NotSupportedResult<FontHandle>(error);
}
FontHandle StorageBase::LoadFontById(int32_t, Error* error) {
    return NotSupportedResult<FontHandle>(error);
}
int32_t StorageBase::LoadIntegerByName(ResourceName, Error* error) {
    return NotSupportedResult<int32_t>(error);
}
int32_t StorageBase::LoadIntegerById(int32_t, Error* error) {
    return NotSupportedResult<int32_t>(error);
}
std::wstring StorageBase::LoadFilePath(int32_t, uint32_t, Error* error) {
    return NotSupportedResult<std::wstring>(error);
}

}  // namespace ResourceLib
