#include "system/CommandLine.h"

namespace System {
namespace {

bool IsBlank(wchar_t c) {
    return c == L' ' || c == L'\t';
}

// Appends the arguments in line[i..) to argv.
void AppendArguments(std::wstring_view line, std::size_t i, std::vector<std::wstring>& argv) {
    const std::size_t n = line.size();
    while (true) {
        while (i < n && IsBlank(line[i])) ++i;
        if (i == n) break;
        std::wstring argument;
        // 0: outside quotes, 1: inside; 2 pending quotes after a run close the quoting.
        int quotes = 0;
        while (i < n && (quotes != 0 || !IsBlank(line[i]))) {
            if (line[i] == L'\\') {
                std::size_t backslashes = 0;
                while (i < n && line[i] == L'\\') {
                    ++backslashes;
                    ++i;
                }
                if (i < n && line[i] == L'"') {
                    argument.append(backslashes / 2, L'\\');
                    if (backslashes % 2 == 1) {
                        argument += L'"';
                        ++i;
                    }
                    // An even count leaves the quote to the quote handling below.
                } else {
                    argument.append(backslashes, L'\\');
                }
            } else if (line[i] == L'"') {
                ++quotes;
                ++i;
                while (i < n && line[i] == L'"') {
                    if (++quotes == 3) {
                        argument += L'"';
                        quotes = 0;
                    }
                    ++i;
                }
                if (quotes == 2) quotes = 0;
            } else {
                argument += line[i++];
            }
        }
        argv.push_back(std::move(argument));
    }
}

}  // namespace

std::vector<std::wstring> CommandLineToArgv(std::wstring_view line) {
    std::vector<std::wstring> argv;
    std::size_t i = 0;
    const std::size_t n = line.size();
    while (i < n && IsBlank(line[i])) ++i;
    if (i == n) return argv;

    // The program name knows no escapes.
    std::wstring program;
    if (line[i] == L'"') {
        ++i;
        while (i < n && line[i] != L'"') program += line[i++];
        if (i < n) ++i;
    } else {
        while (i < n && !IsBlank(line[i])) program += line[i++];
    }
    argv.push_back(std::move(program));
    AppendArguments(line, i, argv);
    return argv;
}

std::vector<std::wstring> SplitArguments(std::wstring_view arguments) {
    std::vector<std::wstring> argv;
    AppendArguments(arguments, 0, argv);
    return argv;
}

std::wstring Quote(std::wstring_view text, wchar_t quoteChar) {
    if (text.size() >= 2 && text.front() == quoteChar && text.back() == quoteChar)
        return std::wstring(text);
    std::wstring quoted;
    quoted.reserve(text.size() + 2);
    quoted += quoteChar;
    quoted += text;
    quoted += quoteChar;
    return quoted;
}

std::wstring BuildCommandLine(std::wstring_view path, std::wstring_view arguments) {
    std::wstring commandLine = Quote(path, L'"');
    if (!arguments.empty()) {
        commandLine += L' ';
        commandLine += arguments;
    }
    return commandLine;
}

}  // namespace System
