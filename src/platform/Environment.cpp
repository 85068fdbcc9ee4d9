#include "platform/Environment.h"

#include <cerrno>
#include <cstdlib>
#include <mutex>

#include "platform/SystemMessages.h"

extern char** environ;

namespace Platform {
namespace {

std::mutex& EnvironmentLock() {
    static std::mutex lock;
    return lock;
}

bool IsValidName(const std::string& name) {
    return !name.empty() && name.find('=') == std::string::npos &&
           name.find('\0') == std::string::npos;
}

}  // namespace

std::optional<std::string> GetEnvironment(const std::string& name) {
    if (!IsValidName(name)) return std::nullopt;
    std::lock_guard guard(EnvironmentLock());
    const char* value = std::getenv(name.c_str());
    if (value == nullptr) return std::nullopt;
    return std::string(value);
}

uint32_t SetEnvironment(const std::string& name, const std::string& value) {
    if (!IsValidName(name) || value.find('\0') != std::string::npos) return 87;
    std::lock_guard guard(EnvironmentLock());
    return ::setenv(name.c_str(), value.c_str(), 1) == 0 ? 0 : Win32ErrorFromErrno(errno);
}

uint32_t UnsetEnvironment(const std::string& name) {
    if (!IsValidName(name)) return 87;
    std::lock_guard guard(EnvironmentLock());
    return ::unsetenv(name.c_str()) == 0 ? 0 : Win32ErrorFromErrno(errno);
}

std::vector<std::string> EnvironmentSnapshot() {
    std::vector<std::string> entries;
    {
        std::lock_guard guard(EnvironmentLock());
        for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry)
            entries.emplace_back(*entry);
    }
    // execve refuses the whole start when one entry is longer than the kernel takes. Such
    // an entry keeps its newest lines that fit; one without a line break to cut at goes.
    for (auto entry = entries.begin(); entry != entries.end();) {
        if (entry->size() <= kMaxEnvironmentEntry) {
            ++entry;
            continue;
        }
        const std::size_t valueStart = entry->find('=') + 1;
        if (valueStart >= kMaxEnvironmentEntry) {
            entry = entries.erase(entry);
            continue;
        }
        const std::size_t firstKept = entry->size() - (kMaxEnvironmentEntry - valueStart);
        const std::size_t lineStart = entry->find('\n', firstKept - 1);
        if (lineStart == std::string::npos || lineStart + 1 >= entry->size()) {
            entry = entries.erase(entry);
            continue;
        }
        entry->erase(valueStart, lineStart + 1 - valueStart);
        ++entry;
    }
    return entries;
}

}  // namespace Platform
