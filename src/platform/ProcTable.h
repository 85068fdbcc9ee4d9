// The running processes as /proc shows them: one entry per process with what a process
// snapshot reports (threads, base priority, parent, executable file name).
//
// Thread safety: any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Platform {

struct ProcessEntry {
    uint32_t pid = 0;
    uint32_t parentPid = 0;
    uint32_t threadCount = 0;
    // The scheduling class on the Windows scale: 4 idle, 6 below normal, 8 normal,
    // 10 above normal, 13 high (from the nice value).
    int32_t basePriority = 8;
    // The file name (no folder) of the executable: from /proc/PID/exe without the
    // " (deleted)" mark of a replaced binary; for a process whose executable may not be read,
    // the file name of argv[0]; for one without arguments (a kernel thread), its comm name.
    std::string exeFile;
};

// Reads every process, ordered by identifier. Returns 0 or a Win32 error number when /proc
// cannot be listed; processes that end while being read are left out.
uint32_t ReadProcessTable(std::vector<ProcessEntry>& entries);

// Reads one process; false when it does not exist (any more).
bool ReadProcessEntry(uint32_t pid, ProcessEntry& entry);

// The file name of this process's executable, by the rules of ProcessEntry::exeFile.
std::string CurrentExecutableName();

// The Windows-scale base priority for a nice value.
int32_t BasePriorityFromNice(int nice);

}  // namespace Platform
