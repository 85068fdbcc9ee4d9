#include "platform/RegistryHive.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>

#include "platform/Environment.h"
#include "platform/RegFileParser.h"
#include "platform/Utf16Text.h"
#include "platform/internal/FileDescriptor.h"
#include "platform/internal/HiveStore.h"

namespace Platform {
namespace {

// Hive files larger than this are not a settings file; they count as unreadable.
constexpr off_t kMaxHiveSize = 64 * 1024 * 1024;

std::atomic<uint64_t> parseCount{0};

// Skipped lines not yet taken, by file; the flag spares the lock when there are none.
std::atomic<bool> problemsWaiting{false};
std::mutex& ProblemLock() {
    static std::mutex lock;
    return lock;
}
std::map<std::string, std::vector<RegHiveProblem>>& WaitingProblems() {
    static std::map<std::string, std::vector<RegHiveProblem>> problems;
    return problems;
}

std::vector<RegHiveProblem> ToProblems(const std::string& path,
                                       const std::vector<RegParseIssue>& issues) {
    std::vector<RegHiveProblem> problems;
    problems.reserve(issues.size());
    for (const RegParseIssue& issue : issues) problems.push_back({path, issue.line, issue.reason});
    return problems;
}

std::string HomeFolder() {
    if (auto home = GetEnvironment("HOME"); home && !home->empty()) return *home;
    struct passwd entry {};
    struct passwd* found = nullptr;
    std::string buffer(16384, '\0');
    if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
        found->pw_dir)
        return found->pw_dir;
    return "/";
}

struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = 0;
    timespec modified{};
    timespec changed{};

    bool operator==(const FileIdentity& o) const {
        return device == o.device && inode == o.inode && size == o.size &&
               modified.tv_sec == o.modified.tv_sec && modified.tv_nsec == o.modified.tv_nsec &&
               changed.tv_sec == o.changed.tv_sec && changed.tv_nsec == o.changed.tv_nsec;
    }
};

struct CacheEntry {
    FileIdentity identity;
    std::shared_ptr<const RegHive> hive;
};

std::mutex& CacheLock() {
    static std::mutex lock;
    return lock;
}

// Keyed by root and file, so that a change of LUMETTA_REGISTRY_DIR finds its own entry.
std::map<std::pair<RegRoot, std::string>, CacheEntry>& Cache() {
    static std::map<std::pair<RegRoot, std::string>, CacheEntry> cache;
    return cache;
}

std::shared_ptr<const RegHive> EmptyHive() {
    static const auto empty = std::make_shared<const RegHive>();
    return empty;
}

bool ReadAll(int fd, off_t size, std::string& bytes) {
    bytes.resize(static_cast<size_t>(size));
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return false;
        if (got == 0) break;  // shrank while we read; the next look-up sees the new identity
        done += static_cast<size_t>(got);
    }
    bytes.resize(done);
    return true;
}

}  // namespace

std::string RegistryHivePath(RegRoot root) {
    const std::string fileName = Utf8FromWide(RegRootFullName(root)) + ".reg";
    if (fileName == ".reg") return {};
    if (auto dir = GetEnvironment("LUMETTA_REGISTRY_DIR"); dir && !dir->empty()) {
        if (dir->back() != '/') dir->push_back('/');
        return *dir + fileName;
    }
    if (root == RegRoot::CurrentUser) {
        std::string config;
        // Relative values are invalid by the XDG base-directory rules and are ignored.
        if (auto xdg = GetEnvironment("XDG_CONFIG_HOME");
            xdg && !xdg->empty() && xdg->front() == '/')
            config = *xdg;
        else
            config = HomeFolder() + "/.config";
        if (config.back() != '/') config.push_back('/');
        return config + "lumetta/registry/" + fileName;
    }
    return "/etc/lumetta/registry/" + fileName;
}

