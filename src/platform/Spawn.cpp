#include "platform/Spawn.h"

#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <memory>

#include "platform/Environment.h"
#include "platform/SystemMessages.h"

namespace Platform {
namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorPathNotFound = 3;

std::string CurrentFolder() {
    std::string buffer(PATH_MAX, '\0');
    if (::getcwd(buffer.data(), buffer.size()) == nullptr) return {};
    buffer.resize(std::char_traits<char>::length(buffer.c_str()));
    return buffer;
}

bool IsRunnableFile(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

std::string PathValue(const std::vector<std::string>& environment) {
    for (const std::string& entry : environment)
        if (entry.rfind("PATH=", 0) == 0) return entry.substr(5);
    return "/usr/local/bin:/usr/bin:/bin";
}

std::string Resolve(const std::string& executable, const std::vector<std::string>& environment) {
    if (executable.empty()) return {};
    if (executable.find('/') != std::string::npos) {
        // posix_spawn changes the folder before it executes: a relative path must not move
        // along with it.
        if (executable.front() == '/') return executable;
        const std::string cwd = CurrentFolder();
        return cwd.empty() ? executable : cwd + "/" + executable;
    }
    const std::string cwd = CurrentFolder();
    if (!cwd.empty() && IsRunnableFile(cwd + "/" + executable)) return cwd + "/" + executable;
    const std::string path = PathValue(environment);
    std::size_t start = 0;
    while (start <= path.size()) {
        std::size_t end = path.find(':', start);
        if (end == std::string::npos) end = path.size();
        std::string folder = path.substr(start, end - start);
        if (folder.empty()) folder = cwd;
        if (!folder.empty()) {
            const std::string candidate = folder + "/" + executable;
            if (IsRunnableFile(candidate)) return candidate;
        }
        start = end + 1;
    }
    return {};
}

struct FileActions {
    posix_spawn_file_actions_t value;
    FileActions() { posix_spawn_file_actions_init(&value); }
    ~FileActions() { posix_spawn_file_actions_destroy(&value); }
};

struct Attributes {
    posix_spawnattr_t value;
    Attributes() { posix_spawnattr_init(&value); }
    ~Attributes() { posix_spawnattr_destroy(&value); }
};

}  // namespace

std::string ResolveExecutable(const std::string& executable) {
    return Resolve(executable, EnvironmentSnapshot());
}

uint32_t SpawnProcess(const SpawnRequest& request, ProcessHandle& out, uint32_t* pid) {
    for (const std::string& text : request.arguments)
        if (text.find('\0') != std::string::npos) return 87;
    const std::vector<std::string> environment = EnvironmentSnapshot();
    const std::string program = Resolve(request.executable, environment);
    if (program.empty()) return kErrorFileNotFound;
    if (!request.workingFolder.empty()) {
        struct stat st {};
        if (::stat(request.workingFolder.c_str(), &st) != 0 || !S_ISDIR(st.st_mode))
            return kErrorPathNotFound;
    }

    std::vector<char*> argv;
    for (const std::string& text : request.arguments)
        argv.push_back(const_cast<char*>(text.c_str()));
    if (argv.empty()) argv.push_back(const_cast<char*>(program.c_str()));
    argv.push_back(nullptr);
    std::vector<char*> envp;
    for (const std::string& entry : environment) envp.push_back(const_cast<char*>(entry.c_str()));
    envp.push_back(nullptr);

    FileActions actions;
    Attributes attributes;
    if (!request.workingFolder.empty() &&
        posix_spawn_file_actions_addchdir_np(&actions.value, request.workingFolder.c_str()) != 0)
        return 8;
    // Descriptors of other parts of the program may lack O_CLOEXEC; none may leak.
    if (posix_spawn_file_actions_addclosefrom_np(&actions.value, 3) != 0) return 8;
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes.value, &none);
    posix_spawnattr_setsigdefault(&attributes.value, &all);
    posix_spawnattr_setflags(&attributes.value, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);

    pid_t child = 0;
    const int error = ::posix_spawn(&child, program.c_str(), &actions.value, &attributes.value,
                                    argv.data(), envp.data());
    if (error != 0) return Win32ErrorFromErrno(error);

    // The child cannot be reaped by anybody else yet, so its id is still its own.
    const int fd = static_cast<int>(::syscall(SYS_pidfd_open, child, 0u));
    if (fd < 0) {
        const uint32_t openError = LastWin32Error();
        // Without a handle nobody could wait for or end it: do not leave it running.
        ::kill(child, SIGKILL);
        while (::waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
        }
        return openError;
    }
    out = ProcessHandle(fd, static_cast<uint32_t>(child), true);
    if (pid != nullptr) *pid = static_cast<uint32_t>(child);
    return 0;
}

}  // namespace Platform
