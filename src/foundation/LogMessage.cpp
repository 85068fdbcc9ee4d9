#include <algorithm>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <set>

#include "foundation/Log.h"
#include "foundation/LogImpl.h"
#include "foundation/ProcessWideObject.h"
#include "foundation/TextConversion.h"
#include "foundation/internal/ThreadLogState.h"
#include "platform/LocalTime.h"
#include "platform/NativeThread.h"
#include "platform/ProcTable.h"

namespace Debugging {
namespace internal {
namespace {

class ThreadStateTable {
public:
    void Add(ThreadLogState* state) {
        std::lock_guard guard(m_lock);
        m_states.insert(state);
    }
    void Remove(ThreadLogState* state) {
        std::lock_guard guard(m_lock);
        m_states.erase(state);
    }
    std::size_t Count() {
        std::lock_guard guard(m_lock);
        return m_states.size();
    }

private:
    std::mutex m_lock;
    std::set<ThreadLogState*> m_states;
};

ThreadStateTable* Table() {
    static Synchronization::ProcessWideObject<ThreadStateTable> table;
    return table.Get();
}

// Owns the thread's state and keeps it registered for the thread's life.
struct ThreadSlot {
    ThreadSlot() {
        if (ThreadStateTable* table = Table()) table->Add(&state);
    }
    ~ThreadSlot() {
        // The table may already be gone when the main thread's slot ends at exit.
        if (ThreadStateTable* table = Table()) table->Remove(&state);
    }
    ThreadLogState state;
};

}  // namespace

ThreadLogState& CurrentThreadLogState() {
    thread_local ThreadSlot slot;
    return slot.state;
}

std::size_t RegisteredThreadLogStates() {
    ThreadStateTable* table = Table();
    return table != nullptr ? table->Count() : 0;
}

}  // namespace internal

namespace {

constexpr std::size_t kNameWidth = 48;
constexpr std::size_t kThreadWidth = 5;
constexpr std::size_t kHeaderWidth = 79;

const std::wstring& ExecutableName() {
    static const std::wstring name = STLHelpers::Utf8ToWide(Platform::CurrentExecutableName());
    return name;
}

void AppendPadded(std::wstring& line, std::wstring_view text, std::size_t width) {
    line += text.substr(0, width);
    if (text.size() < width) line.append(width - text.size(), L' ');
    line += L' ';
}

}  // namespace

const wchar_t* LevelTag(int level) {
    static const wchar_t* const tags[] = {L"DIS", L"DBG", L"INF", L"WRN", L"ERR", L"CRT", L"OBL"};
    return level >= 0 && level <= 6 ? tags[level] : L"UNK";
}

std::wstring FormatLine(std::wstring_view message, std::wstring_view name, int level,
                        bool withHeader) {
    std::wstring line;
    line.reserve(kHeaderWidth + message.size() + 2);
    if (withHeader) {
        char time[32] = {};
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        Platform::ToLocalTime(now, local);
        std::strftime(time, sizeof time, "%Y.%m.%d %H:%M:%S", &local);
        AppendPadded(line, STLHelpers::Utf8ToWide(time), 19);
        line += LevelTag(level);
        line += L' ';
        AppendPadded(line, std::to_wstring(Platform::CurrentNativeThreadId()), kThreadWidth);
        if (name.size() > kNameWidth) {
            line += L'?';
            line += name.substr(name.size() - (kNameWidth - 1));
            line += L' ';
        } else {
            AppendPadded(line, name, kNameWidth);
        }
    } else {
        line.append(kHeaderWidth, L' ');
    }
    line += message;
    line += L"\r\n";
    return line;
}

bool LogMessage(ILog* log, std::wstring_view message, STLHelpers::litestring name, int level,
                unsigned flags) {
    if (log == nullptr) return false;
    internal::ThreadLogState& state = internal::CurrentThreadLogState();
    const int threshold = std::min(state.threshold, log->GetLevel());
    if (level < threshold && !log->MirrorsAll()) return true;

    const std::size_t feed = message.find(L'\n');
    if (feed != std::wstring_view::npos) {
        bool ok = LogMessage(log, message.substr(0, feed), name, level, flags);
        std::wstring_view rest = message.substr(feed + 1);
        for (;;) {
            const std::size_t next = rest.find(L'\n');
            ok &= LogMessage(log, rest.substr(0, next), name, level, flags | kLogContinuation);
            if (next == std::wstring_view::npos) break;
            rest.remove_prefix(next + 1);
        }
        return ok;
    }

    const bool continuation = (flags & kLogContinuation) != 0;
    const bool deferred = (flags & kLogDeferred) != 0;
    bool header = false;
    if (!continuation) {
        header = state.stream == nullptr || level != state.lastLevel ||
                 continuation != state.lastContinuation || state.forceHeader;
        state.forceHeader = false;
    }
    state.lastLevel = level;
    state.lastContinuation = continuation;

    std::wstring text(static_cast<std::size_t>(std::max(state.depth, 0)), L' ');
    text += message;
    const std::wstring line = FormatLine(
        text, name.empty() ? std::wstring_view(ExecutableName()) : name.view(), level, header);

    if (level >= threshold) {
        if (state.stream != nullptr && state.stream->good() && !deferred) {
            const std::string utf8 = STLHelpers::WideToUtf8(line);
            state.stream->write(utf8.data(), static_cast<std::streamsize>(utf8.size()));
            state.stream->flush();
            return state.stream->good();
        }
        return log->Write(line, 6, deferred);
    }
    return log->Write(line, 0, false);
}

bool LogWants(ILog* log, int level) {
    if (log == nullptr) return false;
    const int threshold = std::min(internal::CurrentThreadLogState().threshold, log->GetLevel());
    if (level >= threshold) return true;
    if (!log->MirrorsAll()) return false;
    // A line below the threshold only reaches the mirror; without one it goes nowhere.
    const auto* impl = dynamic_cast<const LogImpl*>(log);
    return impl == nullptr || impl->HasMirror();
}

void SetThreadLogIndent(int depth) {
    internal::CurrentThreadLogState().depth = std::max(depth, 0);
}

void SetThreadLogThreshold(int threshold) {
    internal::CurrentThreadLogState().threshold = threshold;
}

void SetThreadLogStream(std::ostream* stream) {
    internal::CurrentThreadLogState().stream = stream;
}

void ForceThreadLogHeader() {
    internal::CurrentThreadLogState().forceHeader = true;
}

}  // namespace Debugging
