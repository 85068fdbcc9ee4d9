#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

#include "foundation/Log.h"
#include "resourcelib/DummyManagerImpl.h"
#include "resourcelib/ManagerImpl.h"
#include "resourcelib/internal/PathNormalizer.h"
#include "storages/ResourceErrors.h"

namespace {

using namespace ResourceLib;

// Answers strings, colours and file paths from its maps and counts what it is asked.
class FakeStorage : public IStorage {
public:
    uint32_t supported = kAllResourceTypes;
    bool refuse = false;
    std::map<std::wstring, std::wstring> strings;
    std::map<std::wstring, COLORREF> colors;
    std::map<int32_t, std::wstring> paths;
    int stringRequests = 0;

    bool SetManager(boost::weak_ptr<IManager> manager, Error*) override {
        return !refuse && !manager.expired();
    }
    std::wstring GetString(ResourceName name, Error* error) override {
        ++stringRequests;
        return Find(strings, name.str(), error);
    }
    COLORREF GetColor(ResourceName name, Error* error) override {
        return Find(colors, name.str(), error);
    }
    std::wstring GetFilePath(int32_t id, uint32_t, Error* error) override {
        return Find(paths, id, error);
    }
    void GetSupportedTypes(uint32_t& mask, Error*) override { mask = supported; }

private:
    template <class Map, class Key>
    static typename Map::mapped_type Find(const Map& map, const Key& key, Error* error) {
        auto found = map.find(key);
        if (found != map.end()) return found->second;
        ReportError(error, ResourceNotFound);
        return {};
    }
};

template <class Interface>
struct Named : Interface {
    explicit Named(std::wstring name) : name(std::move(name)) {}
    std::wstring GetName() const override { return name; }
    std::wstring name;
};

template <class Ptr>
Ptr FindNamed(const std::vector<Ptr>& items, ResourceName name) {
    for (const Ptr& item : items)
        if (item->GetName() == name.view()) return item;
    return {};
}

// A language and a skin per name; the first of each is the default unless told otherwise.
struct FakeProvider : ILanguageProvider, ISkinProvider {
    FakeProvider(std::vector<std::wstring> names, bool withDefault = true)
        : hasDefault(withDefault) {
        for (const auto& name : names) {
            languages.push_back(boost::make_shared<Named<ILanguage>>(name));
            skins.push_back(boost::make_shared<Named<ISkin>>(name));
        }
    }
    LanguagePtr FindLanguage(ResourceName name) const override {
        return FindNamed(languages, name);
    }
    LanguagePtr GetDefaultLanguage() const override { return hasDefault ? languages[0] : nullptr; }
    SkinPtr FindSkin(ResourceName name) const override { return FindNamed(skins, name); }
    SkinPtr GetDefaultSkin() const override { return hasDefault ? skins[0] : nullptr; }

