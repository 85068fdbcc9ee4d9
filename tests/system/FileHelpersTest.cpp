#include "system/FileHelpers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "foundation/TextConversion.h"
#include "platform/Environment.h"
#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"
#include "system/GrowingBufferQuery.h"

namespace fs = std::filesystem;

namespace {

class FileFolder : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(folder_.empty()); }
    void Touch(const std::string& name, const std::string& content = "") {
        TestSupport::WriteFile(folder_ / name, content);
    }

    TestSupport::TempFolder temp_{"lumetta-files"};
    const fs::path& folder_ = temp_.Path();
    const std::wstring wide_ = STLHelpers::Utf8ToWide(folder_.string()) + L"/";  // with "/"
};

}  // namespace

TEST(FileHelpers, FolderNameAndExtensionParts) {
    EXPECT_EQ(System::GetLocation(L"/tmp/setup.exe"), L"/tmp/");
    EXPECT_EQ(System::GetLocation(L"/tmp/"), L"/");
    EXPECT_EQ(System::GetLocation(L"/setup"), L"/");
    EXPECT_EQ(System::GetLocation(L"setup.exe"), L"");
    EXPECT_EQ(System::GetLocation(L"a/b"), L"");  // the separator is the second character
    EXPECT_EQ(System::GetLocation(L"ab/c"), L"ab/");
    EXPECT_EQ(System::GetLocation(L""), L"");

    EXPECT_EQ(System::GetFileName(L"/opt/product/run.sh"), L"run.sh");
    EXPECT_EQ(System::GetFileName(L"/opt/product/"), L"product");
    EXPECT_EQ(System::GetFileName(L"plain"), L"plain");
    EXPECT_EQ(System::GetFileName(L""), L"");

    EXPECT_EQ(System::RemoveExtension(L"/a/b.tar.gz"), L"/a/b.tar");
    EXPECT_EQ(System::RemoveExtension(L"/a.d/b"), L"/a.d/b");
    EXPECT_EQ(System::RemoveExtension(L"name.with space"), L"name.with space");
    EXPECT_EQ(System::RemoveExtension(L"noext"), L"noext");

    EXPECT_EQ(System::Canonicalize(L"/a/./b/../c//d/"), L"/a/c/d/");
    EXPECT_EQ(System::Canonicalize(L"/../x"), L"/x");
    EXPECT_EQ(System::Canonicalize(L"../x/./y"), L"../x/y");
    EXPECT_EQ(System::Canonicalize(L"a/.."), L".");
    const std::wstring huge = L"/" + std::wstring(5000, L'a');
    EXPECT_EQ(System::Canonicalize(huge + L"/./b"), huge + L"/./b");  // too long: unchanged
}

TEST_F(FileFolder, AbsolutePathsModuleAndTemporaryFolder) {
    Touch("file.txt");
    EXPECT_EQ(System::MakeAbsolute(L"sub/../x.txt", wide_), wide_ + L"x.txt");
    EXPECT_EQ(System::MakeAbsolute(L"x.txt", wide_ + L"file.txt"), wide_ + L"x.txt");
    EXPECT_EQ(System::MakeAbsolute(L"/etc/./hosts", wide_), L"/etc/hosts");
    const std::wstring relative = System::MakeAbsolute(L"x", L"");
    EXPECT_TRUE(relative.starts_with(L"/")) << relative;

    const std::wstring exe = System::GetModulePath();
    EXPECT_EQ(exe, STLHelpers::Utf8ToWide(fs::read_symlink("/proc/self/exe").string()));
    EXPECT_EQ(System::GetModulePath(reinterpret_cast<const void*>(&System::GetLocation)), exe);
    // A function of a shared library (under a sanitizer, its interceptor) gives that library.
    const std::wstring library = System::GetModulePath(reinterpret_cast<const void*>(&::fopen));
    EXPECT_NE(library.find(L".so"), std::wstring::npos) << library;
    EXPECT_TRUE(fs::is_regular_file(STLHelpers::WideToUtf8(library))) << library;
    EXPECT_EQ(System::GetModuleFolder(), System::GetLocation(exe));

    const TestSupport::ScopedEnvironment savedTmp{"TMPDIR"};
    Platform::SetEnvironment("TMPDIR", folder_.string());
    EXPECT_EQ(System::GetTempFolder(), wide_);
    Platform::SetEnvironment("TMPDIR", (folder_ / "file.txt").string());  // not a folder
    EXPECT_EQ(System::GetTempFolder(), L"/tmp/");

    EXPECT_EQ(System::GetLongPath(wide_ + L"file.txt"), wide_ + L"file.txt");
    EXPECT_EQ(System::GetLongPath(wide_ + L"missing"), wide_ + L"missing");  // reported only
}

