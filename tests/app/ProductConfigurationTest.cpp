#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "app/ProductConfiguration.h"
#include "foundation/TextConversion.h"
#include "support/HiveFolder.h"
#include "system/FileHelpers.h"

namespace {

using Args = std::vector<std::wstring>;

ProductConfiguration Make(Args tail) {
    tail.insert(tail.begin(), L"/opt/lumetta/updater");
    return ProductConfiguration(std::move(tail));
}

// A registry of hive files of its own for each test.
class ConfigurationTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(registry.Path().empty()); }

    void Hive(const std::string& root, const std::string& body) {
        ASSERT_TRUE(
            registry.WriteHive(root + ".reg", "Windows Registry Editor Version 5.00\n\n" + body));
    }

    TestSupport::HiveFolder registry;
};

TEST_F(ConfigurationTest, OptionsMatchWholeArgumentsWithoutRegardToCase) {
    auto upper = Make({L"/DOWNLOADURL", L"x"});
    EXPECT_EQ(upper.GetDownloadURL(), L"x");
    auto lower = Make({L"/downloadurl", L"http://h/s.exe"});
    EXPECT_EQ(lower.GetDownloadURL(), L"http://h/s.exe");

    auto prefixOnly = Make({L"/downloadURLs", L"x", L"/download", L"y"});
    EXPECT_EQ(prefixOnly.GetOptionValue(L"/downloadURL"), L"");

    // An option standing last is skipped; a later complete one still counts.
    auto skipped = Make({L"/productName", L"A", L"/componentName"});
    EXPECT_EQ(skipped.GetComponentName(), L"Automatic Update");
    EXPECT_TRUE(skipped.HasOption(L"/COMPONENTNAME"));
    auto twice = Make({L"/componentName", L"First", L"/componentName", L"Second"});
    EXPECT_EQ(twice.GetComponentName(), L"First");

    // The program path never matches.
    ProductConfiguration programOnly(Args{L"/runWithProduct"});
    EXPECT_FALSE(programOnly.IsRunWithProduct());
    EXPECT_EQ(programOnly.GetArgumentCount(), 1);
}

TEST_F(ConfigurationTest, SilentUnlessZeroFollowsTheOption) {
    EXPECT_FALSE(Make({L"/isSilent", L"0"}).IsSilent());
    // Absent, without a value, or any other value.
    for (const Args& args : {Args{}, Args{L"/isSilent"}, Args{L"/isSilent", L"false"},
                             Args{L"/isSilent", L"1"}, Args{L"/isSilent", L"00"}})
        EXPECT_TRUE(Make(args).IsSilent()) << args.size();

    auto both = Make({L"/isSilent", L"/runWithProduct"});
    EXPECT_EQ(both.GetOptionValue(L"/isSilent"), L"/runWithProduct");
    EXPECT_TRUE(both.IsSilent());
    EXPECT_TRUE(both.IsRunWithProduct());
}

TEST_F(ConfigurationTest, TheStringTableGivesTheBuiltInProduct) {
    auto configuration = Make({});
    EXPECT_EQ(configuration.GetProductName(), L"Lumetta Player");
    EXPECT_EQ(configuration.GetProductCompanyName(), L"Company Name");
    EXPECT_EQ(configuration.GetProductExecutable(), L"LumettaPlayer.exe");
    EXPECT_EQ(configuration.GetBundleName(), L"Lumetta Pack");
    EXPECT_FALSE(configuration.GetProductURL().empty());
    EXPECT_EQ(configuration.GetProductNameWithoutSpaces(), L"LumettaPlayer");
    EXPECT_EQ(configuration.GetUpdateMutexName(), L"Lumetta Player_UpdateMutex");
    EXPECT_EQ(configuration.GetExtrasMutexName(), L"Lumetta Player_ExtrasMutex");
    EXPECT_EQ(configuration.GetExitEventName(), L"Lumetta Player_ExitEvent");
    EXPECT_EQ(configuration.ExpandPlaceholders(L"{ProductName} {ComponentName} Installation"),
              L"Lumetta Player Automatic Update Installation");
    EXPECT_EQ(configuration.ExpandPlaceholders(L"{Unknown} {ProductName"),
              L"{Unknown} {ProductName");

    // Entry 134 with its brand token replaced; without a registry value the suffix is "_".
    const std::wstring url = configuration.GetDownloadURL();
    EXPECT_EQ(url.rfind(L"http://", 0), 0u) << STLHelpers::WideToUtf8(url);
    EXPECT_EQ(url.find(L"URLBrandSuffix"), std::wstring::npos);
    EXPECT_NE(url.find(L"_.exe"), std::wstring::npos) << STLHelpers::WideToUtf8(url);
    EXPECT_EQ(configuration.GetInstallPath(), L"");
    EXPECT_FALSE(configuration.GetConfiguredLanguageName().empty());
    EXPECT_EQ(Make({L"/languageName", L"de-de"}).GetConfiguredLanguageName(), L"de-de");
}

