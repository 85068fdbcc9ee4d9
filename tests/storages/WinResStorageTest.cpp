#include "storages/WinResStorage.h"

#include <gtest/gtest.h>

#include "StorageTestSupport.h"
#include "graphics/Images.h"
#include "system/Language.h"

using namespace ResourceLib;
using StorageTests::ErrorOf;

namespace {

// The test program carries WinResTest.rc; library ids start at 10000 there.
class WinResStorageTest : public ::testing::Test {
protected:
    void TearDown() override {
        // Reload leaves the thread's language set; other tests expect the user's.
        System::SetThreadLocale(0);
        System::SetThreadUILanguage(0);
    }

    boost::shared_ptr<WinResStorage> storage_ = boost::make_shared<WinResStorage>(10000);
    IStorage::Error error_;
};

}  // namespace

TEST_F(WinResStorageTest, StringsFollowTheLanguage) {
    auto manager = StorageTests::Bind(storage_);
    manager->SetLanguage(StorageTests::MakeLanguage(L"en-us", 0x0409));
    manager->RegisterResourceName(5, L"Title", ResourceType_String);

    EXPECT_EQ(storage_->GetString(5, &error_), L"Title");
    EXPECT_EQ(storage_->GetString(L"Title", &error_), L"Title");
    EXPECT_EQ(storage_->ModuleId(60000), 4464);
    EXPECT_EQ(storage_->GetString(60000, &error_), L"Wrapped around");
    EXPECT_FALSE(error_);
    // An empty entry beside an existing one, and an unregistered name, are misses.
    EXPECT_EQ(storage_->GetString(6, &error_), L"");
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    error_.clear();
    EXPECT_EQ(storage_->GetString(L"Unregistered", &error_), L"");
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));

    manager->SetLanguage(StorageTests::MakeLanguage(L"de-de", 0x0407));
    EXPECT_EQ(storage_->GetString(L"Title", nullptr), L"Titel");
    EXPECT_EQ(System::GetThreadLocale(), 0x0407u);
    EXPECT_EQ(System::GetThreadUILanguage(), 0x0007u);
    // A language without a locale leaves the thread as it was.
    manager->SetLanguage(StorageTests::MakeLanguage(L"xx", 0));
    EXPECT_EQ(storage_->GetString(5, nullptr), L"Titel");
}

TEST_F(WinResStorageTest, BinariesIconsAndMisses) {
    auto manager = StorageTests::Bind(storage_);
    const ByteView blob = storage_->GetBinary(3, &error_);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(blob.data), blob.size), "hello world!");
    EXPECT_EQ(CommonGuiLib::IconWidth(storage_->GetIcon(10, 16, 16, &error_)), 16);
    EXPECT_TRUE(CommonGuiLib::HasHandle(storage_->GetIcon(L"APPICON", 32, 32, &error_)));
    EXPECT_FALSE(error_);

    EXPECT_EQ(storage_->GetBinary(4, &error_).size, 0u);
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    error_.clear();
    EXPECT_FALSE(CommonGuiLib::HasHandle(storage_->GetIcon(11, 32, 32, &error_)));
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    error_.clear();
    EXPECT_FALSE(CommonGuiLib::HasHandle(storage_->GetBitmap(1, false, &error_)));
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
}
