// The process environment behind one process-wide lock: glibc's getenv/setenv/unsetenv
// are not safe against each other from several threads. Every read and write of the
// environment in this project goes through these functions.
//
// Names and values are UTF-8. Thread safety: any thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Platform {

// The value, or nullopt when the variable is not set.
std::optional<std::string> GetEnvironment(const std::string& name);

// Sets (overwriting) the variable. Returns 0, or a Win32 error number (87 for a name that
// is empty or contains '=', 8 when out of memory).
uint32_t SetEnvironment(const std::string& name, const std::string& value);

// Removes the variable; removing one that is not set succeeds. Returns 0 or a Win32 error.
uint32_t UnsetEnvironment(const std::string& name);

// The longest "NAME=value" entry the kernel passes to a new program (MAX_ARG_STRLEN,
// 128 KiB with the terminating NUL); a longer one makes every start fail.
inline constexpr std::size_t kMaxEnvironmentEntry = 128 * 1024 - 1;

// A copy of the whole environment ("NAME=value" entries), taken under the lock; what a
// started process receives. An entry longer than kMaxEnvironmentEntry keeps only the
// newest lines of its value that fit (the lines after the first line break from which the
// rest fits), and is left out when no such line break exists, so that the start succeeds.
std::vector<std::string> EnvironmentSnapshot();

}  // namespace Platform
