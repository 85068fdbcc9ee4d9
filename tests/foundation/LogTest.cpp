#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "foundation/Log.h"
#include "foundation/LogImpl.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"
#include "platform/NativeThread.h"
#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"

namespace {

namespace fs = std::filesystem;
using Debugging::LogImpl;
using Debugging::LogMessage;

using TestSupport::ReadFile;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
        lines.push_back(text.substr(start, end - start));
    if (start < text.size()) lines.push_back(text.substr(start) + "<unterminated>");
    return lines;
}

// The header without its time: tag, thread, name, each padded, as the log writes them.
std::string Header(const char* tag, const std::string& name) {
    std::string thread = std::to_string(Platform::CurrentNativeThreadId()).substr(0, 5);
    thread.resize(5, ' ');
    std::string padded = name;
    if (padded.size() < 48) padded.resize(48, ' ');
    return std::string(tag) + " " + thread + " " + padded + " ";
}

// Checks the time stamp and returns the rest of the line.
std::string AfterTime(const std::string& line) {
    static const std::regex time(R"(\d{4}\.\d\d\.\d\d \d\d:\d\d:\d\d )");
    EXPECT_TRUE(line.size() >= 20 && std::regex_match(line.substr(0, 20), time)) << line;
    return line.size() >= 20 ? line.substr(20) : line;
}

// Each test configures its own environment and builds its own log object, since a log
// keeps its configuration once read.
class Log : public ::testing::Test {
protected:
    void SetUp() override {
        saved.UnsetAll();
        ASSERT_FALSE(folder.empty());
        fs::create_directories(folder / "registry");
        Platform::SetEnvironment("LUMETTA_REGISTRY_DIR", (folder / "registry").string());
        logPath = folder / "logs" / "updater.log";
    }
    void TearDown() override {
        Debugging::SetThreadLogStream(nullptr);
        Debugging::SetThreadLogThreshold(6);
        Debugging::SetThreadLogIndent(0);
    }

    void Configure(const char* level) {
        Platform::SetEnvironment("Debugging_Log_Path", logPath.string());
        if (level != nullptr) Platform::SetEnvironment("Debugging_Log_Level", level);
    }

    void RegistryLevel(uint32_t level) {
        char value[16];
        std::snprintf(value, sizeof value, "%08x", level);
        TestSupport::WriteFile(
            folder / "registry" / "HKEY_CURRENT_USER.reg",
            std::string("Windows Registry Editor Version 5.00\r\n\r\n"
                        "[HKEY_CURRENT_USER\\Software\\Utility\\Debugging\\LogImpl]\r\n"
                        "\"Level\"=dword:") +
                value + "\r\n");
    }

    static std::string Delayed() {
        return Platform::GetEnvironment("Debugging_Log_DelayedData").value_or("");
    }

    TestSupport::TempFolder temp{"lumetta-log"};
    const fs::path& folder = temp.Path();
    fs::path logPath;
    const TestSupport::ScopedEnvironment saved{"Debugging_Log_Path",        "Debugging_Log_Level",
                                               "Debugging_Mirror_Path",     "Debugging_Log_Flags",
                                               "Debugging_Log_DelayedData", "LUMETTA_REGISTRY_DIR"};
};

TEST_F(Log, LinesAreByteExact) {
    Configure("0");
    LogImpl log;
    EXPECT_TRUE(LogMessage(&log, L"plain message", L"ResourceLib:IManager:Load@12", 3));
    EXPECT_TRUE(LogMessage(&log, L"a\nb", L"Writer@1", 6));
    EXPECT_TRUE(LogMessage(&log, L"continued", L"Writer@1", 6, Debugging::kLogContinuation));
    const std::wstring fifty = L"N" + std::wstring(48, L'x') + L"Z";
    EXPECT_TRUE(LogMessage(&log, L"long name", fifty.c_str(), 4));
    const std::wstring exact(48, L'n');
    EXPECT_TRUE(LogMessage(&log, L"Grüße ☃ \u00e9", exact.c_str(), 7));
    EXPECT_TRUE(LogMessage(&log, L"own name", L"", 2));

    const std::vector<std::string> lines = Lines(ReadFile(logPath));
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(AfterTime(lines[0]), Header("WRN", "ResourceLib:IManager:Load@12") + "plain message");
    EXPECT_EQ(AfterTime(lines[1]), Header("OBL", "Writer@1") + "a");
    EXPECT_EQ(lines[2], std::string(79, ' ') + "b");
    EXPECT_EQ(lines[3], std::string(79, ' ') + "continued");
    EXPECT_EQ(AfterTime(lines[4]), Header("ERR", "?" + std::string(46, 'x') + "Z") + "long name");
    EXPECT_EQ(AfterTime(lines[5]),
              Header("UNK", std::string(48, 'n')) + "Gr\xC3\xBC\xC3\x9F\x65 \xE2\x98\x83 \xC3\xA9");
    EXPECT_EQ(AfterTime(lines[6]), Header("INF", "foundation_tests") + "own name");
    EXPECT_STREQ(Debugging::LevelTag(0), L"DIS");
}