    bool hasDefault;
    std::vector<LanguagePtr> languages;
    std::vector<SkinPtr> skins;
};

boost::shared_ptr<ManagerImpl> NewManager() {
    return boost::make_shared<ManagerImpl>();
}

TEST(ManagerImpl, AsksStoragesInOrderThenFailsByTheFlag) {
    auto manager = NewManager();
    auto a = boost::make_shared<FakeStorage>();
    auto b = boost::make_shared<FakeStorage>();
    auto colorsOnly = boost::make_shared<FakeStorage>();
    a->strings = {{L"Both", L"from A"}, {L"Empty", L""}};
    b->strings = {{L"Both", L"from B"}, {L"OnlyB", L"from B"}, {L"Empty", L"from B"}};
    a->supported = b->supported = ResourceType_String;
    colorsOnly->supported = ResourceType_Color;
    colorsOnly->colors = {{L"Back", MakeColor(1, 2, 3)}};
    ASSERT_TRUE(manager->AddStorage(colorsOnly));
    ASSERT_TRUE(manager->AddStorage(a));
    ASSERT_TRUE(manager->AddStorage(b));

    EXPECT_EQ(manager->GetString(L"Both"), L"from A");
    EXPECT_EQ(manager->GetString(L"OnlyB"), L"from B");
    b->stringRequests = 0;
    EXPECT_EQ(manager->GetString(L"Empty"), L"") << "an empty answer without error ends it";
    EXPECT_EQ(b->stringRequests, 0);
    EXPECT_EQ(colorsOnly->stringRequests, 0) << "a storage without strings is never asked";
    EXPECT_EQ(manager->GetColor(L"Back"), MakeColor(1, 2, 3));

    EXPECT_EQ(manager->GetString(L"Missing"), L"");
    EXPECT_EQ(manager->GetColor(L"Missing"), 0u);
    manager->SetThrowOnFailure(true);
    EXPECT_THAT([&] { manager->GetString(L"Missing"); },
                testing::ThrowsMessage<std::runtime_error>("Failed to retrieve a resource"));
    EXPECT_THROW(manager->GetColor(L"Missing"), std::runtime_error);

    // A storage that refuses the manager is not added.
    auto refusing = boost::make_shared<FakeStorage>();
    refusing->refuse = true;
    EXPECT_FALSE(manager->AddStorage(refusing));
    EXPECT_FALSE(manager->AddStorage(nullptr));
}

TEST(ManagerImpl, ParentBorrowsTheChildsThrowFlag) {
    auto child = NewManager();
    auto parent = NewManager();
    auto parentStorage = boost::make_shared<FakeStorage>();
    parentStorage->strings = {{L"Shared", L"from parent"}};
    ASSERT_TRUE(parent->AddStorage(parentStorage));
    ASSERT_TRUE(child->AddStorage(boost::make_shared<FakeStorage>()));

    EXPECT_FALSE(parent->GetThrowOnFailure());
    EXPECT_TRUE(child->SetParent(parent));
    EXPECT_TRUE(parent->GetThrowOnFailure());
    EXPECT_EQ(child->GetString(L"Shared"), L"from parent");

    EXPECT_EQ(child->GetString(L"Missing"), L"") << "the parent must not throw for the child";
    EXPECT_TRUE(parent->GetThrowOnFailure());

    child->SetThrowOnFailure(true);
    parent->SetThrowOnFailure(false);
    EXPECT_THROW(child->GetString(L"Missing"), std::runtime_error);
    EXPECT_FALSE(parent->GetThrowOnFailure()) << "restored although the parent threw";

    // Clear empties the child and its parent, and the child no longer falls back.
    child->Clear();
    child->SetThrowOnFailure(false);
    EXPECT_EQ(child->GetString(L"Shared"), L"");
    EXPECT_EQ(parent->GetString(L"Shared"), L"");
}

TEST(ManagerImpl, NameRegistry) {
    auto manager = NewManager();
    auto parent = NewManager();
    EXPECT_FALSE(manager->RegisterResourceName(1, L"A", 0));
    EXPECT_THROW(manager->RegisterResourceName(1, L"A", 3), std::logic_error);
    EXPECT_THROW(manager->GetResourceName(1, 256), std::logic_error);
    EXPECT_FALSE(manager->RegisterResourceName(-1, L"A", ResourceType_String));
    // Any non-negative id; the ids below the largest one stay unnamed.
    EXPECT_TRUE(manager->RegisterResourceName(INT32_MAX, L"Last", ResourceType_Unnamed));
    EXPECT_EQ(manager->GetResourceName(INT32_MAX, ResourceType_Unnamed), L"Last");
    EXPECT_EQ(manager->GetResourceId(L"Last", ResourceType_Unnamed), INT32_MAX);
    EXPECT_EQ(manager->GetResourceName(5, ResourceType_Unnamed), L"");
    EXPECT_EQ(manager->GetResourceId(L"Never", ResourceType_String), kNoResourceId);

    manager->SetParent(parent);
    EXPECT_TRUE(parent->RegisterResourceName(6, L"Six", ResourceType_String));
    EXPECT_TRUE(manager->RegisterResourceName(5, L"Close", ResourceType_String));
    EXPECT_EQ(parent->GetResourceId(L"Close", ResourceType_String), 5) << "registered there too";
    EXPECT_EQ(manager->GetResourceName(3, ResourceType_String), L"") << "inside the table";
    EXPECT_EQ(manager->GetResourceName(6, ResourceType_String), L"Six") << "beyond: the parent";
    EXPECT_EQ(manager->GetResourceName(5, ResourceType_Bitmap), L"") << "tables are per type";

    // Names compare exactly; an unmeasured reference measures itself.
    const wchar_t close[] = L"Close";
    EXPECT_EQ(manager->GetResourceId(ResourceName(close), ResourceType_String), 5);
    EXPECT_EQ(manager->GetResourceId(L"close", ResourceType_String), kNoResourceId);
    EXPECT_EQ(manager->GetResourceId(L"Six", ResourceType_String), 6);
}

// Records changes; checks from another thread that the manager's lock is free meanwhile.
struct RecordingListener : IManagerListener {
    explicit RecordingListener(ManagerImpl& manager) : manager(manager) {}
    void OnLanguageChanged(const ManagerPtr& from, const LanguagePtr& oldLanguage,
                           const LanguagePtr& newLanguage) override {
        EXPECT_EQ(from.get(), &manager);
        events.push_back(L"language " + Name(oldLanguage) + L">" + Name(newLanguage));
        std::packaged_task<void()> task([this] { manager.GetLanguage(); });
        auto done = task.get_future();
        prober = std::thread(std::move(task));
        lockFree = done.wait_for(std::chrono::seconds(2)) == std::future_status::ready;
    }
    void OnSkinChanged(const ManagerPtr&, const SkinPtr& oldSkin, const SkinPtr& newSkin) override {
        events.push_back(L"skin " + Name(oldSkin) + L">" + Name(newSkin));
    }
    template <class Ptr>
    static std::wstring Name(const Ptr& item) {
        return item ? item->GetName() : L"-";
    }
    void Join() {
        if (prober.joinable()) prober.join();
    }

