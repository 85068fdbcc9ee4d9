#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>

#include <boost/make_shared.hpp>

#include "storages/ResourceErrors.h"
#include "storages/StorageBase.h"

namespace {

using namespace ResourceLib;
using Error = IStorage::Error;

struct FixedLanguage : ILanguage {
    std::wstring GetName() const override { return L"en"; }
};

struct Params : IManagerExtraParamsProvider {
    std::wstring GetParam(ResourceName name) const override {
        const auto found = values.find(name.str());
        return found != values.end() ? found->second : std::wstring();
    }
    std::map<std::wstring, std::wstring> values;
};

// Only what a storage asks of its manager.
struct FakeManager : IInternalManager {
    LanguagePtr GetLanguage() override { return language; }
    SkinPtr GetSkin() override { return {}; }
    ExtraParamsProviderPtr GetExtraParamsProvider() override { return params; }
    std::wstring GetString(ResourceName name) override {
        const auto found = strings.find(name.str());
        return found != strings.end() ? found->second : std::wstring();
    }
    LanguagePtr language;
    ExtraParamsProviderPtr params;
    std::map<std::wstring, std::wstring> strings;
};

struct PlainManager : IManager {};

// Serves strings from a map (by name, and by id as "#<id>"), plain bitmaps, and binaries
// that fail as often as asked first.
class TestStorage : public StorageBase {
public:
    void GetSupportedTypes(uint32_t& mask, Error*) override { mask = kAllResourceTypes; }
    bool IsAvailable(Error*) override { return true; }

