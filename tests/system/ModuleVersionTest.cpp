#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "foundation/Reporting.h"
#include "support/RecordingSink.h"
#include "system/ModuleVersion.h"

namespace {

std::wstring Fixture(const char* name) {
    const std::string path = std::string(LUMETTA_RES_FIXTURES) + "/" + name;
    return std::wstring(path.begin(), path.end());
}

class ModuleVersionTest : public ::testing::Test {
protected:
    TestSupport::RecordingSink sink;
    const TestSupport::ScopedReportingSink installed{&sink};
};

TEST_F(ModuleVersionTest, FileVersionComesFromTheFirstTranslationInEveryContainer) {
    for (const char* file : {"Versioned_x86.dll", "libVersioned_elf.so"}) {
        SCOPED_TRACE(file);
        // The translation 0x04E40407 selects "\StringFileInfo\040704E4\", not the 040904B0
        // block that comes first and says "9, 9, 9, 9".
        EXPECT_EQ(System::GetDottedFileVersion(Fixture(file)), L"1. 4. 1. 0");
        const System::ModuleVersion version(Fixture(file));
        EXPECT_EQ(version.GetFileVersion(), L"1, 4, 1, 0");
        const wchar_t* product = version.QueryString(L"ProductName");
        ASSERT_NE(product, nullptr);
        EXPECT_STREQ(product, L"Lumetta Test");
        EXPECT_EQ(version.QueryString(L"Comments"), nullptr);
        EXPECT_STREQ(product, L"Lumetta Test") << "earlier values stay valid";
    }
    EXPECT_TRUE(sink.reports.empty());
}

TEST_F(ModuleVersionTest, WithoutTranslationTheDefaultBlockIsRead) {
    EXPECT_EQ(System::GetDottedFileVersion(Fixture("libDotted_elf.so")), L"1.4.1.0");
    EXPECT_TRUE(sink.reports.empty());
}

TEST_F(ModuleVersionTest, MissingVersionGivesEmptyTextsAndGuardedReports) {
    EXPECT_EQ(System::GetDottedFileVersion(Fixture("Plain_x86.dll")), L"");
    EXPECT_EQ(System::GetDottedFileVersion(Fixture("no-such-file.dll")), L"");
    const System::ModuleVersion none(Fixture("Plain_x86.dll"));
    EXPECT_TRUE(none.GetBuffer().empty());
    EXPECT_EQ(none.QueryString(L"FileVersion"), nullptr);
    ASSERT_EQ(sink.reports.size(), 3u);
    for (const auto& [text, level] : sink.reports) {
        EXPECT_EQ(text, L"Code 0x80004005: Unspecified error ((!m_verBuf.empty()))");
        EXPECT_EQ(level, Reporting::GuardedError);
    }

    sink.reports.clear();
    EXPECT_EQ(System::GetDottedFileVersion(L""), L"");
    ASSERT_EQ(sink.reports.size(), 2u);
    EXPECT_EQ(sink.reports[0].first, L"Code 0x80004005: Unspecified error ((!!modulePath))");
    EXPECT_EQ(sink.reports[0].second, Reporting::GuardedError);
}

TEST_F(ModuleVersionTest, FormatTextTruncatesAndNamesBadArguments) {
    EXPECT_EQ(System::FormatText(L"\\StringFileInfo\\%04X%04X\\", 0x0409u, 0x04B0u),
              L"\\StringFileInfo\\040904B0\\");
    EXPECT_EQ(System::FormatText(L"%ls-%d", L"a", 7), L"a-7");
    EXPECT_EQ(System::FormatText(nullptr), L"");

    const std::wstring big(40000, L'x');
    const std::wstring cut = System::FormatText(L"%ls", big.c_str());
    EXPECT_EQ(cut, std::wstring(32767, L'x') + L"... (truncated)");
    const std::wstring exact(32767, L'y');
    EXPECT_EQ(System::FormatText(L"%ls", exact.c_str()), exact);
    EXPECT_TRUE(sink.reports.empty());

    // Narrow text that is no multibyte text of the current locale cannot be formatted.
    EXPECT_EQ(System::FormatText(L"%s!", "\xFF\xFE"), L"%s!... (bad args)");
    ASSERT_EQ(sink.reports.size(), 1u);
    EXPECT_NE(sink.reports[0].first.find(L"((hr))"), std::wstring::npos);
    EXPECT_EQ(sink.reports[0].second, Reporting::Warning);
}

}  // namespace
