// Runs a shell command as a user would and keeps what it printed.
#pragma once

#include <stdio.h>
#include <sys/wait.h>

#include <string>
#include <vector>

namespace TestSupport {

struct CommandOutput {
    int exitCode = -1;  // -1 when the command did not exit normally or could not start
    std::string out;    // stdout, and stderr when the command sends it there (2>&1)
};

inline CommandOutput RunCommand(const std::string& command) {
    CommandOutput run;
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) return run;
    char buffer[4096];
    std::size_t got = 0;
    while ((got = ::fread(buffer, 1, sizeof(buffer), pipe)) > 0) run.out.append(buffer, got);
    const int status = ::pclose(pipe);
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

// `text` in single quotes, safe as one word of a shell command.
inline std::string ShellQuoted(const std::string& text) {
    std::string out = "'";
    for (char ch : text) out += ch == '\'' ? std::string("'\\''") : std::string(1, ch);
    return out + "'";
}

// Runs argv (each word quoted) with stderr into stdout; `prefix` goes before it unquoted, for
// variable assignments or a wrapper program.
inline CommandOutput RunProgram(const std::vector<std::string>& argv,
                                const std::string& prefix = "") {
    std::string command = prefix;
    for (const auto& arg : argv) command += " " + ShellQuoted(arg);
    return RunCommand(command + " 2>&1");
}

}  // namespace TestSupport
