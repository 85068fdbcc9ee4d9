#include "system/Language.h"

#include <gtest/gtest.h>

#include <thread>
#include <utility>

#include "platform/Environment.h"
#include "support/ScopedEnvironment.h"

namespace {

// Sets the locale variables for one test and puts the old values back afterwards.
class LocaleVariables : public ::testing::Test {
protected:
    void SetUp() override { saved_.UnsetAll(); }

    const TestSupport::ScopedEnvironment saved_{"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
};

}  // namespace

TEST(Language, CultureNamesAndLocaleNamesByPrimaryLanguage) {
    // Only the low 10 bits (the primary language) count; unknown languages fall back to en-us.
    const std::pair<uint16_t, const wchar_t*> cultures[] = {
        {0x0807, L"de-de"}, {0x0411, L"ja-jp"}, {0x0419, L"en-us"}, {0x080C, L"fr-fr"},
        {0x0406, L"da-dk"}, {0, L"en-us"},      {0xFC07, L"de-de"}};
    for (const auto& [id, name] : cultures) EXPECT_EQ(System::GetCultureName(id), name) << id;

    const std::pair<const char*, uint16_t> locales[] = {
        {"de_CH.UTF-8", 0x0807}, {"de", 0x0407},    {"fr_CA.utf8@euro", 0x0C0C}, {"fr-BE", 0x080C},
        {"ja_JP.eucJP", 0x0411}, {"pt_BR", 0x0416}, {"en_GB", 0x0809},           {"de_XX", 0x0407}};
    for (const auto& [locale, id] : locales)
        EXPECT_EQ(System::LanguageIdFromLocaleName(locale), id) << locale;
    for (const char* neutral : {"C", "POSIX", "C.UTF-8", "", "xx_YY", "_"})
        EXPECT_EQ(System::LanguageIdFromLocaleName(neutral), 0x0409) << neutral;
}

TEST_F(LocaleVariables, FirstSetVariableDecides) {
    EXPECT_EQ(System::GetUILanguageName(), L"en-us");  // nothing set
    Platform::SetEnvironment("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(System::GetUILanguageName(), L"fr-fr");
    Platform::SetEnvironment("LC_MESSAGES", "da_DK.UTF-8");
    EXPECT_EQ(System::GetUILanguageName(), L"da-dk");
    Platform::SetEnvironment("LC_ALL", "ja_JP.UTF-8");
    EXPECT_EQ(System::GetUILanguageName(), L"ja-jp");
    Platform::SetEnvironment("LANGUAGE", "de_CH:fr:en");
    EXPECT_EQ(System::GetUserDefaultUILanguage(), 0x0807);
    EXPECT_EQ(System::GetUILanguageName(), L"de-de");
    Platform::SetEnvironment("LANGUAGE", "");  // empty counts as unset
    EXPECT_EQ(System::GetUILanguageName(), L"ja-jp");
    EXPECT_EQ(System::GetUserDefaultLCID(), 0x0411u);
}

TEST_F(LocaleVariables, ThreadOverrideStaysOnItsThread) {
    Platform::SetEnvironment("LANG", "fr_FR.UTF-8");
    EXPECT_EQ(System::SetThreadUILanguage(0x0407), 0x0407);
    EXPECT_EQ(System::GetThreadUILanguage(), 0x0407);
    EXPECT_EQ(System::GetUILanguageName(), L"de-de");
    EXPECT_TRUE(System::SetThreadLocale(0x0411));
    EXPECT_EQ(System::GetThreadLocale(), 0x0411u);

    std::wstring other;
    uint32_t otherLocale = 0;
    std::thread([&] {
        other = System::GetUILanguageName();
        otherLocale = System::GetThreadLocale();
    }).join();
    EXPECT_EQ(other, L"fr-fr");
    EXPECT_EQ(otherLocale, 0x040Cu);

    EXPECT_EQ(System::SetThreadUILanguage(0), 0x040C);  // back to the user's language
    EXPECT_EQ(System::GetUILanguageName(), L"fr-fr");
    System::SetThreadLocale(0);
    EXPECT_EQ(System::GetThreadLocale(), 0x040Cu);
}