TEST_F(ConfigurationTest, TheRegistryGivesSuffixDownloadUrlAndInstallPath) {
    Hive("HKEY_CURRENT_USER",
         "[HKEY_CURRENT_USER\\Software\\Lumetta Player]\n\"SetupNameSuffix\"=\"KAPRI\"\n\n"
         "[HKEY_CURRENT_USER\\Software\\Lumetta Pack\\Lumetta Player]\n"
         "\"DownloadURL\"=\"http://mirror/setup/URLBrandSuffix/.exe?a=/URLBrandSuffix/\"\n\n"
         "[HKEY_CURRENT_USER\\Software\\Other]\n\"SetupNameSuffix\"=\"kapri\"\n\n"
         "[HKEY_CURRENT_USER\\Software\\Pack\\Other]\n\"DownloadURL\"=\"http://other/x\"\n");
    Hive("HKEY_LOCAL_MACHINE",
         "[HKEY_LOCAL_MACHINE\\Software\\Other]\n\"InstallPath\"=\"/opt/other/\"\n");

    auto builtIn = Make({});
    EXPECT_EQ(builtIn.GetBrandSuffix(), L"_01");
    EXPECT_EQ(builtIn.GetDownloadURL(), L"http://mirror/setup_01.exe?a=_01");
    EXPECT_EQ(Make({L"/downloadURL", L"http://cmd/URLBrandSuffix/"}).GetDownloadURL(),
              L"http://cmd_01");

    // The product name from the command line moves every key and name with it.
    auto other = Make({L"/productName", L"Other", L"/bundleName", L"Pack"});
    EXPECT_EQ(other.GetBrandSuffix(), L"_kapri") << "only the exact word is special";
    EXPECT_EQ(other.GetDownloadURL(), L"http://other/x");
    EXPECT_EQ(other.GetInstallPath(), L"/opt/other/");
    EXPECT_EQ(other.GetExitEventName(), L"Other_ExitEvent");
    EXPECT_EQ(other.GetUpdateMutexName(), L"Other_UpdateMutex");
    EXPECT_EQ(other.ExpandPlaceholders(L"{ProductName}: {ComponentName}"),
              L"Other: Automatic Update");
}

TEST_F(ConfigurationTest, ThePublicKeyComesFromTheCommandLineTheRegistryOrTheStringTable) {
    Hive("HKEY_LOCAL_MACHINE",
         "[HKEY_LOCAL_MACHINE\\Software\\Lumetta Player]\n\"UpdatePublicKey\"=\"RWregistry\"\n");
    const std::wstring table = STLHelpers::Utf8ToWide(LUMETTA_TABLE_PUBLIC_KEY);
    const struct {
        Args args;
        std::wstring key;
    } cases[] = {
        {{L"/publicKey", L"RWcommand"}, L"RWcommand"},
        {{L"/PUBLICKEY", L"RWcommand", L"/productName", L"Other"}, L"RWcommand"},
        {{}, L"RWregistry"},
        {{L"/productName", L"Other"}, table},  // no key under Other
        {{L"/publicKey"}, L"RWregistry"},      // standing last: absent
    };
    for (const auto& [args, key] : cases) EXPECT_EQ(Make(args).GetPublicKey(), key) << args.size();
}