TEST_F(Log, ConfigurationFromEnvironmentAndRegistry) {
    {
        // No path: nothing is written, yet a line at the default threshold is kept.
        LogImpl log;
        EXPECT_FALSE(log.EnsureConfigured());
        EXPECT_TRUE(LogMessage(&log, L"kept", L"W", 5));
        EXPECT_TRUE(LogMessage(&log, L"dropped", L"W", 4));
        const std::vector<std::string> kept = Lines(Delayed());
        ASSERT_EQ(kept.size(), 1u);
        EXPECT_EQ(AfterTime(kept[0]), Header("CRT", "W") + "kept");
        Platform::UnsetEnvironment("Debugging_Log_DelayedData");
    }
    {
        // Out of range: unconfigured even though the registry names a valid level; the
        // configuration is tried again on each call and succeeds once the value is fixed.
        Configure("7");
        RegistryLevel(2);
        LogImpl log;
        EXPECT_FALSE(log.EnsureConfigured());
        EXPECT_EQ(log.GetLevel(), 5);
        Platform::SetEnvironment("Debugging_Log_Level", "4");
        EXPECT_EQ(log.GetLevel(), 2);
    }
    struct Case {
        const char* level;  // null: missing
        std::optional<uint32_t> registry;
        int expected;
    };
    const Case cases[] = {
        {"4", 1u, 1},
        {"4", 9u, 4},
        {nullptr, std::nullopt, 0},
        {"", std::nullopt, 0},
        {" 3", std::nullopt, 0},
        {"+3", std::nullopt, 3},
        {"6", 0xFFFFFFFFu, 6},
    };
    for (const Case& c : cases) {
        Platform::UnsetEnvironment("Debugging_Log_Level");
        fs::remove(folder / "registry" / "HKEY_CURRENT_USER.reg");
        Configure(c.level);
        if (c.registry) RegistryLevel(*c.registry);
        LogImpl log;
        EXPECT_TRUE(log.EnsureConfigured()) << (c.level ? c.level : "(missing)");
        EXPECT_EQ(log.GetLevel(), c.expected) << (c.level ? c.level : "(missing)");
    }
    Platform::SetEnvironment("Debugging_Log_Level", "-1");
    EXPECT_FALSE(LogImpl().EnsureConfigured());
    // A path over 1024 characters reads as empty.
    Platform::SetEnvironment("Debugging_Log_Level", "0");
    Platform::SetEnvironment("Debugging_Log_Path", "/tmp/" + std::string(1100, 'p'));
    EXPECT_FALSE(LogImpl().EnsureConfigured());
}

TEST_F(Log, DelayedLinesAppearAtTheTopOnceTheFileOpens) {
    // A file where the log's folder should be keeps the log file from opening.
    TestSupport::WriteFile(folder / "logs", "in the way");
    Configure("3");
    LogImpl log;
    EXPECT_TRUE(LogMessage(&log, L"first", L"W", 3));
    EXPECT_TRUE(LogMessage(&log, L"second\nsecond-b", L"W", 4));
    EXPECT_TRUE(LogMessage(&log, L"below", L"W", 2));

    fs::remove(folder / "logs");
    EXPECT_TRUE(LogMessage(&log, L"deferred", L"W", 5, Debugging::kLogDeferred));
    EXPECT_FALSE(fs::exists(logPath)) << "a deferred line never opens the file";
    EXPECT_TRUE(LogMessage(&log, L"third", L"W", 5));
    EXPECT_EQ(Delayed(), "") << "written out and emptied";

    const std::vector<std::string> lines = Lines(ReadFile(logPath));
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(AfterTime(lines[0]), Header("WRN", "W") + "first");
    EXPECT_EQ(AfterTime(lines[1]), Header("ERR", "W") + "second");
    EXPECT_EQ(lines[2], std::string(79, ' ') + "second-b");
    EXPECT_EQ(AfterTime(lines[3]), Header("CRT", "W") + "deferred");
    EXPECT_EQ(AfterTime(lines[4]), Header("CRT", "W") + "third");

    // A child started meanwhile would write the inherited lines first in the same way.
    Platform::SetEnvironment("Debugging_Log_DelayedData", "inherited\r\n");
    LogImpl child;
    EXPECT_TRUE(LogMessage(&child, L"fourth", L"W", 5));
    const std::vector<std::string> after = Lines(ReadFile(logPath));
    ASSERT_EQ(after.size(), 7u);
    EXPECT_EQ(after[5], "inherited");
}

