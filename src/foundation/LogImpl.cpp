#include "foundation/LogImpl.h"

#include <charconv>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

#include "foundation/ProcessWideObject.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"
#include "platform/RegistryHive.h"

namespace Debugging {
namespace {

constexpr char kPathVariable[] = "Debugging_Log_Path";
constexpr char kLevelVariable[] = "Debugging_Log_Level";
constexpr char kMirrorVariable[] = "Debugging_Mirror_Path";
constexpr char kFlagsVariable[] = "Debugging_Log_Flags";
constexpr char kDelayedVariable[] = "Debugging_Log_DelayedData";
constexpr std::size_t kValueLimit = 1024;

// Characters of UTF-8 text: every byte that does not continue a sequence.
std::size_t CountCharacters(std::string_view text) {
    std::size_t count = 0;
    for (unsigned char c : text) count += (c & 0xC0) != 0x80;
    return count;
}

// The environment as the system's environment helpers read it: missing and over-long
// values are empty. The delayed data reads in full: with the limit, the log would start
// it afresh once it grew past 1024 characters and lose the lines kept so far; its own cap
// bounds it instead.
std::string ReadVariable(const char* name) {
    std::optional<std::string> value = Platform::GetEnvironment(name);
    if (!value) return {};
    if (std::string_view(name) != kDelayedVariable && CountCharacters(*value) > kValueLimit)
        return {};
    return std::move(*value);
}

// A decimal number that makes up the whole text; 0 for anything else.
int ParseNumber(const std::string& text) {
    std::string_view digits = text;
    if (!digits.empty() && digits.front() == '+') digits.remove_prefix(1);
    if (digits.empty() || digits.front() == '+') return 0;
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc() || end != digits.data() + digits.size()) return 0;
    return value;
}

// The registry's "Level" under the current user's LogImpl key, or 0xFFFFFFFF when it is
// missing or no DWORD.
uint32_t RegistryLevel() {
    const auto value = Platform::ReadRegistryValue(
        Platform::RegRoot::CurrentUser, L"Software\\Utility\\Debugging\\LogImpl", L"Level");
    if (!value || value->type != Platform::kRegDword || value->data.size() != 4) return 0xFFFFFFFFu;
    return static_cast<uint32_t>(value->data[0]) | static_cast<uint32_t>(value->data[1]) << 8 |
           static_cast<uint32_t>(value->data[2]) << 16 |
           static_cast<uint32_t>(value->data[3]) << 24;
}

}  // namespace

LogImpl::LogImpl() = default;

// The files close with their members.
LogImpl::~LogImpl() = default;

bool LogImpl::EnsureConfigured() {
    if (m_initialized.load(std::memory_order_acquire)) return true;
    std::lock_guard guard(m_lock);
    if (m_initialized.load(std::memory_order_relaxed)) return true;

    const std::string path = ReadVariable(kPathVariable);
    if (path.empty()) return false;
    const int level = ParseNumber(ReadVariable(kLevelVariable));
    if (level < 0 || level > 6) return false;
    m_level = level;
    const uint32_t registryLevel = RegistryLevel();
    if (registryLevel <= 6) m_level = static_cast<int>(registryLevel);

    m_logPath = STLHelpers::Utf8ToWide(path);
    m_mirrorPath = STLHelpers::Utf8ToWide(ReadVariable(kMirrorVariable));
    m_flags = ParseNumber(ReadVariable(kFlagsVariable));
    m_initialized.store(true, std::memory_order_release);
    return true;
}

int LogImpl::GetLevel() {
    EnsureConfigured();
    return m_level.load(std::memory_order_relaxed);
}

bool LogImpl::MirrorsAll() {
    EnsureConfigured();
    return (m_flags.load(std::memory_order_relaxed) & 2) == 0;
}

bool LogImpl::OpenFile(const std::wstring& path, File& file) {
    if (file.open.load(std::memory_order_acquire)) return true;
    std::lock_guard guard(m_lock);
    if (file.open.load(std::memory_order_relaxed)) return true;
    if (path.empty()) return false;
    const std::filesystem::path target(STLHelpers::WideToUtf8(path));
    std::error_code ignored;
    if (target.has_parent_path())
        std::filesystem::create_directories(target.parent_path(), ignored);
    if (file.file.Open(target.string()) != 0) return false;
    file.open.store(true, std::memory_order_release);
    return true;
}

bool LogImpl::AppendToMirror(const std::string& line) {
    // The mirror path is set once, under the lock, before m_initialized is published.
    if (!m_initialized.load(std::memory_order_acquire) || m_mirrorPath.empty()) return true;
    if (!OpenFile(m_mirrorPath, m_mirrorFile)) return false;
    return m_mirrorFile.file.Append(line) == 0;
}

bool LogImpl::FlushDelayedData() {
    if (ReadVariable(kDelayedVariable).empty()) return true;
    std::lock_guard guard(m_delayLock);
    const std::string delayed = ReadVariable(kDelayedVariable);
    if (delayed.empty()) return true;
    if (m_logFile.file.Append(delayed) != 0) return false;
    Platform::SetEnvironment(kDelayedVariable, std::string());
    return true;
}

bool LogImpl::Defer(const std::string& line) {
    std::lock_guard guard(m_delayLock);
    std::string delayed = ReadVariable(kDelayedVariable);
    if (CountCharacters(delayed) > kDelayedDataCap) return false;
    delayed += line;
    return Platform::SetEnvironment(kDelayedVariable, delayed) == 0;
}

bool LogImpl::Write(const std::wstring& line, int level, bool deferOnly) {
    const std::string text = STLHelpers::WideToUtf8(line);
    if (level < GetLevel()) {
        if (MirrorsAll()) AppendToMirror(text);
        return true;
    }
    if (!deferOnly && m_initialized.load(std::memory_order_acquire) &&
        OpenFile(m_logPath, m_logFile)) {
        if (!FlushDelayedData()) return false;
        AppendToMirror(text);
        return m_logFile.file.Append(text) == 0;
    }
    AppendToMirror(text);
    return Defer(text);
}

ILog* GetLog() {
    static Synchronization::ProcessWideObject<LogImpl> log;
    return log.Get();
}

}  // namespace Debugging
