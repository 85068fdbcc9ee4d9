#include "system/internal/ShellProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "platform/Environment.h"
#include "platform/SystemMessages.h"

namespace System::internal {
namespace {

std::vector<char*> Pointers(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (auto& s : strings) pointers.push_back(s.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

uint32_t StartDetached(const std::vector<std::string>& argv) {
    if (argv.empty()) return 87;
    // Everything the children use is prepared before fork: after it, only async-signal-safe
    // calls are allowed in a process that may have other threads.
    std::vector<std::string> args = argv;
    std::vector<std::string> env = Platform::EnvironmentSnapshot();
    auto argp = Pointers(args);
    auto envp = Pointers(env);

    int report[2];
    if (::pipe2(report, O_CLOEXEC) != 0) return Platform::LastWin32Error();
    const pid_t child = ::fork();
    if (child < 0) {
        const uint32_t error = Platform::LastWin32Error();
        ::close(report[0]);
        ::close(report[1]);
        return error;
    }
    if (child == 0) {
        // The middle process: a new session, one more fork so that init adopts the
        // program, then exit at once.
        ::setsid();
        const pid_t grandchild = ::fork();
        if (grandchild == 0) {
            // Only 0, 1 and 2 reach the program; the report pipe closes on exec by itself.
            if (report[1] > 3) ::close_range(3, static_cast<unsigned>(report[1]) - 1, 0);
            ::close_range(static_cast<unsigned>(report[1]) + 1, ~0u, 0);
            ::execve(argp[0], argp.data(), envp.data());
            const int error = errno;
            (void)!::write(report[1], &error, sizeof(error));
            ::_exit(127);
        }
        if (grandchild < 0) {
            const int error = errno;
            (void)!::write(report[1], &error, sizeof(error));
        }
        ::_exit(0);
    }
    ::close(report[1]);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    // The pipe closes on a successful exec (close-on-exec) or carries the errno.
    int error = 0;
    ssize_t got;
    do {
        got = ::read(report[0], &error, sizeof(error));
    } while (got < 0 && errno == EINTR);
    ::close(report[0]);
    if (got == static_cast<ssize_t>(sizeof(error))) return Platform::Win32ErrorFromErrno(error);
    return 0;
}

uint32_t RunAndWait(const std::vector<std::string>& argv, int& exitStatus) {
    exitStatus = -1;
    if (argv.empty()) return 87;
    std::vector<std::string> args = argv;
    std::vector<std::string> env = Platform::EnvironmentSnapshot();
    auto argp = Pointers(args);
    auto envp = Pointers(env);

    // posix_spawnp looks in the PATH of the calling process; take it from the snapshot so
    // that a PATH set through the environment lock counts.
    std::string program = args[0];
    if (program.find('/') == std::string::npos) {
        std::string path = "/usr/local/bin:/usr/bin:/bin";
        for (const auto& entry : env)
            if (entry.rfind("PATH=", 0) == 0) path = entry.substr(5);
        std::string found;
        size_t start = 0;
        while (start <= path.size() && found.empty()) {
            size_t end = path.find(':', start);
            if (end == std::string::npos) end = path.size();
            // An empty entry stands for the current folder.
            const std::string folder =
                end > start ? path.substr(start, end - start) : std::string(1, '.');
            const std::string candidate = folder + "/" + program;
            if (::access(candidate.c_str(), X_OK) == 0) found = candidate;
            start = end + 1;
        }
        if (found.empty()) return 2;
        program = found;
    }

    // Descriptors opened without close-on-exec elsewhere in the program must not reach the
    // helper, nor what it starts in turn.
    posix_spawn_file_actions_t actions;
    if (posix_spawn_file_actions_init(&actions) != 0) return 8;
    int rc = posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    pid_t pid = 0;
    if (rc == 0)
        rc = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argp.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (rc != 0) return Platform::Win32ErrorFromErrno(rc);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR) return Platform::LastWin32Error();
    }
    if (WIFEXITED(status))
        exitStatus = WEXITSTATUS(status);
    else if (WIFSIGNALED(status))
        exitStatus = 128 + WTERMSIG(status);
    return 0;
}

}  // namespace System::internal
