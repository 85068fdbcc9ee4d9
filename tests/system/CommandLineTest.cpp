#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "system/CommandLine.h"

namespace {

using System::CommandLineToArgv;
using Args = std::vector<std::wstring>;

TEST(CommandLineToArgv, ProgramNameKnowsNoEscapes) {
    EXPECT_EQ(CommandLineToArgv(L"\"C:\\Program Files\\a.exe\" x"),
              (Args{L"C:\\Program Files\\a.exe", L"x"}));
    EXPECT_EQ(CommandLineToArgv(L"C:\\dir\\a.exe\tx  "), (Args{L"C:\\dir\\a.exe", L"x"}));
    // A program quoted only in part ends at the closing quote; what follows belongs to it
    // no longer.
    EXPECT_EQ(CommandLineToArgv(L"\"/opt/a b\"c d"), (Args{L"/opt/a b", L"c", L"d"}));
    EXPECT_EQ(CommandLineToArgv(L"\"/unterminated path"), (Args{L"/unterminated path"}));
    EXPECT_EQ(CommandLineToArgv(L"a\\\"b"), (Args{L"a\\\"b"})) << "no escape in the program";
    EXPECT_EQ(CommandLineToArgv(L"\"\" x"), (Args{L"", L"x"}));
    EXPECT_TRUE(CommandLineToArgv(L"").empty());
    EXPECT_TRUE(CommandLineToArgv(L" \t ").empty());
}

TEST(CommandLineToArgv, QuotesAndBackslashesFollowTheWindowsRules) {
    const std::wstring p = L"p ";
    // The installer's silent arguments: the quotes around !suite vanish.
    EXPECT_EQ(CommandLineToArgv(
                  p + L"/verysilent /norestart /S /SUPPRESSMSGBOXES /COMPONENTS=\"!suite\""),
              (Args{L"p", L"/verysilent", L"/norestart", L"/S", L"/SUPPRESSMSGBOXES",
                    L"/COMPONENTS=!suite"}));
    EXPECT_EQ(CommandLineToArgv(p + L"\"a b\" c\td"), (Args{L"p", L"a b", L"c", L"d"}));
    EXPECT_EQ(CommandLineToArgv(p + L"a\\\\b c\\"), (Args{L"p", L"a\\\\b", L"c\\"}))
        << "backslashes not before a quote are plain";
    EXPECT_EQ(CommandLineToArgv(p + L"a\\\"b"), (Args{L"p", L"a\"b"})) << "1 -> literal quote";
    EXPECT_EQ(CommandLineToArgv(p + L"a\\\\\"b c\""), (Args{L"p", L"a\\b c"}))
        << "2 -> one backslash, then the quote opens";
    EXPECT_EQ(CommandLineToArgv(p + L"a\\\\\\\"b"), (Args{L"p", L"a\\\"b"})) << "3 -> \\\"";
    EXPECT_EQ(CommandLineToArgv(p + L"\"\" \"\""), (Args{L"p", L"", L""})) << "empty arguments";
    EXPECT_EQ(CommandLineToArgv(p + L"\"unterminated arg"), (Args{L"p", L"unterminated arg"}));
}

TEST(CommandLineToArgv, RunsOfQuotes) {
    const std::wstring p = L"p ";
    // Inside quotes, "" is a literal quote and ends the quoting.
    EXPECT_EQ(CommandLineToArgv(p + L"\"a\"\"b\""), (Args{L"p", L"a\"b"}));
    EXPECT_EQ(CommandLineToArgv(p + L"\"a\"\"b c\""), (Args{L"p", L"a\"b", L"c"}));
    // Outside quotes, three quotes give one literal quote.
    EXPECT_EQ(CommandLineToArgv(p + L"\"\"\"a b"), (Args{L"p", L"\"a", L"b"}));
    // Inside, three quotes: a literal quote and quoting goes on.
    EXPECT_EQ(CommandLineToArgv(p + L"\"a\"\"\"b c\" d"), (Args{L"p", L"a\"b c", L"d"}));
    EXPECT_EQ(CommandLineToArgv(p + L"\"\"\"\"\"\""), (Args{L"p", L"\"\""}));
}

TEST(SplitArguments, ParametersWithoutAProgram) {
    using System::SplitArguments;
    EXPECT_EQ(SplitArguments(L""), Args{});
    EXPECT_EQ(SplitArguments(L"  a\tb  "), (Args{L"a", L"b"}));
    EXPECT_EQ(SplitArguments(L"/COMPONENTS=\"!suite\" /S"), (Args{L"/COMPONENTS=!suite", L"/S"}));
    EXPECT_EQ(SplitArguments(L"a\\\\\\\"b c\\d"), (Args{L"a\\\"b", L"c\\d"}));
    // The first word is an argument like the others, not a program without escapes.
    EXPECT_EQ(SplitArguments(L"\"a b\"c d"), (Args{L"a bc", L"d"}));
    // "" inside quotes is a literal quote and ends the quoting.
    EXPECT_EQ(SplitArguments(L"\"a \"\"quoted\"\" word\""), (Args{L"a \"quoted", L"word"}));
}

TEST(CommandLine, QuoteAndBuild) {
    EXPECT_EQ(System::Quote(L"/tmp/setup.exe"), L"\"/tmp/setup.exe\"");
    EXPECT_EQ(System::Quote(L"\"/tmp/setup.exe\""), L"\"/tmp/setup.exe\"") << "not quoted again";
    EXPECT_EQ(System::Quote(L"\""), L"\"\"\"") << "one character is no quoted text";
    EXPECT_EQ(System::Quote(L""), L"\"\"");
    EXPECT_EQ(System::Quote(L"a\"b"), L"\"a\"b\"") << "inner quotes are not escaped";
    EXPECT_EQ(System::Quote(L"'x'", L'\''), L"'x'");

    EXPECT_EQ(System::BuildCommandLine(L"/tmp/setup.exe", L"/S"), L"\"/tmp/setup.exe\" /S");
    EXPECT_EQ(System::BuildCommandLine(L"/tmp/setup.exe", L""), L"\"/tmp/setup.exe\"");
    const std::wstring silent =
        L"/verysilent /norestart /S /SUPPRESSMSGBOXES /COMPONENTS=\"!suite\"";
    ASSERT_EQ(silent.size(), 64u);
    EXPECT_EQ(System::BuildCommandLine(L"/a b/setup.exe", silent), L"\"/a b/setup.exe\" " + silent);
}

}  // namespace
