#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "foundation/TextConversion.h"
#include "resourcelib/XmlMetadataProvider.h"
#include "support/TestFiles.h"

namespace {

using namespace ResourceLib;

constexpr char kMetadata[] = R"(<?xml version="1.0" encoding="utf-8"?>
<ResourceLib>
  <Base root=".."/>
  <Languages>
    <Language name="en" title="English" locale="1033" default="1"/>
    <!-- a comment and stray text are skipped -->
    text
    <Other name="xx"/>
    <Language name="de" title="Deutsch" locale="abc" default="01"/>
    <Language name="fr" title="Francais" default="true"/>
  </Languages>
  <Skins>
    <Skin name="Blue" titleID="BlueTitle"/>
    <Skin name="Red" titleID="RedTitle" default="1"/>
  </Skins>
</ResourceLib>
)";

struct Folder {
    explicit Folder(const std::string& metadata) {
        EXPECT_TRUE(TestSupport::WriteFile(temp / "Metadata.xml", metadata));
    }
    MetadataProviderPtr Read(const boost::weak_ptr<IManager>& manager = {}) const {
        const std::wstring path = STLHelpers::Utf8ToWide(temp.Path().string());
        return CreateXmlMetadataProvider(ResourceName(path.c_str()), manager);
    }
    TestSupport::TempFolder temp;
};

struct TitleManager : IManager {
    std::wstring GetString(ResourceName name) override { return titles[name.str()]; }
    std::map<std::wstring, std::wstring> titles;
};

TEST(Metadata, ReadsLanguagesSkinsAndDefaults) {
    Folder folder(kMetadata);
    const MetadataProviderPtr provider = folder.Read();
    ASSERT_TRUE(provider);
    EXPECT_EQ(provider->GetBaseDirectory(), L"..");

    std::vector<LanguagePtr> languages{nullptr};
    EXPECT_TRUE(provider->GetLanguages(languages));
    ASSERT_EQ(languages.size(), 3u);
    EXPECT_EQ(languages[0]->GetTitle(), L"English");
    EXPECT_EQ(languages[0]->GetLocale(), 1033);
    EXPECT_EQ(languages[1]->GetLocale(), 0);  // not a number
    EXPECT_EQ(languages[2]->GetLocale(), 0);  // missing
    // "01" reads as 1 and comes later than "1": the last marked one wins; "true" is no 1.
    EXPECT_EQ(provider->GetDefaultLanguage(), languages[1]);

    EXPECT_EQ(provider->FindLanguage(L"fr"), languages[2]);
    EXPECT_FALSE(provider->FindLanguage(L"EN"));

    const SkinProviderPtr skins = boost::dynamic_pointer_cast<ISkinProvider>(provider);
    ASSERT_TRUE(skins);
    ASSERT_TRUE(skins->GetDefaultSkin());
    EXPECT_EQ(skins->GetDefaultSkin()->GetName(), L"Red");
    EXPECT_EQ(skins->FindSkin(L"Blue")->GetName(), L"Blue");
    EXPECT_FALSE(skins->FindSkin(L"blue"));

    // Override files name the defaults, matched exactly: a line break is part of the name.
    ASSERT_TRUE(TestSupport::WriteFile(folder.temp / "DefaultLanguageOverride", "fr\n"));
    ASSERT_TRUE(TestSupport::WriteFile(folder.temp / "DefaultSkinOverride", "Blue"));
    MetadataProviderPtr overridden = folder.Read();
    ASSERT_TRUE(overridden);
    EXPECT_EQ(overridden->GetDefaultLanguage()->GetName(), L"de");
    EXPECT_EQ(boost::dynamic_pointer_cast<ISkinProvider>(overridden)->GetDefaultSkin()->GetName(),
              L"Blue");
    ASSERT_TRUE(TestSupport::WriteFile(folder.temp / "DefaultLanguageOverride", "en"));
    overridden = folder.Read();
    ASSERT_TRUE(overridden);
    EXPECT_EQ(overridden->GetDefaultLanguage()->GetName(), L"en");
}

TEST(Metadata, MissingPartsAndBadFiles) {
    Folder noDefault("<ResourceLib><Languages><Language name=\"en\"/></Languages></ResourceLib>");
    const MetadataProviderPtr provider = noDefault.Read();
    ASSERT_TRUE(provider);
    EXPECT_FALSE(provider->GetDefaultLanguage());
    EXPECT_EQ(provider->FindLanguage(L"en")->GetTitle(), L"");
    EXPECT_EQ(provider->GetBaseDirectory(), L"");
    std::vector<SkinPtr> skins;
    EXPECT_TRUE(boost::dynamic_pointer_cast<ISkinProvider>(provider)->GetSkins(skins));
    EXPECT_TRUE(skins.empty());

    EXPECT_FALSE(Folder("<ResourceLib><Skins/></ResourceLib>").Read());
    EXPECT_FALSE(Folder("<ResourceLib><Languages>").Read());
    TestSupport::TempFolder empty;
    const std::wstring emptyPath = STLHelpers::Utf8ToWide(empty.Path().string());
    EXPECT_FALSE(CreateXmlMetadataProvider(ResourceName(emptyPath.c_str()), {}));
}

TEST(Metadata, SkinTitleComesFromTheManager) {
    auto manager = boost::make_shared<TitleManager>();
    manager->titles[L"RedTitle"] = L"Crimson";
    Folder folder(kMetadata);
    const MetadataProviderPtr provider = folder.Read(boost::weak_ptr<IManager>(manager));
    const auto skins = boost::dynamic_pointer_cast<ISkinProvider>(provider);
    ASSERT_TRUE(skins);
    EXPECT_EQ(skins->FindSkin(L"Red")->GetTitle(), L"Crimson");
    EXPECT_EQ(skins->FindSkin(L"Blue")->GetTitle(), L"BlueTitle");  // empty resource
    manager.reset();
    EXPECT_EQ(skins->FindSkin(L"Red")->GetTitle(), L"RedTitle");  // manager gone
}

}  // namespace
