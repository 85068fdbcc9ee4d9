// The resource types on top of the reader: icons, dialog templates, version information
// and bitmaps, from files the real tools made and from hand-made hostile variants.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "platform/BitmapResource.h"
#include "platform/DialogTemplate.h"
#include "platform/IconGroup.h"
#include "platform/ResourceImage.h"
#include "platform/Utf16Text.h"
#include "platform/VersionInfo.h"
#include "support/TestFiles.h"

namespace {

using namespace Platform;

std::string Fixture(const std::string& name) {
    return std::string(LUMETTA_RES_FIXTURES) + "/" + name;
}

ResourceImage Load(const std::string& path) {
    ResourceImage image;
    EXPECT_EQ(image.LoadFile(path), 0u) << path;
    return image;
}

TEST(IconGroup, BestImageAndExtractionFromGroupsAndIcoFiles) {
    const ResourceImage updater = Load(LUMETTA_UPDATER_RES);
    IconGroup group;
    ASSERT_EQ(group.ParseGroup(updater.FindData(RT_GROUP_ICON, 128)), 0u);
    ASSERT_EQ(group.Images().size(), 2u);
    // On a tie (24) the larger image scales down.
    for (const auto& [asked, best] : {std::pair{16, 16}, {32, 32}, {20, 16}, {24, 32}, {256, 32}})
        EXPECT_EQ(group.Images()[group.BestImage(asked, asked)].width, best) << asked;
    EXPECT_EQ(IconGroup().BestImage(16, 16), -1);

    // The image as a one-image .ico, whose bytes are those of the RT_ICON resource.
    std::vector<uint8_t> ico;
    ASSERT_EQ(LoadIconFromImage(updater, 128, 0, 32, 32, ico), 0u);
    IconGroup single;
    ASSERT_EQ(single.ParseIcoFile(ico), 0u);
    ASSERT_EQ(single.Images().size(), 1u);
    EXPECT_EQ(single.Images()[0].width, 32);
    EXPECT_EQ(single.Images()[0].bitCount, 32);
    const auto image = single.ImageBytes(0, ico);
    const auto resource = group.ImageBytes(group.BestImage(32, 32), updater, 0);
    EXPECT_TRUE(std::equal(image.begin(), image.end(), resource.begin(), resource.end()));
    EXPECT_EQ(LoadIconFromImage(updater, 129, 0, 32, 32, ico), ResourceErrors::NameNotFound);

    // "file,index": groups in directory order (named first); every container reads alike.
    const std::string module = Fixture("libVersioned_elf.so");
    ASSERT_EQ(ExtractIconFromFile(module, 0, 16, 16, ico), 0u);
    ASSERT_EQ(single.ParseIcoFile(ico), 0u);
    EXPECT_EQ(single.Images()[0].width, 16);
    EXPECT_EQ(ExtractIconFromFile(module, 1, 32, 32, ico), 0u);
    EXPECT_EQ(ExtractIconFromFile(module, 2, 32, 32, ico), ResourceErrors::NameNotFound);
    EXPECT_EQ(ExtractIconFromFile(Fixture("Plain_x64.dll"), 0, 32, 32, ico),
              ResourceErrors::NameNotFound);

    // An .ico file: image `index` itself.
    std::string icoPath = LUMETTA_UPDATER_RES;
    icoPath = icoPath.substr(0, icoPath.rfind('/')) + "/Updater.ico";
    ASSERT_EQ(ExtractIconFromFile(icoPath, 1, 16, 16, ico), 0u);
    ASSERT_EQ(single.ParseIcoFile(ico), 0u);
    EXPECT_EQ(single.Images()[0].width, 32);
    EXPECT_EQ(ExtractIconFromFile(icoPath, 2, 16, 16, ico), ResourceErrors::NameNotFound);
    EXPECT_EQ(ExtractIconFromFile(Fixture("missing.ico"), 0, 16, 16, ico), 2u);

    // An .ico whose image lies past the end, or whose directory is cut short.
    std::vector<uint8_t> file = TestSupport::ReadBytes(icoPath);
    IconGroup hostile;
    std::vector<uint8_t> bad = file;
    bad[6 + 12] = 0xFF;  // first image offset
    bad[6 + 15] = 0x7F;
    EXPECT_EQ(hostile.ParseIcoFile(bad), ResourceErrors::InvalidData);
    EXPECT_EQ(hostile.ParseIcoFile(std::span(file).first(20)), ResourceErrors::InvalidData);
    EXPECT_EQ(hostile.ParseIcoFile(std::span(file).first(3)), ResourceErrors::BadFormat);
    EXPECT_TRUE(hostile.ImageBytes(5, file).empty());
}

TEST(DialogTemplate, TheProgressDialogReadsBackAsWritten) {
    const ResourceImage updater = Load(LUMETTA_UPDATER_RES);
    DialogTemplate dialog;
    ASSERT_EQ(DialogTemplate::Parse(updater.FindData(RT_DIALOG, 102), dialog), 0u);
    EXPECT_TRUE(dialog.extended);
    EXPECT_EQ(dialog.style, WS_POPUP | WS_VISIBLE | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME |
                                DS_SETFONT | DS_FIXEDSYS);
    EXPECT_EQ(dialog.exStyle, WS_EX_APPWINDOW);
    EXPECT_EQ(std::tuple(dialog.cx, dialog.cy, dialog.title),
              std::tuple(320, 81, L"{ProductName} {ComponentName} Installation"));
    EXPECT_TRUE(dialog.hasFont);
    EXPECT_EQ(std::tuple(dialog.pointSize, dialog.typeface, dialog.charSet),
              std::tuple(8, L"MS Shell Dlg", 1));

    // The controls in order, as the dialog code finds them; the layout is the script's.
    struct Expected {
        uint32_t id;
        const wchar_t* cls;
        const wchar_t* text;  // null: an ordinal
        bool visible;
    };
    const Expected expected[] = {{0xFFFFFFFF, L"Static", nullptr, true},
                                 {1001, L"Static", L"Working...", true},
                                 {1000, L"msctls_progress32", L"", true},
                                 {0xFFFFFFFF, L"Static", L"", true},
                                 {1, L"Button", L"Launch {ProductName}", false},
                                 {2, L"Button", L"Cancel Installation", true}};
    ASSERT_EQ(dialog.items.size(), std::size(expected));
    for (std::size_t i = 0; i < dialog.items.size(); ++i) {
        SCOPED_TRACE(i);
        const DialogItem& item = dialog.items[i];
        EXPECT_EQ(item.id, expected[i].id);
        EXPECT_EQ(item.windowClass.text, expected[i].cls);
        if (expected[i].text) {
            EXPECT_EQ(item.title.text, expected[i].text);
        } else {
            EXPECT_TRUE(item.title.isOrdinal);
            EXPECT_EQ(item.title.ordinal, 128) << "the icon control shows icon 128";
        }
        EXPECT_EQ((item.style & WS_VISIBLE) != 0, expected[i].visible);
    }
    // One rectangle, to show the four numbers are read in their order.
    const DialogItem& progress = dialog.items[2];
    EXPECT_EQ(std::tuple(progress.x, progress.y, progress.cx, progress.cy),
              std::tuple(7, 28, 306, 15));

    // Every shorter copy is refused.
    const auto bytes = updater.FindData(RT_DIALOG, 102);
    DialogTemplate cut;
    for (std::size_t length = 0; length + 2 < bytes.size(); ++length)
        ASSERT_EQ(DialogTemplate::Parse(bytes.first(length), cut), ResourceErrors::InvalidData)
            << length;
}

TEST(DialogTemplate, ClassicTemplatesAreReadToo) {
    const ResourceImage image = Load(Fixture("Versioned_x64.dll"));
    DialogTemplate dialog;
    ASSERT_EQ(DialogTemplate::Parse(image.FindData(RT_DIALOG, 7), dialog), 0u);
    EXPECT_FALSE(dialog.extended);
    EXPECT_EQ(std::tuple(dialog.x, dialog.y, dialog.title, dialog.pointSize, dialog.typeface),
              std::tuple(10, 20, L"Classic", 9, L"Tahoma"));
    ASSERT_EQ(dialog.items.size(), 2u);
    EXPECT_EQ(dialog.items[0].windowClass.text + L" " + dialog.items[0].title.text, L"Button OK");
    EXPECT_EQ(dialog.items[1].windowClass.text, L"Edit");
    EXPECT_EQ(dialog.items[1].id, 300u);
}

TEST(VersionInfo, ValuesAreFoundByPathWithTheirTranslation) {
    const ResourceImage image = Load(Fixture("Versioned_x86.dll"));
    VersionInfo info;
    ASSERT_EQ(info.Parse(image.FindData(RT_VERSION, 1)), 0u);
    VersionInfo::FixedFileInfo fixed;
    ASSERT_TRUE(info.GetFixedFileInfo(fixed));
    EXPECT_EQ(fixed.fileVersionMS, 0x00010004u);
    EXPECT_EQ(fixed.fileVersionLS, 0x00010000u);
    EXPECT_EQ(fixed.productVersionMS, 0x00010004u);
    EXPECT_EQ(fixed.fileType, 2u);
    EXPECT_EQ(info.Translations(), (std::vector<uint32_t>{0x04E40407, 0x04B00409}));

    VersionInfo::Value value;
    ASSERT_TRUE(info.Query(u"\\StringFileInfo\\040704E4\\FileVersion", value));
    EXPECT_TRUE(value.isText);
    EXPECT_EQ(value.text, u"1, 4, 1, 0");
    ASSERT_TRUE(info.Query(u"\\stringfileinfo\\040704e4\\productname", value));
    EXPECT_EQ(value.text, u"Lumetta Test");
    ASSERT_TRUE(info.Query(u"\\StringFileInfo\\040904B0\\FileVersion", value));
    EXPECT_EQ(value.text, u"9, 9, 9, 9");
    EXPECT_FALSE(info.Query(u"\\StringFileInfo\\040704E4\\Comments", value));
    EXPECT_FALSE(info.Query(u"\\StringFileInfo\\041104B0\\FileVersion", value));
    ASSERT_TRUE(info.Query(u"\\", value));
    EXPECT_EQ(value.bytes.size(), 52u);
    EXPECT_EQ(info.AllStrings().size(), 3u);
}

TEST(VersionInfo, BlocksOutsideTheirParentOrNestedTooDeepAreRefused) {
    const ResourceImage image = Load(Fixture("fixture_Versioned.res"));
    const auto original = image.FindData(RT_VERSION, 1);
    std::vector<uint8_t> bytes(original.begin(), original.end());
    VersionInfo info;
    bytes[0] = 0xFF;  // root longer than the resource
    bytes[1] = 0xFF;
    EXPECT_EQ(info.Parse(bytes), ResourceErrors::InvalidData);
    EXPECT_TRUE(info.Empty());
    bytes.assign(original.begin(), original.end());
    bytes[2] = 0xFF;  // fixed information longer than the block
    EXPECT_EQ(info.Parse(bytes), ResourceErrors::InvalidData);
    for (std::size_t length = 0; length < 6; ++length)
        EXPECT_EQ(info.Parse(original.first(length)), ResourceErrors::InvalidData);

    // Twenty blocks, each (header, key "K", padding) inside the one before.
    const int depth = 20;
    std::vector<uint8_t> nested;
    for (int i = 0; i < depth; ++i) {
        const uint16_t length = static_cast<uint16_t>((depth - i) * 12);
        const uint8_t block[12] = {
            uint8_t(length), uint8_t(length >> 8), 0, 0, 0, 0, 'K', 0, 0, 0, 0, 0};
        nested.insert(nested.end(), std::begin(block), std::end(block));
    }
    EXPECT_EQ(info.Parse(nested), ResourceErrors::InvalidData);
    EXPECT_EQ(info.Parse(std::span(nested).subspan(12 * (depth - 3))), 0u)
        << "three levels are fine";
}

TEST(BitmapResource, FileHeaderPointsPastHeaderAndColourTable) {
    auto dib = [](uint32_t headerSize, uint16_t bits, uint32_t used, uint32_t compression,
                  std::size_t extra) {
        std::vector<uint8_t> out(headerSize + extra, 0);
        out[0] = static_cast<uint8_t>(headerSize);
        out[4] = 2;  // width
        out[8] = 2;  // height
        out[12] = 1;
        out[14] = static_cast<uint8_t>(bits);
        out[16] = static_cast<uint8_t>(compression);
        out[32] = static_cast<uint8_t>(used);
        out[33] = static_cast<uint8_t>(used >> 8);
        return out;
    };
    auto offBits = [](const std::vector<uint8_t>& bmp) {
        return bmp[10] | (bmp[11] << 8) | (bmp[12] << 16) | (bmp[13] << 24);
    };
    std::vector<uint8_t> bmp;
    ASSERT_EQ(BitmapResource::MakeBmpFile(dib(40, 24, 0, 0, 16), bmp), 0u);
    EXPECT_EQ(std::string(bmp.begin(), bmp.begin() + 2), "BM");
    EXPECT_EQ(bmp.size(), 14u + 56u);
    // The pixels follow the colour table: full for 8 bits, as used, or three masks.
    const std::tuple<uint16_t, uint32_t, uint32_t, std::size_t, int> tables[] = {
        {24, 0, 0, 16, 0},
        {8, 0, 0, 1024 + 8, 1024},
        {8, 3, 0, 12 + 8, 12},
        {32, 0, 3, 12 + 16, 12}};
    for (const auto& [bits, used, compression, extra, table] : tables) {
        ASSERT_EQ(BitmapResource::MakeBmpFile(dib(40, bits, used, compression, extra), bmp), 0u);
        EXPECT_EQ(offBits(bmp), 54 + table) << bits << " bits, " << used << " used";
    }

    EXPECT_EQ(BitmapResource::MakeBmpFile(dib(40, 8, 0, 0, 100), bmp), ResourceErrors::InvalidData);
    EXPECT_TRUE(bmp.empty());
    EXPECT_EQ(BitmapResource::MakeBmpFile(dib(40, 8, 0xFFFF, 0, 8), bmp),
              ResourceErrors::InvalidData);
    EXPECT_EQ(BitmapResource::MakeBmpFile(std::vector<uint8_t>(20, 0), bmp),
              ResourceErrors::InvalidData);
}

}  // namespace