TEST_F(FileFolder, CreateFoldersAndUniqueNames) {
    const std::wstring deep = wide_ + L"a/b/c";
    EXPECT_TRUE(System::CreateFolders(deep));
    EXPECT_TRUE(fs::is_directory(folder_ / "a/b/c"));
    const auto stamp = fs::last_write_time(folder_ / "a/b");
    EXPECT_TRUE(System::CreateFolders(deep + L"/"));  // exists: nothing to do
    EXPECT_EQ(fs::last_write_time(folder_ / "a/b"), stamp);
    EXPECT_FALSE(System::CreateFolders(L"no-separator-here-lumetta"));
    Touch("blocker");
    EXPECT_FALSE(System::CreateFolders(wide_ + L"blocker/x"));

    Touch("Update1.exe");
    Touch("Update2.exe");
    EXPECT_EQ(System::MakeUniqueFilePath(wide_, L"Update!.exe"), wide_ + L"Update3.exe");
    EXPECT_EQ(System::MakeUniqueFilePath(wide_, L"setup.exe"), wide_ + L"setup.exe1");
    // A dangling link is taken as existing: it must not be written through.
    fs::create_symlink(folder_ / "nowhere", folder_ / "Update3.exe");
    const std::wstring noSlash = wide_.substr(0, wide_.size() - 1);
    EXPECT_EQ(System::MakeUniqueFilePath(noSlash, L"Update!.exe"), wide_ + L"Update4.exe");
    EXPECT_EQ(System::MakeUniqueFilePath(wide_, L"!-!.log"), wide_ + L"1-1.log");
}

TEST(FileHelpers, SanitizeFileName) {
    auto clean = [](std::wstring name) {
        System::SanitizeFileName(name, L'_');
        return name;
    };
    EXPECT_EQ(clean(L"a<b>:c"), L"a_b__c");
    EXPECT_EQ(clean(L"  name. "), L"name");
    EXPECT_EQ(clean(L"..."), L"___");
    EXPECT_EQ(clean(L""), L"");
    EXPECT_EQ(clean(L"COM1.log"), L"COM1~.log");
    EXPECT_EQ(clean(L"COM10"), L"COM10");
    EXPECT_EQ(clean(L"CON"), L"CON~");
    EXPECT_EQ(clean(L"nul.txt"), L"nul~.txt");
    EXPECT_EQ(clean(L"clock$"), L"clock$~");
    EXPECT_EQ(clean(L"Console"), L"Console");
    EXPECT_EQ(clean(L"a|b\\c?d*e\"f/g\x01h\ti"), L"a_b_c_d_e_f_g_h_i");
    // The device rule looks at the untrimmed name, and control characters are replaced
    // before the trimming, so they stay (as replacements).
    EXPECT_EQ(clean(L" . prn . "), L"prn");
    EXPECT_EQ(clean(L"\t. x .\n"), L"_. x ._");
    EXPECT_EQ(clean(L"\u00e9t\u00e9 \u65e5\u672c"), L"\u00e9t\u00e9 \u65e5\u672c");
}

TEST_F(FileFolder, ReadWholeFile) {
    std::string content(100000, '\0');
    for (size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 7);
    Touch("data.bin", content);
    Touch("empty.bin");
    std::vector<uint8_t> bytes{1, 2, 3};
    ASSERT_TRUE(System::ReadWholeFile(wide_ + L"data.bin", bytes));
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), content);
    EXPECT_TRUE(System::ReadWholeFile(wide_ + L"empty.bin", bytes));
    EXPECT_TRUE(bytes.empty());
    bytes = {1};
    EXPECT_FALSE(System::ReadWholeFile(wide_ + L"missing.bin", bytes));
    EXPECT_TRUE(bytes.empty());
    bytes = {1};
    EXPECT_FALSE(System::ReadWholeFile(wide_, bytes));  // a folder
    EXPECT_TRUE(bytes.empty());
}

TEST(GrowingBufferQuery, GrowsUntilTheTextFitsAndGivesUpOtherwise) {
    const std::wstring text(1000, L'x');
    // A query that truncates and returns the buffer size, as the module-name query does.
    auto truncating = [&](wchar_t* buffer, uint32_t size, uint32_t& error) -> uint32_t {
        std::copy_n(text.begin(), std::min<uint32_t>(size, text.size()), buffer);
        if (text.size() < size) return static_cast<uint32_t>(text.size());
        error = 122;
        return size;
    };
    EXPECT_EQ(System::QueryWithGrowingBuffer(16, 32767, truncating), text);
    // A query that names the size it needs gets it at once; as that fits only without the
    // spare character the pattern keeps, one more call follows.
    int calls = 0;
    auto asking = [&](wchar_t* buffer, uint32_t size, uint32_t&) -> uint32_t {
        ++calls;
        if (text.size() + 1 > size) return static_cast<uint32_t>(text.size() + 1);
        std::copy(text.begin(), text.end(), buffer);
        return static_cast<uint32_t>(text.size());
    };
    EXPECT_EQ(System::QueryWithGrowingBuffer(16, 32767, asking), text);
    EXPECT_EQ(calls, 3);

    // Over the limit, failing, or never settling: no result.
    EXPECT_FALSE(System::QueryWithGrowingBuffer(16, 500, asking));
    uint32_t lastError = 0;
    auto failing = [](wchar_t*, uint32_t, uint32_t& error) -> uint32_t {
        error = 5;
        return 0;
    };
    EXPECT_FALSE(System::QueryWithGrowingBuffer(16, 100, failing, &lastError));
    EXPECT_EQ(lastError, 5u);
    calls = 0;
    auto greedy = [&](wchar_t*, uint32_t size, uint32_t&) -> uint32_t {
        ++calls;
        return size + 1;
    };
    EXPECT_FALSE(System::QueryWithGrowingBuffer(1, 1u << 30, greedy));
    EXPECT_EQ(calls, 10) << "a bounded number of tries";
}
