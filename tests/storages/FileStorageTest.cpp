#include "storages/FileStorage.h"

#include <gtest/gtest.h>

#include "StorageTestSupport.h"
#include "graphics/Images.h"

using namespace ResourceLib;
using StorageTests::ErrorOf;

namespace {

class FileStorageTest : public ::testing::Test {
protected:
    void Bmp(const std::string& file, uint32_t rgb) {
        StorageTests::WriteFile(temp_ / file, StorageTests::BmpFile(2, 2, rgb));
    }
    uint32_t ColorOf(const std::wstring& name, bool premultiply = false) {
        return CommonGuiLib::GetPixelArgb(
                   storage_->GetBitmap(StorageTests::Name(name), premultiply, &error_), 0, 0) &
               0xFFFFFF;
    }

    TestSupport::TempFolder temp_{"lumetta-files"};
    boost::shared_ptr<FileStorage> storage_ =
        boost::make_shared<FileStorage>(StorageTests::Wide(temp_.Path()));
    IStorage::Error error_;
};

}  // namespace

TEST_F(FileStorageTest, MostSpecificLoadableFileWins) {
    Bmp("en-us/Blue/logo.bmp", 1);
    Bmp("Common/Blue/logo.bmp", 2);
    Bmp("en-us/logo.bmp", 3);
    Bmp("Common/logo.bmp", 4);
    Bmp("Common/Blue/sub/ok.bmp", 5);
    StorageTests::WriteFile(temp_ / "en-us/broken.bmp", "not an image");
    Bmp("Common/broken.bmp", 6);
    auto manager = StorageTests::Bind(storage_, L"en-us", L"Blue");

    EXPECT_EQ(ColorOf(L"logo"), 1u);
    EXPECT_EQ(ColorOf(L"sub__ok"), 5u);
    EXPECT_EQ(ColorOf(L"sub/ok", true), 5u);
    EXPECT_EQ(ColorOf(L"broken"), 6u);
    EXPECT_FALSE(error_);
    manager->SetSkin(SkinPtr());
    EXPECT_EQ(ColorOf(L"logo"), 3u);
    EXPECT_EQ(ColorOf(L"sub__ok"), 0u);
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    manager->SetLanguage(LanguagePtr());
    EXPECT_EQ(ColorOf(L"logo"), 4u);
    EXPECT_EQ(ColorOf(L""), 0u);
    EXPECT_EQ(error_, ErrorOf(InvalidResourceName));

    // Folders are taken at Reload: one made later counts after the next change only.
    Bmp("en-us/late.bmp", 7);
    EXPECT_EQ(ColorOf(L"late"), 0u);
    manager->SetLanguage(StorageTests::MakeLanguage(L"en-us"));
    EXPECT_EQ(ColorOf(L"late"), 7u);
}

TEST_F(FileStorageTest, IconsBinariesAndIds) {
    StorageTests::WriteFile(temp_ / "Common/app.ico", StorageTests::IcoFile({16, 48}));
    StorageTests::WriteFile(temp_ / "Common/readme_text.bin", std::string("abc\0def", 7));
    auto manager = StorageTests::Bind(storage_);
    manager->RegisterResourceName(7, L"readme_text", ResourceType_Binary);
    manager->RegisterResourceName(8, L"app", ResourceType_Icon);

    EXPECT_EQ(CommonGuiLib::IconHeight(storage_->GetIcon(L"app", 0, 32, &error_)), 32);
    EXPECT_EQ(CommonGuiLib::IconWidth(storage_->GetIcon(8, 0, 0, &error_)), 48);
    const ByteView blob = storage_->GetBinary(7, &error_);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(blob.data), blob.size),
              std::string("abc\0def", 7));
    EXPECT_FALSE(error_);
    storage_->GetBinary(L"readme_text", &error_);
    EXPECT_EQ(error_, ErrorOf(NotSupported));
    storage_->GetBinary(9, &error_);
    EXPECT_EQ(error_, ErrorOf(InvalidResourceName));
}
