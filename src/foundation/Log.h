// The diagnostic log: an optional, process-wide text log for developers and support, off
// unless the environment names a log file ("Debugging_Log_Path"). Writers call LogMessage;
// every line carries the local time, a level tag, the thread and the writer's name:
//
//   2024.05.01 13:45:07 WRN 4711  ResourceLib:IManager:SetLanguageVerify@12       message
//
// (a 79-character header, then the message and "\r\n", in UTF-8). Lines of a multi-line
// message after the first, and continuation lines, start with 79 blanks instead.
//
// Thread safety: every function here may be called from any thread; lines from different
// threads never interleave within a line.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

#include "foundation/InterfaceCore.h"
#include "foundation/LiteString.h"

namespace Debugging {

// Levels, with the tag each line carries ("DIS", "DBG", "INF", "WRN", "ERR", "CRT", "OBL";
// any other value "UNK").
enum LogLevel : int {
    LevelDisabled = 0,
    LevelDebug = 1,
    LevelInfo = 2,
    LevelWarning = 3,
    LevelError = 4,
    LevelCritical = 5,
    LevelObligatory = 6,
};

// LogMessage flags.
inline constexpr unsigned kLogContinuation = 1;  // no header: the line continues the last one
inline constexpr unsigned kLogDeferred = 2;      // only to the mirror and the delayed data

struct ILog : InterfaceCore::IInterfaceCore<ILog> {
    // The threshold: lines below it do not reach the log file.
    virtual int GetLevel() = 0;
    // Whether the mirror receives every line (flag bit 1 clear) or only lines that pass
    // the threshold.
    virtual bool MirrorsAll() = 0;
    virtual bool IsSuspended() = 0;
    // Writes one finished line (header and "\r\n" included). False when the line was lost.
    virtual bool Write(const std::wstring& line, int level, bool deferOnly) = 0;
};

class Log : public ILog {
public:
    int GetLevel() override = 0;
    bool MirrorsAll() override = 0;
    bool IsSuspended() override = 0;
    bool Write(const std::wstring& line, int level, bool deferOnly) override = 0;
};

// The process-wide log, created on first use under the spin lock and destroyed at exit;
// null after that.
ILog* GetLog();

// Logs `message` (which may hold line feeds: each piece becomes a line) under the writer
// name `name` (empty: the running executable's file name). Returns false when a line was
// lost (a failed write, or a full delayed-data store); never throws but std::bad_alloc.
// A null log drops the message and returns false.
bool LogMessage(ILog* log, std::wstring_view message, STLHelpers::litestring name, int level,
                unsigned flags = 0);

// Whether a LogMessage of `level` from the calling thread would put a line anywhere (the
// log file, the delayed data or the mirror). Writers whose message takes work to build ask
// this first, so that a line nobody reads costs no more than this check.
bool LogWants(ILog* log, int level);

// Builds the message with `make()` and logs it, only when LogWants says that it would be
// written.
template <class MakeMessage>
bool LogMessageIf(ILog* log, STLHelpers::litestring name, int level, MakeMessage&& make) {
    if (!LogWants(log, level)) return true;
    return LogMessage(log, make(), name, level);
}

// One line: with a header, "time tag thread name " (79 characters), the message and "\r\n";
// without, 79 blanks, the message and "\r\n".
std::wstring FormatLine(std::wstring_view message, std::wstring_view name, int level,
                        bool withHeader);

// The three-letter tag of a level.
const wchar_t* LevelTag(int level);

// Per-thread settings; each affects only the calling thread. Nothing in the updater
// changes them; they serve tools and tests.
// Blanks put before each message (negative counts as 0).
void SetThreadLogIndent(int depth);
// The thread's own threshold (initially 6); the effective one is the smaller of this and
// the log's.
void SetThreadLogThreshold(int threshold);
// A private stream that takes the thread's lines that pass the threshold (UTF-8), instead
// of the log file, while it is good; null detaches it. The stream must outlive its use.
void SetThreadLogStream(std::ostream* stream);
// Makes the thread's next line that is no continuation carry a header.
void ForceThreadLogHeader();

}  // namespace Debugging
