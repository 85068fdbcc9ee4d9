// Windows-style command lines: the one splitter with the rules of CommandLineToArgvW, and
// the builder that puts a program and its arguments together.
//
// Thread safety: pure functions, any thread. They throw nothing but std::bad_alloc.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace System {

// Splits a whole command line (program first) into arguments:
// - The program ends at the next double quote when it starts with one (the quotes are
//   dropped, backslashes are plain characters), else at the first blank or tab.
// - Later arguments are separated by blanks and tabs outside quotes. A double quote toggles
//   quoting and is dropped. 2n backslashes before a quote give n backslashes (the quote
//   then toggles); 2n+1 give n backslashes and a literal quote; backslashes elsewhere are
//   plain. In a run of consecutive quotes, each third one is a literal quote, and a run
//   that ends with two quotes pending ends the quoting: `"a""b"` gives `a"b`.
// - An argument written as "" is an empty argument; blanks after the last argument make
//   none.
// An empty or blank command line gives no arguments (where CommandLineToArgvW would return
// the running program's path).
std::vector<std::wstring> CommandLineToArgv(std::wstring_view commandLine);

// Splits the arguments that follow the program (a parameter text without a program) by the
// rules for later arguments above. An empty or blank text gives no arguments.
std::vector<std::wstring> SplitArguments(std::wstring_view arguments);

// `text` in `quoteChar`, unless it already begins and ends with it (and has at least two
// characters). Quote characters inside are not escaped.
std::wstring Quote(std::wstring_view text, wchar_t quoteChar = L'"');

// The command line that starts `path` with `arguments`: the path in double quotes, then,
// when there are arguments, one blank and the arguments as they stand.
std::wstring BuildCommandLine(std::wstring_view path, std::wstring_view arguments);

}  // namespace System
