// Debugging::LogImpl: the log of the process (see Log.h), configured from the environment
// and one registry value, writing to a log file and optionally a mirror file.
//
// Configuration, read lazily and again on every call until it succeeds:
//   Debugging_Log_Path    the log file; empty or missing: unconfigured, no file is written
//   Debugging_Log_Level   the threshold 0-6 (missing, empty or not a number: 0; any other
//                         number: unconfigured)
//   HKCU\Software\Utility\Debugging\LogImpl, DWORD "Level": replaces the threshold when 0-6
//   Debugging_Mirror_Path the mirror file (empty: none)
//   Debugging_Log_Flags   bit 1 (2): the mirror receives only lines that pass the threshold
// Environment values longer than 1024 characters read as empty. Until configured, the
// threshold is 5.
//
// Lines that cannot reach the log file yet (no configuration, a file that cannot be opened,
// or deferred writing) are kept in the environment variable "Debugging_Log_DelayedData", up
// to 1,048,576 characters, and written first once the file opens; a child process started
// meanwhile inherits them as far as the system allows: Linux takes no environment entry
// over 128 KiB, so a child receives the newest whole lines that fit (about 128 KiB of
// them) and the older ones stay with this process only. Handing them over whole, through a
// file, would leave a file behind for every child that never opens its log; a child that
// could not start at all would be worse than one that misses old lines. Files are opened lazily,
// created with their folders, appended to, and kept open until the object is destroyed.
//
// Thread safety: any thread. Each line is one append, so lines never interleave.
#pragma once

#include <atomic>
#include <cstddef>
#include <mutex>
#include <string>

#include "foundation/Log.h"
#include "platform/AppendOnlyFile.h"

namespace Debugging {

class LogImpl : public Log {
public:
    // Cap of the delayed data, in characters: a line that arrives above it is dropped.
    static constexpr std::size_t kDelayedDataCap = 0x100000;

    LogImpl();
    ~LogImpl() override;
    LogImpl(const LogImpl&) = delete;
    LogImpl& operator=(const LogImpl&) = delete;

    int GetLevel() override;
    bool MirrorsAll() override;
    bool IsSuspended() override { return false; }
    bool Write(const std::wstring& line, int level, bool deferOnly) override;

    // Reads the configuration unless it has been read; false while it is missing or invalid.
    bool EnsureConfigured();

    // Whether a mirror file is configured (false while the log is unconfigured).
    bool HasMirror() const {
        return m_initialized.load(std::memory_order_acquire) && !m_mirrorPath.empty();
    }

private:
    struct File {
        Platform::AppendOnlyFile file;
        std::atomic<bool> open{false};
    };
    bool OpenFile(const std::wstring& path, File& file);
    bool AppendToMirror(const std::string& line);
    bool FlushDelayedData();
    bool Defer(const std::string& line);

    std::mutex m_lock;
    std::mutex m_delayLock;  // keeps a flush and a deferral from losing each other's lines
    std::atomic<bool> m_initialized{false};
    std::wstring m_logPath;
    std::wstring m_mirrorPath;
    std::atomic<int> m_level{5};
    std::atomic<int> m_flags{0};
    File m_logFile;
    File m_mirrorFile;
};

}  // namespace Debugging
