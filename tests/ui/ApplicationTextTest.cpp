// The dialog's texts when the resource files are broken: empty, never an exception that
// would unwind through Qt's event handling.
#include <gtest/gtest.h>

#include <filesystem>

#include "resourcelib/ResourceManagerHolder.h"
#include "support/TestFiles.h"
#include "ui/UpdaterDialogHost.h"

namespace {

TEST(ApplicationText, AMalformedResourceFileGivesAnEmptyText) {
    TestSupport::TempFolder folder("lumetta-broken-texts");
    std::filesystem::create_directories(folder / "en");
    ASSERT_TRUE(TestSupport::WriteFile(
        folder / "Metadata.xml",
        "<ResourceLib><Languages><Language name=\"en\" title=\"English\" locale=\"1033\" "
        "default=\"1\"/></Languages></ResourceLib>"));
    ASSERT_TRUE(TestSupport::WriteFile(folder / "en" / "Resources.xml",
                                       "<ResourceLib><Resources><String name=\"Close\""));
    ASSERT_TRUE(
        AppResources::ResourceManagerHolder::Instance().Initialize(folder.Path().wstring()));

    std::wstring text = L"unchanged";
    EXPECT_NO_THROW(text = UI::ApplicationText(AppResources::StringID_Close));
    EXPECT_EQ(text, L"");
}

}  // namespace
