#include "storages/XmlStorage.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "StorageTestSupport.h"
#include "graphics/Images.h"
#include "graphics/SystemMetrics.h"

using namespace ResourceLib;
using StorageTests::ErrorOf;

namespace {

class XmlStorageTest : public ::testing::Test {
protected:
    // A Resources.xml below `folder` with these resource elements.
    void Resources(const std::string& folder, const std::string& elements) {
        StorageTests::WriteFile(
            temp_ / folder / "Resources.xml",
            "<ResourceLib><Resources>" + elements + "</Resources></ResourceLib>");
    }
    // The message of the exception a request for any string throws.
    std::string Thrown() {
        try {
            storage_->GetString(L"Any", &error_);
        } catch (const std::runtime_error& e) {
            return e.what();
        }
        return "";
    }

    TestSupport::TempFolder temp_{"lumetta-xml"};
    boost::shared_ptr<XmlStorage> storage_ =
        boost::make_shared<XmlStorage>(StorageTests::Wide(temp_.Path()));
    IStorage::Error error_;
};

}  // namespace

TEST_F(XmlStorageTest, ValuesFromMostSpecificFile) {
    Resources("Common", R"(<String name="Where" value="common"/>
        <String name="A" value="x">y</String><String name="B">y<b>z</b></String><String name="C"/>
        <String name="Both" value="localized"/><UnlocalizedString name="Only" value="fallback"/>
        <Integer name="Size" value="12px"/><Integer name="Count">-42</Integer>
        <Color name="Win">@COLOR_WINDOW</Color><Color name="Bad" value="#0000FF"/>
        <Font name="Title" value="NoSuchFace,-11"/>)");
    Resources("en-us/Blue", R"(<String name="Where" value="en-us/Blue"/>
        <UnlocalizedString name="Both" value="unlocalized"/>)");
    Resources("Common/Blue", R"(<String name="Where" value="Common/Blue"/>)");
    // Values that do not convert send the search on to the next file.
    Resources("en-us", R"(<String name="Where" value="en-us"/><Color name="Bad" value="#FFF"/>
        <Font name="Title" value="no comma"/>)");
    auto manager = StorageTests::Bind(storage_, L"en-us", L"Blue");
    manager->RegisterResourceName(3, L"Where", ResourceType_String);
    manager->RegisterResourceName(INT32_MAX, L"A", ResourceType_String);

    EXPECT_EQ(storage_->GetString(L"Where", &error_), L"en-us/Blue");
    EXPECT_EQ(storage_->GetString(3, &error_), L"en-us/Blue");
    EXPECT_EQ(storage_->GetString(INT32_MAX, &error_), L"x");
    EXPECT_EQ(storage_->GetString(L"A", &error_), L"x");
    EXPECT_EQ(storage_->GetString(L"B", &error_), L"yz");
    EXPECT_EQ(storage_->GetString(L"C", &error_), L"");
    EXPECT_EQ(storage_->GetString(L"Only", &error_), L"fallback");
    EXPECT_EQ(storage_->GetString(L"Both", &error_), L"localized");
    EXPECT_EQ(storage_->GetInteger(L"Size", &error_), 0);
    EXPECT_EQ(storage_->GetInteger(L"Count", &error_), -42);
    EXPECT_EQ(storage_->GetColor(L"Win", &error_), CommonGuiLib::GetSysColor(5));
    EXPECT_EQ(storage_->GetColor(L"Bad", &error_), 0x00FF0000u);
    const FontHandle title = storage_->GetFont(L"Title", &error_);
    EXPECT_EQ(CommonGuiLib::DescribeFont(title).faceName, L"NoSuchFace");
    EXPECT_EQ(CommonGuiLib::DescribeFont(title).height, -11);
    EXPECT_FALSE(error_);
    for (const wchar_t* missing : {L"Missing", L"Wh\"ere"}) {
        error_.clear();
        storage_->GetString(missing, &error_);
        EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    }

    // A skin without a folder of its own: the next file down answers.
    manager->SetSkin(StorageTests::MakeSkin(L"Green"));
    EXPECT_EQ(storage_->GetString(L"Where", nullptr), L"en-us");
    manager->SetLanguage(LanguagePtr());
    EXPECT_EQ(storage_->GetString(L"Where", nullptr), L"common");
}

TEST_F(XmlStorageTest, MissingAndBrokenFiles) {
    auto manager = StorageTests::Bind(storage_, L"en-us");
    manager->RegisterResourceName(1, L"Any", ResourceType_String);
    storage_->GetString(L"Any", &error_);
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    storage_->GetString(1, &error_);
    EXPECT_EQ(error_, ErrorOf(InvalidStorageState));

    // The request that meets a malformed file throws; the files loaded before it serve
    // the next request.
    Resources("de-de/Blue", R"(<String name="Any" value="blue"/>)");
    StorageTests::WriteFile(temp_ / "de-de" / "Resources.xml", "<ResourceLib><Resources>");
    manager->SetLanguage(StorageTests::MakeLanguage(L"de-de"));
    manager->SetSkin(StorageTests::MakeSkin(L"Blue"));
    EXPECT_EQ(Thrown(), "Failed to open or parse the designated XML file");
    EXPECT_EQ(storage_->GetString(L"Any", &error_), L"blue");
    manager->SetSkin(SkinPtr());
    StorageTests::WriteFile(temp_ / "fr-fr" / "Resources.xml",
                            "<ResourceLib><Other/></ResourceLib>");
    manager->SetLanguage(StorageTests::MakeLanguage(L"fr-fr"));
    EXPECT_EQ(Thrown(), "Invalid resource XML format");
}