TEST_F(Log, DelayedDataIsCappedAndReadBeyondTheEnvironmentLimit) {
    LogImpl log;  // unconfigured: every line at 5 or above is kept
    const std::wstring chunk(2000, L'c');
    EXPECT_TRUE(LogMessage(&log, chunk, L"W", 5));
    EXPECT_TRUE(LogMessage(&log, chunk, L"W", 5));
    EXPECT_EQ(Lines(Delayed()).size(), 2u) << "the older line survives past 1024 characters";

    Platform::SetEnvironment("Debugging_Log_DelayedData",
                             std::string(LogImpl::kDelayedDataCap, 'x'));
    EXPECT_TRUE(LogMessage(&log, L"at the cap", L"W", 5)) << "not above the cap yet";
    EXPECT_FALSE(LogMessage(&log, L"over the cap", L"W", 5));
    EXPECT_EQ(Lines(Delayed()).size(), 1u);
    EXPECT_NE(Delayed().find("at the cap"), std::string::npos);
}

TEST_F(Log, MirrorTakesEveryLineOrOnlyThoseThatPass) {
    const fs::path mirror = folder / "mirror" / "mirror.log";
    Configure("5");
    Platform::SetEnvironment("Debugging_Mirror_Path", mirror.string());
    {
        LogImpl log;
        EXPECT_TRUE(LogMessage(&log, L"warning", L"W", 3));
        EXPECT_FALSE(fs::exists(logPath)) << "below the threshold: no log file is opened";
        EXPECT_TRUE(LogMessage(&log, L"critical", L"W", 5));
        EXPECT_TRUE(LogMessage(&log, L"deferred", L"W", 6, Debugging::kLogDeferred));
        const std::vector<std::string> mirrored = Lines(ReadFile(mirror));
        ASSERT_EQ(mirrored.size(), 3u);
        EXPECT_EQ(AfterTime(mirrored[0]), Header("WRN", "W") + "warning");
        EXPECT_EQ(AfterTime(mirrored[1]), Header("CRT", "W") + "critical");
        EXPECT_EQ(AfterTime(mirrored[2]), Header("OBL", "W") + "deferred");
        const std::vector<std::string> logged = Lines(ReadFile(logPath));
        ASSERT_EQ(logged.size(), 1u);
        EXPECT_EQ(AfterTime(logged[0]), Header("CRT", "W") + "critical");
        EXPECT_EQ(Lines(Delayed()).size(), 1u) << "the deferred line waits for the file";
        Platform::UnsetEnvironment("Debugging_Log_DelayedData");
    }
    fs::remove(mirror);
    fs::remove(logPath);
    Platform::SetEnvironment("Debugging_Log_Flags", "2");
    {
        LogImpl log;
        EXPECT_TRUE(LogMessage(&log, L"warning", L"W", 3)) << "dropped, not failed";
        EXPECT_FALSE(fs::exists(mirror)) << "appears nowhere";
        EXPECT_TRUE(LogMessage(&log, L"critical", L"W", 5));
        EXPECT_EQ(Lines(ReadFile(mirror)).size(), 1u);
        EXPECT_EQ(Lines(ReadFile(logPath)).size(), 1u);
    }
}

// LogWants tells a writer whether a line would reach the file, the delayed data or the
// mirror, so that a line nobody takes is never built.
TEST_F(Log, LogWantsOnlyLinesThatWouldGoSomewhere) {
    struct Case {
        const char* level;  // null: no log path, so unconfigured
        bool mirror;
        const char* flags;
        int threadThreshold;
        const char* wanted;  // for levels 0 to 6
    };
    const Case cases[] = {
        {nullptr, false, "0", 6, "0000011"},  // the delayed data takes 5 and 6
        {nullptr, true, "0", 6, "0000011"},   // no mirror before the configuration is read
        {"3", false, "0", 6, "0001111"},     {"5", true, "0", 6, "1111111"},
        {"5", true, "2", 6, "0000011"},      {"3", false, "0", 1, "0111111"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << (c.level ? c.level : "off") << c.mirror << c.flags << c.threadThreshold);
        Platform::UnsetEnvironment("Debugging_Log_Path");
        if (c.level) Configure(c.level);
        if (c.mirror)
            Platform::SetEnvironment("Debugging_Mirror_Path", (folder / "mirror.log").string());
        else
            Platform::UnsetEnvironment("Debugging_Mirror_Path");
        Platform::SetEnvironment("Debugging_Log_Flags", c.flags);
        Debugging::SetThreadLogThreshold(c.threadThreshold);
        LogImpl log;
        std::string wanted;
        for (int level = 0; level <= 6; ++level)
            wanted += Debugging::LogWants(&log, level) ? '1' : '0';
        EXPECT_EQ(wanted, c.wanted);
    }
    EXPECT_FALSE(Debugging::LogWants(nullptr, 6));
}