TEST_F(ConfigurationTest, TheProductVersionComesFromTheExecutableBesideTheUpdater) {
    // The product executable is joined to the updater's folder; a relative name reaches
    // the demo product, which carries "FileVersion" 1, 4, 1, 0.
    const std::wstring relative =
        std::filesystem::path(LUMETTA_DEMO_PRODUCT)
            .lexically_relative(STLHelpers::WideToUtf8(System::GetModuleFolder()))
            .wstring();
    auto configuration = Make({L"/productExecutable", relative});
    EXPECT_EQ(configuration.GetProductVersion(), L"1. 4. 1. 0");
    EXPECT_EQ(configuration.GetShortProductVersion(), L"1. 4");
    const ProductInfo info = configuration.GetProductInfo();
    EXPECT_EQ(
        std::tie(info.productName, info.fullProductName, info.productVersion,
                 info.shortProductVersion, info.companyName),
        std::tie(L"LumettaPlayer", L"Lumetta Player", L"1. 4. 1. 0", L"1. 4", L"Company Name"));
    EXPECT_EQ(info.extraParameters, (std::vector<std::pair<std::wstring, std::wstring>>{
                                        {L"ComponentName", L"Automatic Update"}}));
    EXPECT_EQ(configuration.ExpandPlaceholders(L"v{ShortProductVersion} ({ProductVersion})"),
              L"v1. 4 (1. 4. 1. 0)");

    auto missing = Make({L"/productExecutable", L"no-such-product"});
    EXPECT_EQ(missing.GetProductVersion(), L"");
    EXPECT_EQ(missing.GetShortProductVersion(), L"");

    EXPECT_EQ(ProductConfiguration::ShortVersionOf(L"7"), L"7");
    EXPECT_EQ(ProductConfiguration::ShortVersionOf(L"1.4.1.0"), L"1.4");
    EXPECT_EQ(ProductConfiguration::ShortVersionOf(L"..2..5."), L"2.5");
}

TEST_F(ConfigurationTest, WindowsCommandLinesAreSplitByTheSharedRules) {
    ProductConfiguration configuration(
        L"\"C:\\Program Files\\Lumetta\\Updater.exe\" /productName \"My Product\" /isSilent 0");
    EXPECT_EQ(configuration.GetArgumentCount(), 5);
    EXPECT_EQ(configuration.GetArguments()[0], L"C:\\Program Files\\Lumetta\\Updater.exe");
    EXPECT_EQ(configuration.GetProductName(), L"My Product");
    EXPECT_FALSE(configuration.IsSilent());

    EXPECT_EQ(ProductConfiguration(static_cast<const wchar_t*>(nullptr)).GetArgumentCount(), 0);
    EXPECT_EQ(ProductConfiguration(L"").GetArgumentCount(), 0);
}

TEST_F(ConfigurationTest, NamedValuesAreResolvedOnceAndSharedAcrossThreads) {
    auto configuration = Make({L"/productName", L"Cached"});
    std::vector<std::thread> threads;
    std::vector<std::wstring> seen(8);
    for (size_t i = 0; i < seen.size(); ++i)
        threads.emplace_back([&, i] { seen[i] = configuration.GetProductName(); });
    for (auto& thread : threads) thread.join();
    for (const auto& name : seen) EXPECT_EQ(name, L"Cached");
    // An empty result is kept as well.
    EXPECT_EQ(configuration.GetNamedValue(L"noSuchValue", 4000), L"");
    EXPECT_EQ(configuration.GetNamedValue(L"noSuchValue", ProductConfiguration::kProductNameEntry),
              L"")
        << "the first result stays";
}

TEST(ProcessConfiguration, IsBuiltFromTheProcessArguments) {
    ProductConfiguration& configuration = GetProductConfiguration();
    EXPECT_EQ(&configuration, &GetProductConfiguration());
    ASSERT_GE(configuration.GetArgumentCount(), 1);
    EXPECT_EQ(std::filesystem::path(configuration.GetArguments()[0]).filename(), "app_tests");
}

}  // namespace
