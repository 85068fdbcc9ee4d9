#include <gtest/gtest.h>

#include <QImage>

#include "GdiFixtures.h"
#include "graphics/Images.h"
#include "support/TestFiles.h"

namespace CommonGuiLib {
namespace {

TEST(ImageLoading, BitmapFilesKeepAlphaOrBecomeOpaque) {
    TestSupport::TempFolder folder;
    QImage translucent(4, 3, QImage::Format_ARGB32);
    translucent.fill(0x80102030u);
    ASSERT_TRUE(translucent.save(QString::fromStdString((folder / "a.png").string()), "PNG"));
    QImage plain(5, 2, QImage::Format_RGB888);
    plain.fill(QColor(10, 20, 30));
    // Named .png but holding a BMP: the content decides.
    ASSERT_TRUE(plain.save(QString::fromStdString((folder / "b.png").string()), "BMP"));
    ASSERT_TRUE(TestSupport::WriteFile(folder / "junk.bmp", "not an image"));

    const SharedBitmap withAlpha = LoadBitmapFromFile((folder / "a.png").wstring());
    EXPECT_EQ(BitmapWidth(withAlpha) * 10 + BitmapHeight(withAlpha), 43);
    EXPECT_EQ(BitmapBitsPerPixel(withAlpha), 32);
    EXPECT_EQ(GetPixelArgb(withAlpha, 3, 2), 0x80102030u);
    EXPECT_EQ(GetPixelArgb(withAlpha, 4, 0), 0u);  // outside
    EXPECT_EQ(GetPixelArgb(LoadBitmapFromFile((folder / "b.png").wstring()), 4, 1), 0xFF0A141Eu);

    for (const std::wstring& path :
         {(folder / "none.bmp").wstring(), (folder / "junk.bmp").wstring(), std::wstring()}) {
        const SharedBitmap none = LoadBitmapFromFile(path);
        ASSERT_TRUE(none);  // a holder, with a null handle
        EXPECT_FALSE(HasHandle(none));
    }
    EXPECT_FALSE(HasHandle(CreateCompatibleBitmap(0, 5)));
    const SharedBitmap blank = CreateCompatibleBitmap(2, 3);
    EXPECT_EQ(GetPixelArgb(blank, 1, 2), 0u);
    SetOpaque(blank);
    EXPECT_EQ(GetPixelArgb(blank, 1, 2), 0xFF000000u);
}

TEST(ImageLoading, IconFilesAtOwnSizeOrScaled) {
    TestSupport::TempFolder folder;
    ASSERT_TRUE(TestSupport::WriteFile(
        folder / "two.ico", GdiFixtures::IcoFile({{16, 0xFF0000FFu}, {32, 0xFF00FF00u}})));
    ASSERT_TRUE(TestSupport::WriteFile(folder / "bad.ico", std::string("\0\0\1\0\5\0", 6)));
    const std::wstring path = (folder / "two.ico").wstring();

    // Size 0 chooses the image for the system's 32 x 32 and keeps its size.
    const SharedIcon own = LoadIconFromFile(path, 0, 0);
    ASSERT_TRUE(HasHandle(own));
    EXPECT_EQ(IconWidth(own) * 100 + IconHeight(own), 3232);
    EXPECT_EQ(own->GetHandle()->pixel(5, 5), 0xFF00FF00u);
    EXPECT_EQ(LoadIconFromFile(path, 16, 16)->GetHandle()->pixel(0, 0), 0xFF0000FFu);
    const SharedIcon scaled = LoadIconFromFile(path, 48, 24);
    EXPECT_EQ(IconWidth(scaled) * 100 + IconHeight(scaled), 4824);
    EXPECT_EQ(scaled->GetHandle()->pixel(20, 10), 0xFF00FF00u);

    // "file,index" picks the image by position and gives the system's icon sizes.
    const SharedIcon first = ExtractIconFromFile(path, 0, true);
    EXPECT_EQ(IconWidth(first), 32);
    EXPECT_EQ(first->GetHandle()->pixel(31, 31), 0xFF0000FFu);
    EXPECT_EQ(IconWidth(ExtractIconFromFile(path, 1, false)), 16);
    EXPECT_FALSE(HasHandle(ExtractIconFromFile(path, 2, true)));
    EXPECT_FALSE(HasHandle(LoadIconFromFile((folder / "bad.ico").wstring(), 0, 0)));
    EXPECT_FALSE(HasHandle(LoadIconFromFile((folder / "none.ico").wstring(), 0, 0)));
}

TEST(ImageLoading, ModuleBitmapsAndGroupIcons) {
    TestSupport::TempFolder folder;
    ASSERT_TRUE(TestSupport::WriteFile(
        folder / "m.res",
        GdiFixtures::ResImage(0xFF336699u, {{16, 0xFFFF0000u}, {32, 0xFF0000FFu}})));
    const std::wstring module = (folder / "m.res").wstring();

    const SharedBitmap bitmap = LoadBitmapResource(7, module);
    EXPECT_EQ(BitmapWidth(bitmap) * 10 + BitmapHeight(bitmap), 32);
    EXPECT_EQ(GetPixelArgb(bitmap, 2, 1), 0xFF336699u);
    EXPECT_TRUE(HasHandle(LoadBitmapResource(L"#7", module)));
    EXPECT_FALSE(HasHandle(LoadBitmapResource(8, module)));
    EXPECT_FALSE(HasHandle(LoadBitmapResource(7, (folder / "none.res").wstring())));

    const SharedIcon icon = LoadIconFromModule(module, 9, 16, 16);
    ASSERT_TRUE(HasHandle(icon));
    EXPECT_EQ(icon->GetHandle()->pixel(3, 3), 0xFFFF0000u);
    EXPECT_EQ(IconWidth(LoadIconFromModule(module, L"#9", 0, 0)), 32);
    EXPECT_EQ(IconHeight(LoadIconFromModule(module, 9, 20, 20)), 20);
    EXPECT_FALSE(HasHandle(LoadIconFromModule(module, 10, 0, 0)));
    EXPECT_EQ(IconWidth(ExtractIconFromFile(module, 0, false)), 16);
}

}  // namespace
}  // namespace CommonGuiLib