namespace internal {

std::shared_ptr<const RegHive> LoadHive(RegRoot root) {
    const std::string path = RegistryHivePath(root);
    if (path.empty()) return EmptyHive();
    const auto key = std::make_pair(root, path);

    internal::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat info {};
    if (file.Get() < 0 || ::fstat(file.Get(), &info) != 0 || !S_ISREG(info.st_mode) ||
        info.st_size > kMaxHiveSize) {
        std::lock_guard guard(CacheLock());
        Cache().erase(key);
        return EmptyHive();
    }
    const FileIdentity identity{info.st_dev, info.st_ino, info.st_size, info.st_mtim, info.st_ctim};
    {
        std::lock_guard guard(CacheLock());
        const auto it = Cache().find(key);
        if (it != Cache().end() && it->second.identity == identity) return it->second.hive;
    }

    // Parsed outside the lock: two threads may both parse a changed file, and the later
    // one simply replaces the earlier result.
    std::string bytes;
    if (!ReadAll(file.Get(), info.st_size, bytes)) return EmptyHive();
    std::vector<RegParseIssue> issues;
    auto hive = std::make_shared<const RegHive>(RegFileParser::Parse(bytes, root, &issues));
    parseCount.fetch_add(1, std::memory_order_relaxed);
    {
        std::lock_guard guard(ProblemLock());
        if (issues.empty()) {
            WaitingProblems().erase(path);
        } else {
            WaitingProblems()[path] = ToProblems(path, issues);
            problemsWaiting.store(true, std::memory_order_release);
        }
    }
    std::lock_guard guard(CacheLock());
    Cache()[key] = CacheEntry{identity, hive};
    return hive;
}

}  // namespace internal

std::optional<RegValue> ReadRegistryValue(RegRoot root, std::wstring_view keyPath,
                                          std::wstring_view valueName) {
    const auto hive = internal::LoadHive(root);
    const RegKeyNode* key = hive->FindKey(keyPath);
    if (key == nullptr) return std::nullopt;
    const RegValue* value = RegHive::FindValue(*key, valueName);
    if (value == nullptr) return std::nullopt;
    return *value;
}

bool RegistryKeyExists(RegRoot root, std::wstring_view keyPath) {
    if (RegRootFullName(root).empty()) return false;
    if (keyPath.empty()) return true;
    return internal::LoadHive(root)->FindKey(keyPath) != nullptr;
}

std::optional<std::vector<RegNamedValue>> ListRegistryValues(RegRoot root,
                                                             std::wstring_view keyPath) {
    if (RegRootFullName(root).empty()) return std::nullopt;
    const auto hive = internal::LoadHive(root);
    const RegKeyNode* key = hive->FindKey(keyPath);
    if (key == nullptr) {
        if (keyPath.empty()) return std::vector<RegNamedValue>{};
        return std::nullopt;
    }
    return key->values;
}

std::optional<std::vector<std::wstring>> ListRegistrySubkeys(RegRoot root,
                                                             std::wstring_view keyPath) {
    if (RegRootFullName(root).empty()) return std::nullopt;
    const auto hive = internal::LoadHive(root);
    if (hive->FindKey(keyPath) == nullptr) {
        if (keyPath.empty()) return std::vector<std::wstring>{};
        return std::nullopt;
    }
    return hive->Subkeys(keyPath);
}

namespace {

// The file's bytes; false with the reason when it exists but cannot be read as a hive,
// false with an empty reason when it does not exist.
bool ReadHiveFile(const std::string& path, std::string& bytes, std::string& reason) {
    internal::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.Get() < 0) {
        if (errno != ENOENT) reason = std::string("cannot be read: ") + std::strerror(errno);
        return false;
    }
    struct stat info {};
    if (::fstat(file.Get(), &info) != 0) {
        reason = std::string("cannot be read: ") + std::strerror(errno);
        return false;
    }
    if (!S_ISREG(info.st_mode)) {
        reason = "is not a regular file";
        return false;
    }
    if (info.st_size > kMaxHiveSize) {
        reason = "is larger than " + std::to_string(kMaxHiveSize) + " bytes";
        return false;
    }
    if (!ReadAll(file.Get(), info.st_size, bytes)) {
        reason = std::string("cannot be read: ") + std::strerror(errno);
        return false;
    }
    return true;
}

}  // namespace

std::vector<RegHiveProblem> CheckRegistryHive(RegRoot root) {
    const std::string path = RegistryHivePath(root);
    if (path.empty()) return {};
    std::string bytes, reason;
    if (!ReadHiveFile(path, bytes, reason)) {
        if (reason.empty()) return {};
        return {{path, 0, "the file " + reason}};
    }
    std::vector<RegParseIssue> issues;
    RegFileParser::Parse(bytes, root, &issues);
    return ToProblems(path, issues);
}

std::vector<RegHiveProblem> TakeRegistryHiveProblems() {
    if (!problemsWaiting.load(std::memory_order_acquire)) return {};
    std::lock_guard guard(ProblemLock());
    std::vector<RegHiveProblem> taken;
    for (auto& [path, problems] : WaitingProblems())
        taken.insert(taken.end(), problems.begin(), problems.end());
    WaitingProblems().clear();
    problemsWaiting.store(false, std::memory_order_relaxed);
    return taken;
}

uint64_t RegistryHiveParseCount() {
    return parseCount.load(std::memory_order_relaxed);
}

}  // namespace Platform
