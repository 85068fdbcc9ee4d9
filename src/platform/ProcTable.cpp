#include "platform/ProcTable.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "platform/SystemMessages.h"

namespace Platform {
namespace {

// A process may end while its files are read; the read then fails with ESRCH, which a
// standard stream reports by throwing. What was read until then is all there is.
std::string ReadSmallFile(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return {};
    std::string text;
    char block[4096];
    for (;;) {
        const ssize_t got = ::read(fd, block, sizeof block);
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        text.append(block, static_cast<std::size_t>(got));
    }
    ::close(fd);
    return text;
}

std::string FileNamePart(const std::string& path) {
    const std::size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string ExecutableName(const std::string& folder) {
    std::string target(4096, '\0');
    const ssize_t length = ::readlink((folder + "/exe").c_str(), target.data(), target.size());
    if (length > 0) {
        target.resize(static_cast<std::size_t>(length));
        // The link of a process whose binary was replaced or removed carries this mark.
        static const std::string deleted = " (deleted)";
        if (target.size() > deleted.size() &&
            target.compare(target.size() - deleted.size(), deleted.size(), deleted) == 0)
            target.resize(target.size() - deleted.size());
        return FileNamePart(target);
    }
    const std::string cmdline = ReadSmallFile(folder + "/cmdline");
    const std::string argv0 = cmdline.substr(0, cmdline.find('\0'));
    if (!argv0.empty()) return FileNamePart(argv0);
    std::string comm = ReadSmallFile(folder + "/comm");
    while (!comm.empty() && comm.back() == '\n') comm.pop_back();
    return comm;
}

}  // namespace

std::string CurrentExecutableName() {
    return ExecutableName("/proc/self");
}

int32_t BasePriorityFromNice(int nice) {
    if (nice <= -15) return 13;
    if (nice < 0) return 10;
    if (nice == 0) return 8;
    if (nice < 15) return 6;
    return 4;
}

bool ReadProcessEntry(uint32_t pid, ProcessEntry& entry) {
    const std::string folder = "/proc/" + std::to_string(pid);
    const std::string stat = ReadSmallFile(folder + "/stat");
    // "pid (comm) state ppid ...": comm may hold blanks and parentheses, so the fields
    // start after the last ')'.
    const std::size_t close = stat.rfind(')');
    if (close == std::string::npos) return false;
    std::istringstream fields(stat.substr(close + 1));
    std::vector<std::string> values{std::istream_iterator<std::string>(fields),
                                    std::istream_iterator<std::string>()};
    // After the comm: state(0) ppid(1) ... priority(15) nice(16) num_threads(17).
    if (values.size() < 18) return false;
    entry.pid = pid;
    entry.parentPid = static_cast<uint32_t>(std::strtoul(values[1].c_str(), nullptr, 10));
    entry.basePriority =
        BasePriorityFromNice(static_cast<int>(std::strtol(values[16].c_str(), nullptr, 10)));
    entry.threadCount = static_cast<uint32_t>(std::strtoul(values[17].c_str(), nullptr, 10));
    entry.exeFile = ExecutableName(folder);
    return true;
}

uint32_t ReadProcessTable(std::vector<ProcessEntry>& entries) {
    DIR* proc = ::opendir("/proc");
    if (proc == nullptr) return LastWin32Error();
    std::vector<uint32_t> pids;
    while (const dirent* item = ::readdir(proc)) {
        char* end = nullptr;
        const unsigned long pid = std::strtoul(item->d_name, &end, 10);
        if (pid != 0 && end != item->d_name && *end == '\0')
            pids.push_back(static_cast<uint32_t>(pid));
    }
    ::closedir(proc);
    std::sort(pids.begin(), pids.end());
    for (uint32_t pid : pids) {
        ProcessEntry entry;
        if (ReadProcessEntry(pid, entry)) entries.push_back(std::move(entry));
    }
    return 0;
}

}  // namespace Platform
