#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "system/CommandLine.h"

namespace {

using Args = std::vector<std::wstring>;

TEST(CommandLineToArgv, FollowsTheWindowsRules) {
    const std::pair<std::wstring, Args> cases[] = {
        // The program name knows no escapes and ends at its closing quote.
        {L"\"C:\\Program Files\\a.exe\" x", {L"C:\\Program Files\\a.exe", L"x"}},
        {L"C:\\dir\\a.exe\tx  ", {L"C:\\dir\\a.exe", L"x"}},
        {L"\"/opt/a b\"c d", {L"/opt/a b", L"c", L"d"}},
        {L"\"/unterminated path", {L"/unterminated path"}},
        {L"a\\\"b", {L"a\\\"b"}},
        {L"\"\" x", {L"", L"x"}},
        {L"", {}},
        {L" \t ", {}},
        // The installer's silent arguments: the quotes around !suite vanish.
        {L"p /verysilent /norestart /S /SUPPRESSMSGBOXES /COMPONENTS=\"!suite\"",
         {L"p", L"/verysilent", L"/norestart", L"/S", L"/SUPPRESSMSGBOXES", L"/COMPONENTS=!suite"}},
        {L"p \"a b\" c\td", {L"p", L"a b", L"c", L"d"}},
        // Backslashes: plain unless before a quote; 1 -> literal quote, 2 -> one backslash and
        // the quote opens, 3 -> backslash and literal quote.
        {L"p a\\\\b c\\", {L"p", L"a\\\\b", L"c\\"}},
        {L"p a\\\"b", {L"p", L"a\"b"}},
        {L"p a\\\\\"b c\"", {L"p", L"a\\b c"}},
        {L"p a\\\\\\\"b", {L"p", L"a\\\"b"}},
        {L"p \"\" \"\"", {L"p", L"", L""}},
        {L"p \"unterminated arg", {L"p", L"unterminated arg"}},
        // Runs of quotes: inside, "" is a literal quote and ends the quoting; outside, three
        // give one literal quote; inside, three give a literal quote and quoting goes on.
        {L"p \"a\"\"b\"", {L"p", L"a\"b"}},
        {L"p \"a\"\"b c\"", {L"p", L"a\"b", L"c"}},
        {L"p \"\"\"a b", {L"p", L"\"a", L"b"}},
        {L"p \"a\"\"\"b c\" d", {L"p", L"a\"b c", L"d"}},
        {L"p \"\"\"\"\"\"", {L"p", L"\"\""}},
    };
    for (const auto& [line, args] : cases)
        EXPECT_EQ(System::CommandLineToArgv(line), args) << std::string(line.begin(), line.end());

    // Without a program the first word is an argument like the others (the rules for
    // arguments are those above).
    using System::SplitArguments;
    EXPECT_EQ(SplitArguments(L""), Args{});
    EXPECT_EQ(SplitArguments(L"  a\tb  "), (Args{L"a", L"b"}));
    EXPECT_EQ(SplitArguments(L"\"a b\"c d"), (Args{L"a bc", L"d"}));
}

TEST(CommandLine, QuoteAndBuild) {
    EXPECT_EQ(System::Quote(L"/tmp/setup.exe"), L"\"/tmp/setup.exe\"");
    EXPECT_EQ(System::Quote(L"\"/tmp/setup.exe\""), L"\"/tmp/setup.exe\"") << "not quoted again";
    EXPECT_EQ(System::Quote(L"\""), L"\"\"\"") << "one character is no quoted text";
    EXPECT_EQ(System::Quote(L""), L"\"\"");
    EXPECT_EQ(System::Quote(L"a\"b"), L"\"a\"b\"") << "inner quotes are not escaped";
    EXPECT_EQ(System::Quote(L"'x'", L'\''), L"'x'");

    EXPECT_EQ(System::BuildCommandLine(L"/tmp/setup.exe", L""), L"\"/tmp/setup.exe\"");
    const std::wstring silent =
        L"/verysilent /norestart /S /SUPPRESSMSGBOXES /COMPONENTS=\"!suite\"";
    EXPECT_EQ(System::BuildCommandLine(L"/a b/setup.exe", silent), L"\"/a b/setup.exe\" " + silent);
}

}  // namespace
