#include "storages/SystemStorage.h"

#include <gtest/gtest.h>

#include "StorageTestSupport.h"
#include "graphics/Images.h"
#include "graphics/SystemMetrics.h"

using namespace ResourceLib;
using StorageTests::ErrorOf;

TEST(SystemStorage, ColorsAndIcons) {
    TestSupport::TempFolder temp("lumetta-sysicons");
    // The last comma separates the index, so a folder may have one in its name.
    const std::wstring file = StorageTests::Wide(temp / "a,b" / "icons.ico");
    StorageTests::WriteFile(temp / "a,b" / "icons.ico", StorageTests::IcoFile({16, 32}));
    const std::wstring name = file + L",0";
    auto storage = boost::make_shared<SystemStorage>();
    auto manager = StorageTests::Bind(storage);
    IStorage::Error error;

    EXPECT_EQ(storage->GetColor(L"COLOR_WINDOW", &error), CommonGuiLib::GetSysColor(5));
    EXPECT_EQ(storage->GetColor(30, &error), CommonGuiLib::GetSysColor(30));
    const IconHandle large = storage->GetIcon(StorageTests::Name(name), 32, 32, &error);
    EXPECT_EQ(CommonGuiLib::IconWidth(large), 32);
    EXPECT_EQ(CommonGuiLib::IconWidth(storage->GetIcon(StorageTests::Name(name), 16, 16, &error)),
              16);
    EXPECT_FALSE(error);

    auto expectMiss = [&](auto&& request) {
        error.clear();
        request();
        EXPECT_EQ(error, ErrorOf(ResourceNotFound));
    };
    expectMiss([&] { storage->GetColor(L"color_window", &error); });
    expectMiss([&] { storage->GetColor(31, &error); });
    expectMiss([&] { storage->GetIcon(StorageTests::Name(name), 24, 24, &error); });
    expectMiss([&] { storage->GetIcon(0, 32, 32, &error); });
    for (const std::wstring& bad :
         {file + L",-3", file + L",", std::wstring(L",0"), file, file + L",7"}) {
        expectMiss([&] { storage->GetIcon(StorageTests::Name(bad), 32, 32, &error); });
    }
}