TEST_F(XmlStorageTest, GradientBitmaps) {
    Resources("Common", R"(
        <Bitmap name="Clamped" type="Gradient" orientation="Vertical" width="2" height="8">
          <Pin color="#FF0000" position="50"/><Pin color="#00FF00" position="50"/>
          <Pin color="0,0,255" position="-20"/><Pin color="0,0,255" position="150"/></Bitmap>
        <Bitmap name="Partial" type="Gradient" orientation="Vertical" width="1" height="8">
          <Pin color="255,0,0" position="25"/><Pin color="255,0,0" position="75"/></Bitmap>
        <Bitmap name="Plain" width="5" height="5"/>
        <Bitmap name="Empty" type="Gradient" width="0" height="5"><Pin color="1,1,1"/></Bitmap>)");
    auto manager = StorageTests::Bind(storage_);

    // -20 and 150 clamp to the ends; of two pins at 50 the first (red) is kept.
    const BitmapHandle clamped = storage_->GetBitmap(L"Clamped", false, &error_);
    EXPECT_EQ(CommonGuiLib::GetPixelArgb(clamped, 0, 0), 0xFF0000FFu);
    EXPECT_EQ(CommonGuiLib::GetPixelArgb(clamped, 1, 4), 0xFFFF0000u);
    // Outside the pins nothing is painted: opaque black.
    const BitmapHandle partial = storage_->GetBitmap(L"Partial", false, &error_);
    EXPECT_EQ(CommonGuiLib::GetPixelArgb(partial, 0, 1), 0xFF000000u);
    EXPECT_EQ(CommonGuiLib::GetPixelArgb(partial, 0, 4), 0xFFFF0000u);
    EXPECT_FALSE(error_);
    for (const wchar_t* name : {L"Plain", L"Empty"}) {
        error_.clear();
        EXPECT_FALSE(CommonGuiLib::HasHandle(storage_->GetBitmap(name, false, &error_)));
        EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    }
}

TEST_F(XmlStorageTest, FilesNamedByPath) {
    StorageTests::WriteFile(temp_ / "Common/Blue/logo.bmp", StorageTests::BmpFile(3, 3, 0xFF));
    StorageTests::WriteFile(temp_ / "en-us/img/logo.bmp", StorageTests::BmpFile(4, 4, 0xFF00));
    StorageTests::WriteFile(temp_ / "en-us/app.ico", StorageTests::IcoFile({48}));
    StorageTests::WriteFile(temp_ / "en-us/data.bin", "payload");
    StorageTests::WriteFile(temp_ / "Common/license.txt", "text");
    Resources("en-us", R"(<Bitmap name="Skinned" path="{SkinDir}/logo.bmp"/>
        <Bitmap name="Relative" path="img\logo.bmp"/>
        <Bitmap name="Fallback" path="missing.bmp" type="Gradient" width="2" height="1">
          <Pin color="1,2,3" position="0"/></Bitmap>
        <Icon name="App" path="app.ico"/><Icon name="NoIcon" path="data.bin"/>
        <Binary name="Data" path="data.bin"/>
        <FilePath name="License" value="license.txt"/><FilePath name="Gone" value="none.txt"/>)");
    Resources("Common", "");
    auto manager = StorageTests::Bind(storage_, L"en-us", L"Blue");
    manager->RegisterResourceName(1, L"Data", ResourceType_Binary);
    manager->RegisterResourceName(2, L"License", ResourceType_Binary);
    manager->RegisterResourceName(3, L"Gone", ResourceType_Binary);

    EXPECT_EQ(CommonGuiLib::BitmapWidth(storage_->GetBitmap(L"Skinned", false, &error_)), 3);
    EXPECT_EQ(CommonGuiLib::BitmapWidth(storage_->GetBitmap(L"Relative", false, &error_)), 4);
    EXPECT_EQ(CommonGuiLib::GetPixelArgb(storage_->GetBitmap(L"Fallback", true, &error_), 0, 0),
              0xFF010203u);
    // Icons come at the file's own size whatever is asked.
    EXPECT_EQ(CommonGuiLib::IconWidth(storage_->GetIcon(L"App", 16, 16, &error_)), 48);
    const ByteView data = storage_->GetBinary(1, &error_);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(data.data), data.size), "payload");
    // Relative to any of the loaded files: here the one in "Common".
    EXPECT_EQ(storage_->GetFilePath(2, ResourceType_Binary, &error_),
              StorageTests::Wide(temp_ / "Common/license.txt"));
    EXPECT_FALSE(error_);
    storage_->GetIcon(L"NoIcon", 16, 16, &error_);
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
    error_.clear();
    storage_->GetFilePath(3, ResourceType_Binary, &error_);
    EXPECT_EQ(error_, ErrorOf(ResourceNotFound));
}