TEST_F(Log, ThreadSettingsShapeTheThreadsLines) {
    Configure("0");
    LogImpl log;
    Debugging::SetThreadLogIndent(2);
    EXPECT_TRUE(LogMessage(&log, L"indented", L"W", 1));
    Debugging::SetThreadLogIndent(0);

    // With a private stream, repeated lines of one level share one header.
    std::ostringstream stream;
    Debugging::SetThreadLogStream(&stream);
    EXPECT_TRUE(LogMessage(&log, L"one", L"W", 2));
    EXPECT_TRUE(LogMessage(&log, L"two", L"W", 2));
    Debugging::ForceThreadLogHeader();
    EXPECT_TRUE(LogMessage(&log, L"three", L"W", 2));
    EXPECT_TRUE(LogMessage(&log, L"to the file", L"W", 2, Debugging::kLogDeferred));
    Debugging::SetThreadLogStream(nullptr);
    const std::vector<std::string> streamed = Lines(stream.str());
    ASSERT_EQ(streamed.size(), 3u);
    EXPECT_EQ(AfterTime(streamed[0]), Header("INF", "W") + "one");
    EXPECT_EQ(streamed[1], std::string(79, ' ') + "two");
    EXPECT_EQ(AfterTime(streamed[2]), Header("INF", "W") + "three");

    const std::vector<std::string> lines = Lines(ReadFile(logPath));
    ASSERT_EQ(lines.size(), 1u) << ReadFile(logPath);
    EXPECT_EQ(AfterTime(lines[0]), Header("DBG", "W") + "  indented");

    // The effective threshold is the smaller of the thread's and the log's: a thread may
    // let more lines through than the log would.
    Platform::SetEnvironment("Debugging_Log_Level", "5");
    LogImpl strict;
    EXPECT_TRUE(LogMessage(&strict, L"warning, thread at 6", L"W", 3));
    Debugging::SetThreadLogThreshold(1);
    EXPECT_TRUE(LogMessage(&strict, L"warning, thread at 1", L"W", 3));
    const std::vector<std::string> after = Lines(ReadFile(logPath));
    ASSERT_EQ(after.size(), 3u);
    EXPECT_EQ(after[1], std::string(79, ' ') + "to the file")
        << "the deferred line, with no header since it followed a line of its level";
    EXPECT_EQ(AfterTime(after[2]), Header("WRN", "W") + "warning, thread at 1");

    EXPECT_FALSE(LogMessage(nullptr, L"no log", L"W", 6));
}

TEST_F(Log, EightThreadsWritingTenThousandLinesEachNeverBreakALine) {
    Configure("0");
    LogImpl log;
    constexpr int kThreads = 8, kLines = 10000;
    // Lines of different lengths make a torn line visible.
    auto text = [](int t, int i) {
        return std::to_string(t) + ":" + std::to_string(i) + ":" +
               std::string(static_cast<std::size_t>(i % 97), static_cast<char>('a' + t));
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            const std::wstring name = L"Writer" + std::to_wstring(t);
            for (int i = 0; i < kLines; ++i)
                EXPECT_TRUE(LogMessage(&log, STLHelpers::Utf8ToWide(text(t, i)), name.c_str(), 2));
        });
    }
    for (auto& thread : threads) thread.join();

    const std::vector<std::string> lines = Lines(ReadFile(logPath));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(kThreads * kLines));
    std::vector<int> next(kThreads, 0);
    for (const std::string& line : lines) {
        int t = -1, i = -1;
        ASSERT_EQ(
            std::sscanf(line.c_str() + std::min<std::size_t>(line.size(), 79), "%d:%d", &t, &i), 2)
            << line;
        ASSERT_TRUE(t >= 0 && t < kThreads) << line;
        EXPECT_EQ(i, next[t]) << "each thread's lines arrive whole and in order";
        next[t] = i + 1;
        EXPECT_EQ(line.substr(79), text(t, i));
        EXPECT_EQ(line.substr(20, 4) + line.substr(30, 7), "INF Writer" + std::to_string(t));
    }
}

}  // namespace
