// Starting the programs the shell helpers need: a program started detached (it outlives us
// and is never our zombie) and a helper whose exit status we wait for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace System::internal {

// Starts argv[0] (a path) with `argv` in its own session, detached from this process.
// Returns 0 once the program runs, else the Win32 error of the failed start.
uint32_t StartDetached(const std::vector<std::string>& argv);

// Runs argv[0] (looked up in PATH when it has no "/") and waits for it. Returns 0 and its
// exit status (128 + signal number when killed by a signal), or the Win32 error of the failed
// start (2 when the program is not found).
uint32_t RunAndWait(const std::vector<std::string>& argv, int& exitStatus);

}  // namespace System::internal
