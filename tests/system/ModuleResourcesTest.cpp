#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "system/ModuleResources.h"

namespace {

using Platform::ResourceName;

std::wstring Fixture(const char* name) {
    const std::string path = std::string(LUMETTA_RES_FIXTURES) + "/" + name;
    return std::wstring(path.begin(), path.end());
}

TEST(ModuleResources, TheExecutableCarriesTheProductStringTable) {
    bool found = false;
    EXPECT_EQ(System::LoadStringResource(131, {}, 0, &found), L"LumettaPlayer.exe");
    EXPECT_TRUE(found);
    // 129, 130 and 136 are shown with the product configuration built on them.
    const std::wstring host = System::LoadStringResource(132);
    EXPECT_FALSE(host.empty());
    EXPECT_EQ(host.find(L"://"), std::wstring::npos) << "a host name, without scheme";
    EXPECT_EQ(System::LoadStringResource(134).rfind(L"http://", 0), 0u);
    // The language falls back to what exists.
    EXPECT_EQ(System::LoadStringResource(131, {}, 0x0407), L"LumettaPlayer.exe");

    for (uint32_t missing : {133u, 135u, 1u, 70000u}) {
        found = true;
        EXPECT_EQ(System::LoadStringResource(missing, {}, 0, &found), L"") << missing;
        EXPECT_FALSE(found);
    }

    // Dialog 102 and icon 128 are there for the progress dialog.
    EXPECT_TRUE(System::FindModuleResource({}, 102, Platform::RT_DIALOG));
    EXPECT_TRUE(System::FindModuleResource({}, 128, Platform::RT_GROUP_ICON));
    EXPECT_EQ(System::GetModuleResources({}), System::GetModuleResources({})) << "read once";
}

TEST(ModuleResources, OtherModulesAreNamedByPath) {
    const std::wstring dll = Fixture("Versioned_x86.dll");
    bool found = false;
    EXPECT_EQ(System::LoadStringResource(131, dll, 0x0407, &found), L"Deutsch.exe");
    EXPECT_TRUE(found);
    EXPECT_EQ(System::LoadStringResource(131, dll, 0x040C), L"Francais.exe");
    // fr-CA: no French-neutral block, so the neutral one, not a sibling sub-language.
    EXPECT_EQ(System::LoadStringResource(131, dll, 0x0C0C), L"Neutral.exe");
    EXPECT_EQ(System::LoadStringResource(131, dll), L"Neutral.exe");
    EXPECT_EQ(System::LoadStringResource(131, Fixture("nothing-here.dll"), 0, &found), L"");
    EXPECT_FALSE(found);

    std::vector<uint8_t> data{1, 2, 3};
    ASSERT_TRUE(System::LoadModuleResource(dll, 10003, ResourceName(u"BINARY"), data));
    EXPECT_EQ(std::string(data.begin(), data.end()), "0123456789AB");
    ASSERT_TRUE(System::LoadModuleResource(Fixture("libVersioned_elf.so"), ResourceName(u"logo"),
                                           ResourceName(u"binary"), data));
    EXPECT_EQ(std::string(data.begin(), data.end()), "xyz");
    EXPECT_FALSE(System::LoadModuleResource(dll, 10004, ResourceName(u"BINARY"), data));
    EXPECT_TRUE(data.empty());

    const System::ModuleResource version = System::FindModuleResource(dll, 1, Platform::RT_VERSION);
    ASSERT_TRUE(version);
    EXPECT_EQ(version.data.size(), version.entry->size);

    uint32_t error = 0;
    EXPECT_EQ(System::GetModuleResources(Fixture("nothing-here.dll"), &error), nullptr);
    EXPECT_EQ(error, 2u);
}

}  // namespace
