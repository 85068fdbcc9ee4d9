// Variables of this process's environment, as wide text (UTF-8 in the environment itself).
// All access goes through the process-wide environment lock (platform/Environment.h).
//
// Reads are limited to values of at most 1024 characters: a longer value reads as empty.
// The one exception is "Debugging_Log_DelayedData", in which the diagnostic log keeps up to
// 1,048,576 characters of lines it could not write yet; it reads in full, since with the
// limit the log would start it afresh once it grew past 1024 characters and lose the lines
// kept so far.
//
// Thread safety: any thread. Concurrent writes to one variable leave the last writer's value.
#pragma once

#include <cstddef>
#include <string>

namespace System {

// Longest value (in characters) that reads as itself.
inline constexpr std::size_t kEnvironmentValueLimit = 1024;
// The variable that reads without that limit.
inline constexpr wchar_t kDelayedLogDataVariable[] = L"Debugging_Log_DelayedData";

// Reads the variable into `value`. True when the value read is not empty; a missing
// variable or one over the limit gives "" and false without a report. Throws
// ErrorHandling::ErrorException (check "((!name.empty()))") for an empty name, and for an
// unexpected failure (check "((lerr))").
bool GetEnvironmentValue(const std::wstring& name, std::wstring& value);

// Sets the variable, first removing it when `removeFirst` is set. Returns true on success.
// Failure with ERROR_ALREADY_EXISTS (183) returns false quietly; any other failure (an
// empty name or one with "=") throws through the check "((lerr))".
bool SetEnvironmentValue(const std::wstring& name, const std::wstring& value,
                         bool removeFirst = false);

// Removes the variable; removing a missing one succeeds. False for an invalid name.
bool RemoveEnvironmentVariable(const std::wstring& name);

// The value, or "" when the variable is missing or cannot be read. Never throws for an
// invalid name.
std::wstring GetEnvironmentString(const std::wstring& name);

}  // namespace System
