// Starting, listing and finding processes.
//
// Thread safety: any thread. Nothing here throws for a system failure (std::bad_alloc may
// escape).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "system/ProcessInfo.h"

namespace System {

// Creation flag that asks for no console window; accepted and without effect on Linux.
inline constexpr uint32_t kCreateNoWindow = 0x08000000u;

// Starts `path` with `arguments`. The command line is `path` in double quotes (unless it is
// quoted already), then one blank and `arguments` when they are not empty; it is split into
// the argument vector by the CommandLineToArgvW rules, so `/A="x y"` arrives as `/A=x y`.
// The process runs in the executable's folder (the caller's current folder for a bare file
// name), with the caller's environment and no inherited descriptors besides 0-2; `flags`
// are accepted for form. An empty `path` gives an empty record at once. A failed start
// reports the check "((CreateProcessW(0,&cmd.front(),0,0,0,flags,0,GetLocation(),&si,&pi)))"
// at level GuardedError with the error and gives an empty record (HasHandle() false); the
// Win32 error number also goes to `error` when given (0 after a start).
ProcessInfo StartProcess(const std::wstring& path, const std::wstring& arguments,
                         uint32_t flags = 0, uint32_t* error = nullptr);

// One record per running process (id and snapshot, no handle), ordered by identifier;
// appended to `list` after emptying it when `clear` is set. False when /proc cannot be read.
bool EnumerateProcesses(std::vector<ProcessInfo>& list, bool clear = true);

// The records of the running processes whose executable file name equals `name`, ignoring
// case, in the order of EnumerateProcesses. True also when nothing matched.
bool FindProcessesByName(const std::wstring& name, std::vector<ProcessInfo>& list,
                         bool clear = true);

}  // namespace System