    ManagerImpl& manager;
    std::vector<std::wstring> events;
    std::thread prober;
    bool lockFree = false;
};

TEST(ManagerImpl, LanguageAndSkinChanges) {
    auto manager = NewManager();
    RecordingListener listener(*manager);
    ASSERT_TRUE(manager->changeListeners.Add(&listener));

    auto provider = boost::make_shared<FakeProvider>(std::vector<std::wstring>{L"en", L"de"});
    EXPECT_FALSE(manager->SetLanguageProvider(nullptr));
    EXPECT_TRUE(manager->SetLanguageProvider(provider));
    EXPECT_TRUE(manager->SetSkinProvider(provider));
    listener.Join();
    EXPECT_EQ(manager->GetLanguageName(), L"en");
    EXPECT_EQ(manager->GetSkinName(), L"en");

    EXPECT_TRUE(manager->SetLanguage(provider->languages[1]));
    listener.Join();
    EXPECT_TRUE(listener.lockFree) << "notified while the lock was still held";
    EXPECT_TRUE(manager->SetLanguage(provider->languages[1])) << "no change, no notification";
    EXPECT_FALSE(manager->SetLanguage(L"fr"));
    EXPECT_TRUE(manager->SetSkin(L"de"));
    EXPECT_TRUE(manager->SetLanguage(LanguagePtr()));
    listener.Join();
    EXPECT_EQ(manager->GetLanguageName(), L"");
    EXPECT_EQ(listener.events,
              (std::vector<std::wstring>{L"language ->en", L"skin ->en", L"language en>de",
                                         L"skin en>de", L"language de>-"}));

    // A parent follows by name, also when the child's own language does not change.
    auto parent = NewManager();
    auto parentProvider = boost::make_shared<FakeProvider>(std::vector<std::wstring>{L"en", L"de"});
    parent->SetLanguageProvider(parentProvider);
    parent->SetSkinProvider(parentProvider);
    manager->SetLanguage(provider->languages[1]);
    listener.Join();
    manager->SetParent(parent);
    EXPECT_EQ(parent->GetLanguage(), parentProvider->languages[1]);
    EXPECT_EQ(parent->GetSkin(), parentProvider->skins[1]);
    parent->SetLanguage(L"en");
    EXPECT_TRUE(manager->SetLanguage(L"de"));
    EXPECT_EQ(parent->GetLanguageName(), L"de");

    // A provider without a default leaves no language.
    auto empty = NewManager();
    EXPECT_TRUE(empty->SetLanguageProvider(
        boost::make_shared<FakeProvider>(std::vector<std::wstring>{L"en"}, false)));
    EXPECT_TRUE(empty->GetLanguage() == nullptr);
    manager->changeListeners.Remove(&listener);
}

// One SetLanguageVerify call: its result and what it logged (every line, with a header first).
std::pair<bool, std::string> Verify(IManager& manager, ResourceName name) {
    std::ostringstream log;
    Debugging::SetThreadLogStream(&log);
    Debugging::SetThreadLogThreshold(1);
    Debugging::ForceThreadLogHeader();
    const bool result = manager.SetLanguageVerify(name);
    Debugging::SetThreadLogStream(nullptr);
    Debugging::SetThreadLogThreshold(6);
    return {result, log.str()};
}

TEST(ManagerImpl, SetLanguageVerifyLogsWhatWentWrong) {
    auto manager = NewManager();
    manager->SetLanguageProvider(
        boost::make_shared<FakeProvider>(std::vector<std::wstring>{L"en", L"de"}));
    const auto has = [](const std::string& text, const char* what) {
        return text.find(what) != std::string::npos;
    };

    auto [result, text] = Verify(*manager, L"");
    EXPECT_TRUE(result);
    EXPECT_EQ(manager->GetLanguageName(), L"en");
    EXPECT_TRUE(has(text, "WRN ") && has(text, "ResourceLib:IManager:SetLanguageVerify@10"));
    EXPECT_TRUE(has(text, "Most recently used language is undefined - using default one"));

    std::tie(result, text) = Verify(*manager, L"de");
    EXPECT_TRUE(result && text.empty()) << text;

    std::tie(result, text) = Verify(*manager, L"xx");
    EXPECT_FALSE(result);
    EXPECT_EQ(manager->GetLanguageName(), L"de");
    EXPECT_TRUE(has(text, "ResourceLib:IManager:SetLanguageVerify@15")) << text;
    // Both warnings share one header, since they follow each other at one level.
    const auto failed = text.find("Failed to load the most recently used language");
    EXPECT_LT(failed, text.find("Loaded the wrong language")) << text;
}

TEST(ManagerImpl, FilePathsAreNormalised) {
    using internal::NormalizeResourcePath;
    EXPECT_EQ(NormalizeResourcePath(L"skins/Blue/../Red/"), L"skins/Red");
    EXPECT_EQ(NormalizeResourcePath(L"../x"), L"../x");
    EXPECT_EQ(NormalizeResourcePath(L"a\\b\\..\\c\\"), L"a/c");
    EXPECT_EQ(NormalizeResourcePath(L"abcd/../x"), L"/x") << "no folder before: from the start";
    EXPECT_EQ(NormalizeResourcePath(L"a/b/c/../../d"), L"a/d");
    EXPECT_EQ(NormalizeResourcePath(L"a\\bc/x..y\\"), L"a\\bc/x..y\\") << "not after a separator";
    EXPECT_EQ(NormalizeResourcePath(L""), L"");

    auto manager = NewManager();
    auto storage = boost::make_shared<FakeStorage>();
    storage->supported = ResourceType_Bitmap;
    storage->paths = {{1, L"skins/Blue/../Red/"}, {2, L"../x"}};
    ASSERT_TRUE(manager->AddStorage(storage));
    EXPECT_EQ(manager->GetFilePath(1, ResourceType_Bitmap), L"skins/Red");
    EXPECT_EQ(manager->GetFilePath(2, ResourceType_Bitmap), L"../x");
    EXPECT_EQ(manager->GetFilePath(1, ResourceType_Icon), L"") << "storage does not serve icons";
}

TEST(DummyManagerImpl, HasNothingAndRefusesEverything) {
    auto dummy = boost::make_shared<DummyManagerImpl>();
    EXPECT_EQ(dummy->GetResourceId(L"Close", ResourceType_String), 0) << "not kNoResourceId";
    EXPECT_EQ(dummy->GetString(3), L"");

    auto real = NewManager();
    EXPECT_FALSE(dummy->SetParent(real));
    EXPECT_EQ(real.use_count(), 1) << "the argument is not kept";
    EXPECT_FALSE(dummy->SetLanguage(L"en"));
    dummy->SetThrowOnFailure(true);
    EXPECT_FALSE(dummy->GetThrowOnFailure());
    EXPECT_EQ(dummy->GetString(L"Missing"), L"") << "never throws";

    EXPECT_TRUE(dummy->SetLanguageVerify(L""));
    EXPECT_FALSE(dummy->SetLanguageVerify(L"en"));
}

}  // namespace
