// Truncated, corrupt and hostile variants of real resource files: each is refused with an
// error or read within its bounds (AddressSanitizer watches the latter).
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "platform/DialogTemplate.h"
#include "platform/IconGroup.h"
#include "platform/ResourceImage.h"
#include "platform/StringTable.h"
#include "platform/VersionInfo.h"
#include "support/TestFiles.h"

namespace {

using Platform::ResourceImage;
namespace Errors = Platform::ResourceErrors;

std::string Fixture(const std::string& name) {
    return std::string(LUMETTA_RES_FIXTURES) + "/" + name;
}

uint32_t U32(const std::vector<uint8_t>& b, std::size_t at) {
    return b[at] | (b[at + 1] << 8) | (b[at + 2] << 16) | (uint32_t(b[at + 3]) << 24);
}
void PutU32(std::vector<uint8_t>& b, std::size_t at, uint32_t v) {
    for (int i = 0; i < 4; ++i) b[at + i] = static_cast<uint8_t>(v >> (8 * i));
}

// Runs every parser over every resource of a loaded image.
void ExerciseEverything(const ResourceImage& image) {
    for (const auto& entry : image.Entries()) {
        const auto data = image.Data(entry);
        ASSERT_EQ(data.size(), entry.size);
        if (!entry.type.IsNumber()) continue;
        std::u16string text;
        Platform::IconGroup group;
        Platform::DialogTemplate dialog;
        Platform::VersionInfo version;
        Platform::VersionInfo::Value value;
        std::vector<uint8_t> ico;
        switch (entry.type.Number()) {
            case Platform::RT_STRING:
                for (unsigned i = 0; i < 16; ++i) Platform::StringTable::ReadEntry(data, i, text);
                break;
            case Platform::RT_GROUP_ICON:
                if (group.ParseGroup(data) == 0)
                    group.ImageBytes(group.BestImage(32, 32), image, 0);
                Platform::LoadIconFromImage(image, entry.name, 0, 16, 16, ico);
                break;
            case Platform::RT_DIALOG:
                Platform::DialogTemplate::Parse(data, dialog);
                break;
            case Platform::RT_VERSION:
                if (version.Parse(data) == 0) {
                    version.Query(u"\\StringFileInfo\\040704E4\\FileVersion", value);
                    version.Translations();
                    version.AllStrings();
                }
                break;
            default:
                break;
        }
    }
}

const char* const kFiles[] = {"fixture_Versioned.res", "Versioned_x86.dll",
                              "Versioned_x64.dll",     "Versioned_elf32le.o",
                              "Versioned_elf32be.o",   "libVersioned_elf.so"};

// Loads `bytes`: a refusal must leave no entries behind, and what loads is read by every
// parser.
void LoadAndExercise(std::span<const uint8_t> bytes, int& loaded) {
    ResourceImage image;
    if (const uint32_t error = image.LoadBytes(bytes)) {
        ASSERT_TRUE(error == Errors::InvalidData || error == Errors::BadFormat ||
                    error == Errors::NoResourceSection)
            << "length " << bytes.size() << " error " << error;
        ASSERT_TRUE(image.Entries().empty());
    } else {
        ++loaded;
        ExerciseEverything(image);
    }
}

TEST(ResourceCorruption, TruncatedOrDamagedFilesAreRefusedOrReadWithinBounds) {
    std::mt19937 random(20240611);  // a fixed seed: the same damage on every run
    for (const char* file : kFiles) {
        SCOPED_TRACE(file);
        const std::vector<uint8_t> original = TestSupport::ReadBytes(Fixture(file));
        ASSERT_FALSE(original.empty());
        int loaded = 0;
        const std::size_t step = original.size() > 8192 ? 61 : 1;
        for (std::size_t length = 0; length < original.size(); length += step)
            ASSERT_NO_FATAL_FAILURE(LoadAndExercise(std::span(original).first(length), loaded));

        loaded = 0;
        for (int round = 0; round < 1500; ++round) {
            std::vector<uint8_t> bytes = original;
            const int changes = 1 + static_cast<int>(random() % 8);
            for (int i = 0; i < changes; ++i) {
                // Damage the interesting part more often: headers and resource data.
                const std::size_t at = random() % 2
                                           ? random() % std::min<std::size_t>(bytes.size(), 2048)
                                           : random() % bytes.size();
                bytes[at] = static_cast<uint8_t>(random() % 3 == 0 ? 0xFF : random());
            }
            ASSERT_NO_FATAL_FAILURE(LoadAndExercise(bytes, loaded));
        }
        EXPECT_GT(loaded, 0) << "some damage falls where it harms nothing";
    }
}

// The raw file offset of a PE file's ".rsrc" section.
std::size_t ResourceSectionOffset(const std::vector<uint8_t>& pe) {
    const uint32_t peOffset = U32(pe, 0x3C);
    const uint16_t sections = pe[peOffset + 6] | (pe[peOffset + 7] << 8);
    const uint16_t optionalSize = pe[peOffset + 20] | (pe[peOffset + 21] << 8);
    for (uint16_t i = 0; i < sections; ++i) {
        const std::size_t at = peOffset + 24 + optionalSize + i * 40;
        if (std::memcmp(&pe[at], ".rsrc", 6) == 0) return U32(pe, at + 20);
    }
    return 0;
}

TEST(ResourceCorruption, HostilePeDirectoriesAreRefused) {
    for (const char* file : {"Versioned_x86.dll", "Versioned_x64.dll"}) {
        SCOPED_TRACE(file);
        const std::vector<uint8_t> original = TestSupport::ReadBytes(Fixture(file));
        const std::size_t rsrc = ResourceSectionOffset(original);
        ASSERT_NE(rsrc, 0u);
        const uint32_t pe = U32(original, 0x3C);
        // Follow type 0, name 0, language 0 to its data entry.
        const uint32_t names = U32(original, rsrc + 16 + 4) & 0x7FFFFFFF;
        const uint32_t languages = U32(original, rsrc + names + 16 + 4) & 0x7FFFFFFF;
        const uint32_t dataEntry = U32(original, rsrc + languages + 16 + 4);
        ASSERT_EQ(dataEntry & 0x80000000u, 0u);

        const std::pair<const char*, std::function<void(std::vector<uint8_t>&)>> damages[] = {
            {"a subdirectory that is the root again",
             [&](auto& b) { PutU32(b, rsrc + 16 + 4, 0x80000000u); }},
            {"two types sharing one name directory",
             [&](auto& b) { PutU32(b, rsrc + 24 + 4, U32(b, rsrc + 16 + 4)); }},
            {"data beyond every section",
             [&](auto& b) { PutU32(b, rsrc + dataEntry, 0x7FFFFFF0u); }},
            {"a size past the end", [&](auto& b) { PutU32(b, rsrc + dataEntry + 4, 0xFFFFFFF0u); }},
            {"a data entry where a directory belongs",
             [&](auto& b) { PutU32(b, rsrc + 16 + 4, dataEntry); }},
            {"more entries than the section holds",
             [&](auto& b) { b[rsrc + 14] = b[rsrc + 15] = 0xFF; }},
            {"a section table past the end", [&](auto& b) { b[pe + 6] = b[pe + 7] = 0xFF; }},
            {"a PE header offset past the end", [&](auto& b) { PutU32(b, 0x3C, 0xFFFFFFF0u); }}};
        for (const auto& [what, damage] : damages) {
            std::vector<uint8_t> bytes = original;
            damage(bytes);
            ResourceImage image;
            EXPECT_EQ(image.LoadBytes(bytes), Errors::InvalidData) << what;
        }
    }
}

TEST(ResourceCorruption, HostileResAndElfHeadersAreRefused) {
    const std::vector<uint8_t> res = TestSupport::ReadBytes(Fixture("fixture_Versioned.res"));
    const std::vector<uint8_t> elf = TestSupport::ReadBytes(Fixture("libVersioned_elf.so"));
    ASSERT_EQ(elf[4], 2);  // 64-bit
    const uint8_t unterminated[] = {0, 0, 0, 0, 16, 0, 0, 0, 'A', 0, 'B', 0, 'C', 0, 'D', 0};
    struct Damage {
        const char* what;
        const std::vector<uint8_t>& original;
        std::function<void(std::vector<uint8_t>&)> apply;
        uint32_t error = Errors::InvalidData;
    };
    const Damage damages[] = {
        {"res: entry data size", res, [](auto& b) { PutU32(b, 32, 0xFFFFFFF0u); }},
        {"res: entry header size", res, [](auto& b) { PutU32(b, 36, 0xFFFFFFF0u); }},
        {"res: header too small to hold itself", res, [](auto& b) { PutU32(b, 36, 4); }},
        {"res: name not terminated inside its header", res,
         [&](auto& b) {
             b.resize(32);
             b.insert(b.end(), std::begin(unterminated), std::end(unterminated));
         }},
        {"elf: section table past the end", elf, [](auto& b) { PutU32(b, 0x28, 0xFFFFFF00u); }},
        {"elf: names section beyond the table", elf, [](auto& b) { b[0x3E] = 0xF0, b[0x3F] = 0; }},
        {"elf: section header entries too small", elf, [](auto& b) { b[0x3A] = 8; }},
        {"elf: unknown class", elf, [](auto& b) { b[4] = 7; }, Errors::BadFormat}};
    for (const Damage& damage : damages) {
        std::vector<uint8_t> bytes = damage.original;
        damage.apply(bytes);
        ResourceImage image;
        EXPECT_EQ(image.LoadBytes(bytes), damage.error) << damage.what;
    }
}

}  // namespace