    std::map<std::wstring, std::wstring> strings;
    int reloads = 0, stringLoads = 0, bitmapLoads = 0, binaryFailures = 0;

protected:
    bool Reload(Error*) override { return ++reloads, true; }
    std::wstring LoadStringByName(ResourceName name, Error* error) override {
        ++stringLoads;
        const auto found = strings.find(name.str());
        if (found != strings.end()) return found->second;
        ReportError(error, ResourceNotFound);
        return {};
    }
    std::wstring LoadStringById(int32_t id, Error* error) override {
        return LoadStringByName(ResourceName((L"#" + std::to_wstring(id)).c_str()), error);
    }
    BitmapHandle LoadBitmapByName(ResourceName, bool, Error*) override {
        ++bitmapLoads;
        return boost::make_shared<CommonGuiLib::SharedGDIObjectImpl<CommonGuiLib::kBitmapObject>>();
    }
    void LoadBinaryById(int32_t id, std::vector<uint8_t>& data, Error* error) override {
        if (binaryFailures > 0 && binaryFailures--) return ReportError(error, ResourceNotFound);
        data.assign(id, 7);
    }
    COLORREF LoadColorById(int32_t id, Error*) override { return COLORREF(id); }
};

struct StorageBaseTest : ::testing::Test {
    StorageBaseTest() {
        manager->language = boost::make_shared<FixedLanguage>();
        EXPECT_TRUE(storage->SetManager(boost::weak_ptr<IManager>(manager)));
    }
    std::wstring String(const wchar_t* name) {
        Error error;
        std::wstring value = storage->GetString(ResourceName(name), &error);
        EXPECT_FALSE(error) << error.message();
        return value;
    }
    boost::shared_ptr<FakeManager> manager = boost::make_shared<FakeManager>();
    boost::shared_ptr<TestStorage> storage = boost::make_shared<TestStorage>();
};

TEST_F(StorageBaseTest, CachesUntilTheLanguageChanges) {
    storage->strings[L"A"] = L"one";
    EXPECT_EQ(String(L"A"), L"one");
    EXPECT_EQ(String(L"A"), L"one");
    EXPECT_EQ(storage->stringLoads, 1);
    EXPECT_EQ(storage->reloads, 1);

    // The change is noticed at the next request: one Reload, then the loader again.
    storage->strings[L"A"] = L"eins";
    manager->language = boost::make_shared<FixedLanguage>();
    EXPECT_EQ(String(L"A"), L"eins");
    EXPECT_EQ(String(L"A"), L"eins");
    EXPECT_EQ(storage->reloads, 2);
    EXPECT_EQ(storage->stringLoads, 2);

    // Bitmaps are kept per premultiplyAlpha variant.
    const BitmapHandle straight = storage->GetBitmap(ResourceName(L"b"), false);
    const BitmapHandle premultiplied = storage->GetBitmap(ResourceName(L"b"), true);
    EXPECT_NE(straight, premultiplied);
    EXPECT_EQ(storage->GetBitmap(ResourceName(L"b"), false), straight);
    EXPECT_EQ(storage->bitmapLoads, 2);

    // Without a manager every getter reports InvalidStorageState.
    manager.reset();
    Error error;
    EXPECT_EQ(storage->GetString(ResourceName(L"A"), &error), L"");
    EXPECT_EQ(error, MakeErrorCode(InvalidStorageState));
}

TEST_F(StorageBaseTest, ExpandsPlaceholders) {
    auto params = boost::make_shared<Params>();
    params->values = {{L"Product", L"Lumetta"}, {L"Loop", L"{nl}"}};
    manager->params = params;
    manager->strings = {{L"123", L"many"}, {L"Company", L"Maker"}};
    storage->strings = {
        {L"Lines", L"A{nl}B{tab}C"},      {L"Formats", L"Value {0} of {1}"},
        {L"Title", L"{Title}"},           {L"Mixed", L"{Product} by {Company}, {123}"},
        {L"Missing", L"{unknown} {} {x"}, {L"Odd", L"a}b{c"},
        {L"NoRescan", L"[{Loop}]"},       {L"#4", L"{Title}!"},
    };
    EXPECT_EQ(String(L"Lines"), L"A\nB\tC");
    EXPECT_EQ(String(L"Formats"), L"Value {0} of {1}");
    EXPECT_EQ(String(L"Title"), L"{Title}");
    EXPECT_EQ(String(L"Mixed"), L"Lumetta by Maker, many");
    EXPECT_EQ(String(L"Missing"), L"{unknown} {} {x");
    EXPECT_EQ(String(L"Odd"), L"a}b{c");
    EXPECT_EQ(String(L"NoRescan"), L"[{nl}]");
    // By id there is no self-name: the manager is asked for "Title".
    manager->strings[L"Title"] = L"Setup";
    EXPECT_EQ(storage->GetString(4), L"Setup!");

    // Strings naming each other end instead of recursing forever; a name met inside its own
    // expansion stays, so texts that name each other several times cannot multiply.
    struct Cycle : FakeManager {
        std::wstring GetString(ResourceName name) override {
            return target->GetString(ResourceName(forward.empty() ? name.data() : forward.c_str()));
        }
        boost::shared_ptr<TestStorage> target;
        std::wstring forward;
    };
    auto cycle = boost::make_shared<Cycle>();
    auto looping = boost::make_shared<TestStorage>();
    cycle->target = looping;
    cycle->forward = L"X";
    looping->strings[L"X"] = L"<{Y}>";
    looping->SetManager(boost::weak_ptr<IManager>(cycle));
    EXPECT_NE(looping->GetString(ResourceName(L"X")).find(L"{Y}"), std::wstring::npos);

    // Two strings that name each other: each is expanded, and what stays unexpanded is
    // only a name of the cycle.
    cycle->forward.clear();
    looping->ClearCache();
    looping->strings[L"A"] = L"a{B}{B}";
    looping->strings[L"B"] = L"b{A}{A}";
    const std::wstring a = looping->GetString(ResourceName(L"A"));
    EXPECT_TRUE(a.starts_with(L"ab")) << a;
    std::wstring rest = a;
    for (const wchar_t* cycleName : {L"{A}", L"{B}"})
        for (std::size_t at; (at = rest.find(cycleName)) != std::wstring::npos;) rest.erase(at, 3);
    EXPECT_EQ(rest.find_first_of(L"{}"), std::wstring::npos) << a;

    // Length is no limit: a placeholder far behind the start is still expanded.
    storage->strings[L"Long"] = std::wstring(70000, L'x') + L"{nl}";
    const std::wstring expanded = String(L"Long");
    EXPECT_EQ(expanded.size(), 70001u);
    EXPECT_TRUE(expanded.ends_with(L"x\n"));
}

TEST_F(StorageBaseTest, ArgumentsAndErrors) {
    Error error;
    EXPECT_EQ(storage->GetString(-1, &error), L"");
    EXPECT_EQ(error, MakeErrorCode(InvalidResourceID));
    EXPECT_EQ(storage->GetString(ResourceName(L""), &error), L"");
    EXPECT_EQ(error, MakeErrorCode(InvalidResourceName));
    EXPECT_EQ(storage->GetBinary(ResourceName(L""), &error).data, nullptr);
    EXPECT_EQ(error, MakeErrorCode(InvalidResourceName));
    storage->GetBinary(ResourceName(L"x"), &error);
    EXPECT_EQ(error, MakeErrorCode(NotSupported));
    // Without an error pointer the code is thrown instead.
    EXPECT_THAT([&] { storage->GetString(ResourceName(L"absent")); },
                testing::Throws<boost::system::system_error>(testing::Property(
                    &boost::system::system_error::code, MakeErrorCode(ResourceNotFound))));

    // A failed load is not cached: the next request asks again and succeeds.
    storage->binaryFailures = 1;
    error = {};
    EXPECT_EQ(storage->GetBinary(3, &error).size, 0u);
    EXPECT_EQ(error, MakeErrorCode(ResourceNotFound));
    error = {};
    const ByteView view = storage->GetBinary(3, &error);
    EXPECT_FALSE(error);
    ASSERT_EQ(view.size, 3u);
    EXPECT_EQ(view.data[2], 7);
    EXPECT_EQ(storage->GetBinary(0, &error).data, nullptr);

    EXPECT_EQ(storage->GetColor(10), 10u);
    EXPECT_TRUE(storage->ReleaseResource(10, ResourceType_Color));
    EXPECT_FALSE(storage->ReleaseResource(10, ResourceType_Color));
    EXPECT_FALSE(storage->ReleaseResource(3, ResourceType_Unnamed));
    EXPECT_TRUE(storage->ReleaseResource(3, ResourceType_Binary));
    EXPECT_FALSE(storage->ReleaseResource(-1, ResourceType_String));
    // Any non-negative id reaches the loader and is cached.
    EXPECT_EQ(storage->GetColor(INT32_MAX, &error), COLORREF(INT32_MAX));
    EXPECT_FALSE(error);
    EXPECT_TRUE(storage->ReleaseResource(INT32_MAX, ResourceType_Color));
}

TEST(StorageBase, BindsOnlyInternalManagers) {
    TestStorage storage;
    auto plain = boost::make_shared<PlainManager>();
    try {
        storage.SetManager(boost::weak_ptr<IManager>(plain));
        FAIL() << "a manager without the internal interface must be refused";
    } catch (const std::bad_cast& e) {
        EXPECT_STREQ(e.what(), "Failed to cast to an internal interface");
    }
    EXPECT_FALSE(storage.SetManager(boost::weak_ptr<IManager>()));
}

}  // namespace
