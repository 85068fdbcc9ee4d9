// The resource reader over files made by llvm-rc, llvm-cvtres + lld-link, llvm-objcopy and
// our CMake helper: every container must give the same resources.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <tuple>
#include <vector>

#include "platform/ResourceImage.h"
#include "platform/StringTable.h"
#include "platform/Utf16Text.h"
#include "support/TestFiles.h"

namespace {

using Platform::ResourceImage;
using Platform::ResourceName;

std::string Fixture(const std::string& name) {
    return std::string(LUMETTA_RES_FIXTURES) + "/" + name;
}

struct Container {
    const char* file;
    ResourceImage::Format format;
};

const Container kVersionedContainers[] = {
    {"fixture_Versioned.res", ResourceImage::Format::Res},
    {"libVersioned_elf.so", ResourceImage::Format::Elf},
    {"Versioned_elf32le.o", ResourceImage::Format::Elf},
    {"Versioned_elf32be.o", ResourceImage::Format::Elf},
    {"Versioned_x86.dll", ResourceImage::Format::Pe32},
    {"Versioned_x64.dll", ResourceImage::Format::Pe64},
};

// (type, name, language, bytes) of every entry, in a fixed order.
using Summary = std::vector<std::tuple<std::string, std::string, uint16_t, std::vector<uint8_t>>>;

Summary Summarise(const ResourceImage& image) {
    Summary out;
    for (const auto& entry : image.Entries()) {
        const auto data = image.Data(entry);
        out.emplace_back((entry.type.IsNumber() ? "#" : "") + entry.type.ToUtf8(),
                         (entry.name.IsNumber() ? "#" : "") + entry.name.ToUtf8(), entry.language,
                         std::vector<uint8_t>(data.begin(), data.end()));
    }
    std::sort(out.begin(), out.end());
    return out;
}

TEST(ResourceImage, EveryContainerGivesTheResourcesOfTheCompiledScript) {
    ResourceImage reference;
    ASSERT_EQ(reference.LoadFile(Fixture("fixture_Versioned.res")), 0u);
    const Summary expected = Summarise(reference);
    ASSERT_EQ(expected.size(), 16u);

    for (const Container& container : kVersionedContainers) {
        SCOPED_TRACE(container.file);
        ResourceImage image;
        ASSERT_EQ(image.LoadFile(Fixture(container.file)), 0u);
        EXPECT_EQ(image.GetFormat(), container.format);
        EXPECT_EQ(Summarise(image), expected);

        // The same from memory.
        ResourceImage fromBytes;
        const std::vector<uint8_t> bytes = TestSupport::ReadBytes(Fixture(container.file));
        ASSERT_EQ(fromBytes.LoadBytes(bytes), 0u);
        EXPECT_EQ(Summarise(fromBytes), expected);

        const auto binary = image.FindData(ResourceName(u"BINARY"), 10003);
        EXPECT_EQ(std::string(binary.begin(), binary.end()), "0123456789AB");
        // Names and custom types compare without regard to case; "#10003" is the number.
        EXPECT_EQ(image.FindData(ResourceName(u"binary"), ResourceName(u"logo")).size(), 3u);
        EXPECT_EQ(
            image.FindData(ResourceName::Parse(u"BINARY"), ResourceName::Parse(u"#10003")).size(),
            12u);
    }
}

TEST(ResourceImage, LanguageFallsBackToPrimaryThenNeutralThenAny) {
    // Every container gives the same entries (above), so one suffices here.
    ResourceImage image;
    ASSERT_EQ(image.LoadFile(Fixture("libVersioned_elf.so")), 0u);
    std::u16string text;
    auto load = [&](uint16_t id, uint16_t language) {
        Platform::StringTable::Load(image, id, language, text);
        return Platform::Utf8FromUtf16(text);
    };
    EXPECT_EQ(load(131, 0x0407), "Deutsch.exe");         // exact
    EXPECT_EQ(load(131, 0x0807), "DeutschNeutral.exe");  // de-CH: primary language
    EXPECT_EQ(load(131, 0x0409), "Neutral.exe");         // en-US: neutral
    EXPECT_EQ(load(131, 0x0000), "Neutral.exe");
    EXPECT_EQ(load(131, 0x040C), "Francais.exe");
    EXPECT_EQ(load(300, 0x0409), "Nur franz\xC3\xB6sisch");  // only French exists: any
    // Block 9 holds ids 128..143, block 10 begins with 144.
    EXPECT_EQ(load(143, 0), "last of block 9");
    EXPECT_EQ(load(144, 0), "first of block 10");

    // An entry without text, and a block that does not exist, are not found.
    EXPECT_FALSE(Platform::StringTable::Load(image, 130, 0, text));
    EXPECT_TRUE(text.empty());
    EXPECT_FALSE(Platform::StringTable::Load(image, 4000, 0, text));

    uint32_t error = 0;
    EXPECT_EQ(image.Find(Platform::RT_MENU, 1, 0, &error), nullptr);
    EXPECT_EQ(error, Platform::ResourceErrors::TypeNotFound);
    EXPECT_EQ(image.Find(Platform::RT_STRING, 77, 0, &error), nullptr);
    EXPECT_EQ(error, Platform::ResourceErrors::NameNotFound);
    EXPECT_NE(image.Find(Platform::RT_STRING, 9, 0x0407, &error), nullptr);
    EXPECT_EQ(error, 0u);
}

TEST(ResourceImage, FilesThatCarryNoResourcesAreRefusedWithTheirReason) {
    ResourceImage image;
    EXPECT_EQ(image.LoadFile(Fixture("does-not-exist.res")), 2u);
    EXPECT_EQ(image.LoadFile(LUMETTA_RES_FIXTURES), 5u);
    EXPECT_EQ(image.LoadFile(Fixture("CMakeFiles/../cmake_install.cmake")),
              Platform::ResourceErrors::BadFormat);
    EXPECT_EQ(image.GetFormat(), ResourceImage::Format::None);
    EXPECT_TRUE(image.Entries().empty());

    // An ELF file without the section.
    EXPECT_EQ(image.LoadFile("/bin/sh"), Platform::ResourceErrors::NoResourceSection);

    // A PE file whose resource directory entry is cleared.
    std::vector<uint8_t> pe = TestSupport::ReadBytes(Fixture("Versioned_x64.dll"));
    const uint32_t peOffset = pe[0x3C] | (pe[0x3D] << 8);
    std::fill_n(pe.begin() + peOffset + 24 + 112 + 16, 8, 0);
    EXPECT_EQ(image.LoadBytes(pe), Platform::ResourceErrors::NoResourceSection);

    // Empty input, and a .res image with nothing but the compiler's empty entry.
    EXPECT_EQ(image.LoadBytes({}), Platform::ResourceErrors::BadFormat);
    const std::vector<uint8_t> res = TestSupport::ReadBytes(Fixture("fixture_Plain.res"));
    ASSERT_EQ(image.LoadBytes(std::span(res).first(32)), 0u);
    EXPECT_EQ(image.GetFormat(), ResourceImage::Format::Res);
    EXPECT_TRUE(image.Entries().empty());
}

TEST(Utf16Text, SurrogatePairsDecodeAndStrayHalvesBecomeReplacementCharacters) {
    EXPECT_EQ(Platform::WideFromUtf16(u"a\U0001F600b"), L"a\U0001F600b");
    EXPECT_EQ(
        Platform::WideFromUtf16(std::u16string{u'x', char16_t(0xD800), u'y', char16_t(0xDC00)}),
        L"x\uFFFDy\uFFFD");
    EXPECT_EQ(Platform::Utf16FromWide(L"\U0001F600\u00E9"), u"\U0001F600\u00E9");
    EXPECT_EQ(Platform::Utf8FromUtf16(u"\u00E9\U0001F600"), "\xC3\xA9\xF0\x9F\x98\x80");
}

}  // namespace
