// Starting a program: posix_spawn with a working folder, the caller's environment (as a
// snapshot taken under the environment lock), no inherited descriptors beyond 0, 1 and 2,
// signal dispositions and mask reset, and a pidfd on the new process, which also reaps it.
//
// Thread safety: any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/ProcessHandle.h"

namespace Platform {

struct SpawnRequest {
    // The program. A path with a '/' is taken as it stands (relative to the caller's current
    // folder, not to workingFolder); a bare name is looked for in the current folder, then
    // in the folders of PATH.
    std::string executable;
    // The complete argument vector, argv[0] included.
    std::vector<std::string> arguments;
    // The new process's current folder; empty keeps the caller's.
    std::string workingFolder;
};

// Starts the program. Returns 0 and fills `out` (with the new process id in `pid`), or a
// Win32 error number (2 for a missing program, 5 for one that may not be run, 193 for a
// file that is no program, 3 for a missing working folder).
uint32_t SpawnProcess(const SpawnRequest& request, ProcessHandle& out, uint32_t* pid = nullptr);

// The program a request would start: the path that SpawnProcess executes, or "" when no
// such program is found.
std::string ResolveExecutable(const std::string& executable);

}  // namespace Platform
