#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/TestFiles.h"
#include "system/ModuleVersion.h"

namespace {

namespace fs = std::filesystem;
using TestSupport::CommandOutput;
using TestSupport::ReadFile;
using TestSupport::RunProgram;

CommandOutput Stamp(const std::string& file, std::vector<std::string> options) {
    options.insert(options.begin(), {LUMETTA_DIAG, "stamp", file});
    return RunProgram(options);
}

std::string Resources(const std::string& file) {
    return RunProgram({LUMETTA_DIAG, "res", file}).out;
}

std::size_t Count(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

// A program built elsewhere gets a version that the updater reads, and still runs; stamping
// again replaces the version and nothing else.
TEST(StampCommand, StampsAForeignProgramAndRestampsIt) {
    const TestSupport::TempFolder temp{"lumetta-stamp"};
    const std::string program = (temp / "true").string();
    fs::copy_file("/bin/true", program);

    CommandOutput run = Stamp(program, {"--version", "1.2.3.4", "--company", "Acme Ltd",
                                        "--product", "Road Runner", "--description", "Beep"});
    ASSERT_EQ(run.exitCode, 0) << run.out;
    EXPECT_EQ(RunProgram({program}).exitCode, 0) << "the stamped program still runs";
    EXPECT_EQ(System::GetDottedFileVersion(temp.Path().wstring() + L"/true"), L"1.2.3.4");
    std::string listing = Resources(program);
    for (const char* expected :
         {"file version 1.2.3.4, product version 1.2.3.4", "translation 0x04B00409",
          "040904B0 CompanyName = Acme Ltd", "040904B0 FileDescription = Beep",
          "040904B0 ProductName = Road Runner", "040904B0 ProductVersion = 1.2.3.4"})
        EXPECT_NE(listing.find(expected), std::string::npos) << expected << "\n" << listing;

    ASSERT_EQ(Stamp(program, {"--version", "2.0.0.65535"}).exitCode, 0);
    listing = Resources(program);
    EXPECT_EQ(Count(listing, "RT_VERSION"), 1u) << listing;
    EXPECT_NE(listing.find("FileVersion = 2.0.0.65535"), std::string::npos) << listing;
    EXPECT_EQ(listing.find("Acme"), std::string::npos) << "the old strings went with it";
    EXPECT_EQ(RunProgram({program}).exitCode, 0);
}

// The tool itself carries the updater's string table and dialog: they stay.
TEST(StampCommand, KeepsTheOtherResources) {
    const TestSupport::TempFolder temp{"lumetta-stamp"};
    const std::string copy = (temp / "diag").string();
    fs::copy_file(LUMETTA_DIAG, copy);
    ASSERT_EQ(Stamp(copy, {"--version", "9.8.7.6"}).exitCode, 0);
    EXPECT_EQ(RunProgram({copy, "res", copy, "--string", "131"}).out, "LumettaPlayer.exe\n")
        << "the stamped copy runs and keeps its strings";
    const std::string listing = Resources(copy);
    EXPECT_NE(listing.find("ELF file, 6 resources"), std::string::npos) << listing;
    EXPECT_NE(listing.find("FileVersion = 9.8.7.6"), std::string::npos) << listing;
}

// Whatever is wrong, the file is left as it was, byte for byte and mode, and no temporary
// file stays beside it.
TEST(StampCommand, RefusesBadInputAndLeavesTheFileAlone) {
    const TestSupport::TempFolder temp{"lumetta-stamp"};
    const std::string program = (temp / "program").string();
    const std::string object = (temp / "object.o").string();
    const std::string text = (temp / "notes.txt").string();
    const std::string readOnly = (temp / "read-only").string();
    fs::copy_file("/bin/true", program);
    std::string relocatable = ReadFile("/bin/true");
    relocatable[16] = 1;  // ET_REL: an object file, not a program
    ASSERT_TRUE(TestSupport::WriteFile(object, relocatable));
    ASSERT_TRUE(TestSupport::WriteFile(text, "#!/bin/sh\necho hello\n"));
    fs::copy_file("/bin/true", readOnly);
    ::chmod(readOnly.c_str(), 0555);

    struct Case {
        std::string file, version;
        int exitCode;
        std::string message;
    };
    const Case cases[] = {
        {program, "1.2.3", 2, "\"1.2.3\" is not a version"},
        {program, "1.2.3.4.5", 2, "is not a version"},
        {program, "1.2.3.65536", 2, "is not a version"},
        {program, "1.2.-3.4", 2, "is not a version"},
        {program, "1..2.3", 2, "is not a version"},
        {program, " 1.2.3.4", 2, "is not a version"},
        {text, "1.0.0.0", 1, "\"" + text + "\" is not an ELF executable or shared library."},
        {object, "1.0.0.0", 1, "\"" + object + "\" is not an ELF executable or shared library."},
        {readOnly, "1.0.0.0", 1, "\"" + readOnly + "\" is read-only."},
        {(temp / "missing").string(), "1.0.0.0", 1, "(error 2)"},
    };
    for (const Case& c : cases) {
        const std::string before = ReadFile(c.file);
        struct stat was {
        }, is{};
        ::stat(c.file.c_str(), &was);
        const CommandOutput run = Stamp(c.file, {"--version", c.version});
        EXPECT_EQ(run.exitCode, c.exitCode) << c.file << " " << c.version << "\n" << run.out;
        EXPECT_NE(run.out.find(c.message), std::string::npos) << c.message << "\n" << run.out;
        EXPECT_EQ(ReadFile(c.file), before) << c.file;
        ::stat(c.file.c_str(), &is);
        EXPECT_EQ(is.st_mode, was.st_mode) << c.file;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(temp.Path()), fs::directory_iterator()), 4);
}

}  // namespace
