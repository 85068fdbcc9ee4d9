#include "system/internal/Trash.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "platform/Environment.h"
#include "platform/SystemMessages.h"

namespace System::internal {
namespace {

constexpr uint32_t kErrorNotSameDevice = 17;

std::string HomeFolder() {
    if (auto home = Platform::GetEnvironment("HOME"); home && !home->empty()) return *home;
    struct passwd entry {};
    struct passwd* found = nullptr;
    std::string buffer(16384, '\0');
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found)
        return found->pw_dir;
    return "/";
}

// Percent-encodes a path for the "Path=" line, leaving "/" and the unreserved characters.
std::string EncodePath(const std::string& path) {
    static const char* hex = "0123456789ABCDEF";
    std::string out;
    for (unsigned char c : path) {
        const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                           (c >= '0' && c <= '9') || c == '/' || c == '-' || c == '_' || c == '.' ||
                           c == '~';
        if (plain) {
            out.push_back(static_cast<char>(c));
        } else {
            out.push_back('%');
            out.push_back(hex[c >> 4]);
            out.push_back(hex[c & 15]);
        }
    }
    return out;
}

std::string AbsolutePath(const std::string& path) {
    if (!path.empty() && path.front() == '/') return path;
    char cwd[4096];
    if (::getcwd(cwd, sizeof(cwd)) == nullptr) return path;
    return std::string(cwd) + "/" + path;
}

bool MakeFolder(const std::string& path, mode_t mode) {
    if (::mkdir(path.c_str(), mode) == 0 || errno == EEXIST) {
        struct stat info {};
        return ::lstat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
    }
    return false;
}

bool MakeFolders(const std::string& path, mode_t mode) {
    for (size_t sep = path.find('/', 1); sep != std::string::npos; sep = path.find('/', sep + 1))
        MakeFolder(path.substr(0, sep), mode);
    return MakeFolder(path, mode);
}

bool WriteAll(int fd, const std::string& text) {
    size_t done = 0;
    while (done < text.size()) {
        const ssize_t put = ::write(fd, text.data() + done, text.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        done += static_cast<size_t>(put);
    }
    return true;
}

// Moves `path` into `trash`, recording `recordedPath` as its origin. Returns 0, EXDEV when
// the trash is on another file system, or another errno.
int MoveInto(const std::string& trash, const std::string& path, const std::string& recordedPath) {
    const std::string files = trash + "/files";
    const std::string info = trash + "/info";
    if (!MakeFolders(files, 0700) || !MakeFolder(info, 0700)) return errno ? errno : EACCES;

    std::string name = path.substr(path.find_last_of('/') + 1);
    if (name.empty() || name == "." || name == "..") return EINVAL;

    char date[32];
    const std::time_t now = std::time(nullptr);
    struct tm local {};
    ::localtime_r(&now, &local);
    std::strftime(date, sizeof(date), "%Y-%m-%dT%H:%M:%S", &local);
    const std::string record =
        "[Trash Info]\nPath=" + EncodePath(recordedPath) + "\nDeletionDate=" + date + "\n";

    // The info file is created exclusively first: it reserves the name in the trash.
    for (int n = 1; n < 100000; ++n) {
        const std::string candidate = n == 1 ? name : name + "." + std::to_string(n);
        const std::string infoPath = info + "/" + candidate + ".trashinfo";
        const int fd = ::open(infoPath.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST) continue;
            return errno;
        }
        const bool written = WriteAll(fd, record);
        ::close(fd);
        if (!written) {
            ::unlink(infoPath.c_str());
            return EIO;
        }
        const std::string target = files + "/" + candidate;
        struct stat existing {};
        if (::lstat(target.c_str(), &existing) == 0) {
            // A stray file without record holds that name: try the next one.
            ::unlink(infoPath.c_str());
            continue;
        }
        if (::rename(path.c_str(), target.c_str()) == 0) return 0;
        const int error = errno;
        ::unlink(infoPath.c_str());
        return error;
    }
    return EEXIST;
}

// The mount point of the file system that holds `path`.
std::string TopFolder(const std::string& path) {
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return {};
    const dev_t device = info.st_dev;
    std::string current = path;
    while (true) {
        const size_t slash = current.find_last_of('/');
        const std::string parent = slash == 0 ? "/" : current.substr(0, slash);
        struct stat parentInfo {};
        if (::stat(parent.c_str(), &parentInfo) != 0 || parentInfo.st_dev != device) return current;
        if (parent == "/") return "/";
        current = parent;
    }
}

}  // namespace

std::string HomeTrashFolder() {
    std::string data;
    if (auto xdg = Platform::GetEnvironment("XDG_DATA_HOME");
        xdg && !xdg->empty() && xdg->front() == '/')
        data = *xdg;
    else
        data = HomeFolder() + "/.local/share";
    while (data.size() > 1 && data.back() == '/') data.pop_back();
    return data + "/Trash";
}

uint32_t MoveToTrash(const std::string& given) {
    std::string path = AbsolutePath(given);
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    struct stat info {};
    if (::lstat(path.c_str(), &info) != 0) return Platform::LastWin32Error();

    int error = MoveInto(HomeTrashFolder(), path, path);
    if (error != EXDEV) return Platform::Win32ErrorFromErrno(error);

    // Another file system: its own top-level trash, with the path relative to the top.
    const std::string top = TopFolder(path);
    if (top.empty()) return kErrorNotSameDevice;
    const std::string trash =
        (top == "/" ? std::string() : top) + "/.Trash-" + std::to_string(::getuid());
    std::string relative = path.substr(top == "/" ? 1 : top.size() + 1);
    error = MoveInto(trash, path, relative);
    if (error == EXDEV) return kErrorNotSameDevice;
    return Platform::Win32ErrorFromErrno(error);
}

}  // namespace System::internal
