#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "foundation/Reporting.h"
#include "foundation/TextConversion.h"
#include "platform/ProcessHandle.h"
#include "support/RecordingSink.h"
#include "support/TestFiles.h"
#include "system/Environment.h"
#include "system/Processes.h"

namespace {

namespace fs = std::filesystem;
using System::ProcessInfo;

// What the helper recorded about its start.
struct Recorded {
    std::string folder;
    std::vector<std::string> arguments;
    std::vector<int> descriptors;
    std::string delayed;  // "<length> <first line>" of the log's delayed data, if any
};

class Processes : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(root.empty());
        output = root / "recorded.txt";
        System::SetEnvironmentValue(L"LUMETTA_HELPER_OUT", STLHelpers::Utf8ToWide(output.string()));
    }
    void TearDown() override {
        for (ProcessInfo& process : started) {
            process.Terminate(0);
            process.Wait(System::kInfinite);
        }
        for (const wchar_t* name :
             {L"LUMETTA_HELPER_OUT", L"LUMETTA_HELPER_SLEEP_MS", L"LUMETTA_HELPER_EXIT"})
            System::RemoveEnvironmentVariable(name);
    }

    // A copy of the helper under `name` in `folder` (below the test's folder).
    fs::path CopyHelper(const std::string& folder, const std::string& name) {
        const fs::path target = root / folder / name;
        fs::create_directories(target.parent_path());
        fs::copy_file(LUMETTA_TEST_ARGV, target);
        return target;
    }

    ProcessInfo Start(const fs::path& path, const std::wstring& arguments = L"") {
        ProcessInfo process =
            System::StartProcess(STLHelpers::Utf8ToWide(path.string()), arguments);
        if (process.HasHandle()) started.push_back(process);
        return process;
    }

    // The helper writes "arg <length> <text>" and "fd <n>" lines after the folder.
    Recorded Read() const {
        Recorded recorded;
        std::ifstream in(output);
        std::getline(in, recorded.folder);
        for (std::string line; std::getline(in, line);) {
            if (line.rfind("arg ", 0) == 0)
                recorded.arguments.push_back(line.substr(line.find(' ', 4) + 1));
            else if (line.rfind("fd ", 0) == 0)
                recorded.descriptors.push_back(std::stoi(line.substr(3)));
            else if (line.rfind("delayed ", 0) == 0)
                recorded.delayed = line.substr(8);
        }
        return recorded;
    }

    static void SleepInHelper(int ms) {
        System::SetEnvironmentValue(L"LUMETTA_HELPER_SLEEP_MS", std::to_wstring(ms));
    }

    TestSupport::RecordingSink sink;
    const TestSupport::ScopedReportingSink installed{&sink};
    TestSupport::TempFolder temp{"lumetta-process"};
    const fs::path& root = temp.Path();
    fs::path output;
    std::vector<ProcessInfo> started;
};

TEST_F(Processes, ArgumentsArriveAsTheWindowsRulesSplitThem) {
    const fs::path helper = CopyHelper("with space", "setup helper.exe");
    // A descriptor without close-on-exec must not reach the child.
    const int leaky = ::dup(1);
    ASSERT_GE(leaky, 3);

    const std::wstring arguments =
        L"/S /COMPONENTS=\"!suite\" \"two words\" back\\slash \"q\\\"uote\" \"\" Grüße";
    ProcessInfo process = Start(helper, arguments);
    ::close(leaky);
    ASSERT_TRUE(process.HasHandle());
    EXPECT_GT(process.GetId(), 0u);
    ASSERT_TRUE(process.Wait(60000));

    const Recorded recorded = Read();
    EXPECT_EQ(recorded.folder, (root / "with space").string()) << "the executable's folder";
    EXPECT_EQ(recorded.arguments,
              (std::vector<std::string>{helper.string(), "/S", "/COMPONENTS=!suite", "two words",
                                        "back\\slash", "q\"uote", "", "Grüße"}));
    EXPECT_TRUE(recorded.descriptors.empty()) << "no inherited descriptors";
    EXPECT_TRUE(sink.reports.empty());

    // A path in quotes already is not quoted again; without arguments the command line is
    // the quoted path alone.
    ProcessInfo quoted =
        System::StartProcess(L"\"" + STLHelpers::Utf8ToWide(helper.string()) + L"\"", L"");
    ASSERT_TRUE(quoted.HasHandle());
    ASSERT_TRUE(quoted.Wait(60000));
    EXPECT_EQ(Read().arguments, (std::vector<std::string>{helper.string()}));
    EXPECT_EQ(Read().folder, (root / "with space").string());
}

TEST_F(Processes, AChildStartsWithTheNewestDelayedLogLinesWhateverTheLogHolds) {
    // 300,000 bytes of delayed lines, far over the 128 KiB the kernel takes in one entry.
    std::string delayed;
    char line[16];
    for (int i = 0; i < 25000; ++i) {
        std::snprintf(line, sizeof line, "line %06d\n", i);
        delayed += line;
    }
    System::SetEnvironmentValue(L"Debugging_Log_DelayedData", STLHelpers::Utf8ToWide(delayed));
    ProcessInfo process = Start(LUMETTA_TEST_ARGV);
    System::RemoveEnvironmentVariable(L"Debugging_Log_DelayedData");
    ASSERT_TRUE(process.HasHandle()) << "the start failed";
    ASSERT_TRUE(process.Wait(60000));
    // The newest whole lines of 12 bytes beside "Debugging_Log_DelayedData=" and the NUL.
    const std::size_t kept = (128 * 1024 - 1 - 26) / 12;
    EXPECT_EQ(Read().delayed, std::to_string(kept * 12) + " line 0" + std::to_string(25000 - kept));
}

TEST_F(Processes, FailedStartsReportTheCheckAndGiveAnEmptyRecord) {
    ProcessInfo empty = System::StartProcess(L"", L"/S");
    EXPECT_FALSE(empty.HasHandle());
    EXPECT_EQ(empty.GetId(), 0u);
    EXPECT_TRUE(sink.reports.empty()) << "an empty path calls nothing";

    ProcessInfo missing =
        System::StartProcess(STLHelpers::Utf8ToWide((root / "missing.exe").string()), L"/S");
    EXPECT_FALSE(missing.HasHandle());
    EXPECT_EQ(missing.GetId(), 0u);
    EXPECT_FALSE(missing.Wait(0));
    ASSERT_EQ(sink.reports.size(), 1u);
    EXPECT_EQ(sink.reports[0].second, Reporting::GuardedError);
    EXPECT_EQ(sink.reports[0].first,
              L"Code 2: The system cannot find the file specified. "
              L"((CreateProcessW(0,&cmd.front(),0,0,0,flags,0,GetLocation(),&si,&pi)))");

    // A file that is no program.
    const fs::path text = root / "notes.txt";
    TestSupport::WriteFile(text, "not a program\n");
    fs::permissions(text, fs::perms::owner_all);
    EXPECT_FALSE(System::StartProcess(STLHelpers::Utf8ToWide(text.string()), L"").HasHandle());
    ASSERT_EQ(sink.reports.size(), 2u);
    EXPECT_EQ(sink.reports[1].second, Reporting::GuardedError);
}

TEST_F(Processes, WaitTimeOutTerminateAndReaping) {
    SleepInHelper(600000);
    ProcessInfo process = Start(LUMETTA_TEST_ARGV);
    ASSERT_TRUE(process.HasHandle());
    const uint32_t id = process.GetId();
    EXPECT_FALSE(process.Wait(0)) << "still running";
    EXPECT_FALSE(process.Wait(100));

    // Copies share the handle: a copy ends the process, the original sees it ended.
    ProcessInfo copy = process;
    EXPECT_EQ(copy.GetId(), id);
    EXPECT_TRUE(copy.Terminate(1));
    EXPECT_TRUE(process.Wait(60000));
    EXPECT_TRUE(process.Wait(0)) << "an ended process stays ended";
    EXPECT_EQ(process.GetHandle()->ExitStatus(), 128 + 9);
    // Reaped: no zombie is left under that id.
    EXPECT_FALSE(fs::exists("/proc/" + std::to_string(id)));

    // A process that ends by itself while nobody waits is reaped once its last record goes.
    System::SetEnvironmentValue(L"LUMETTA_HELPER_SLEEP_MS", L"0");
    System::SetEnvironmentValue(L"LUMETTA_HELPER_EXIT", L"7");
    uint32_t unwatched = 0;
    {
        ProcessInfo quick = System::StartProcess(STLHelpers::Utf8ToWide(LUMETTA_TEST_ARGV), L"");
        ASSERT_TRUE(quick.HasHandle());
        unwatched = quick.GetId();
        SleepInHelper(600000);
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (fs::exists("/proc/" + std::to_string(unwatched)) &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_FALSE(fs::exists("/proc/" + std::to_string(unwatched))) << "no zombie left";

    ProcessInfo none;
    EXPECT_FALSE(none.Wait(0));
    EXPECT_FALSE(none.HasHandle());
}

TEST_F(Processes, EnumeratedRecordsOpenAndTerminate) {
    std::vector<ProcessInfo> all;
    ASSERT_TRUE(System::EnumerateProcesses(all));
    ASSERT_FALSE(all.empty());
    bool foundSelf = false;
    for (std::size_t i = 0; i < all.size(); ++i) {
        EXPECT_FALSE(all[i].HasHandle());
        ASSERT_NE(all[i].GetSnapshot(), nullptr);
        if (i > 0) {
            EXPECT_LT(all[i - 1].GetId(), all[i].GetId()) << "ordered by id";
        }
        if (all[i].GetId() == static_cast<uint32_t>(::getpid())) {
            foundSelf = true;
            EXPECT_EQ(all[i].GetSnapshot()->parentId, static_cast<uint32_t>(::getppid()));
            EXPECT_GE(all[i].GetSnapshot()->threadCount, 1u);
            // The test may run niced: any class of the Windows scale.
            const int priority = all[i].GetSnapshot()->basePriority;
            EXPECT_TRUE(priority == 4 || priority == 6 || priority == 8 || priority == 10 ||
                        priority == 13)
                << priority;
            EXPECT_EQ(all[i].GetExeName(), L"system_tests");
        }
    }
    EXPECT_TRUE(foundSelf);
    const std::size_t count = all.size();
    ASSERT_TRUE(System::EnumerateProcesses(all, false));
    EXPECT_GE(all.size(), count + 1) << "appended";

    SleepInHelper(600000);
    const fs::path helper = CopyHelper("bin", "LumettaTarget.exe");
    ProcessInfo process = Start(helper);
    ASSERT_TRUE(process.HasHandle());
    std::vector<ProcessInfo> found;
    ASSERT_TRUE(System::FindProcessesByName(L"LumettaTarget.exe", found));
    ASSERT_EQ(found.size(), 1u);
    ProcessInfo record = found.front();
    EXPECT_EQ(record.GetId(), process.GetId());
    EXPECT_FALSE(record.HasHandle());
    EXPECT_TRUE(record.Terminate(1)) << "opens the process first";
    EXPECT_TRUE(record.HasHandle());
    EXPECT_TRUE(record.Wait(60000));
    EXPECT_TRUE(process.Wait(60000));

    // Records without an id or a snapshot fail their checks quietly.
    ProcessInfo blank;
    EXPECT_FALSE(blank.Open(System::kProcessAllAccess));
    EXPECT_FALSE(blank.Terminate(0));
    EXPECT_EQ(blank.GetExeName(), L"");
    ASSERT_EQ(sink.reports.size(), 3u);
    EXPECT_EQ(sink.reports[0].first, L"Code 0x80004005: Unspecified error ((!!m_id))");
    EXPECT_EQ(sink.reports[2].first, L"Code 0x80004005: Unspecified error ((m_pInfo))");
    EXPECT_EQ(sink.reports[2].second, Reporting::GuardedError);
    // An id that names no process: the open fails and leaves no handle.
    ProcessInfo gone(0x7FFFFFF0u, nullptr);
    EXPECT_FALSE(gone.Open(System::kProcessAllAccess));
    EXPECT_FALSE(gone.Terminate(0));
}

TEST_F(Processes, FindsCopiesInOrderIgnoringCaseAndAfterTheBinaryWasReplaced) {
    SleepInHelper(600000);
    const std::string name = "LumettaTwin" + std::to_string(::getpid()) + ".exe";
    const fs::path first = CopyHelper("one", name);
    const fs::path second = CopyHelper("two", name);
    ProcessInfo a = Start(first);
    ProcessInfo b = Start(second);
    ASSERT_TRUE(a.HasHandle());
    ASSERT_TRUE(b.HasHandle());

    std::wstring upper = STLHelpers::Utf8ToWide(name);
    for (wchar_t& c : upper) c = static_cast<wchar_t>(std::towupper(c));
    std::vector<ProcessInfo> found{ProcessInfo(1, nullptr)};
    ASSERT_TRUE(System::FindProcessesByName(upper, found));
    ASSERT_EQ(found.size(), 2u) << "the list is cleared first";
    EXPECT_LT(found[0].GetId(), found[1].GetId()) << "snapshot order";
    EXPECT_EQ(std::min(a.GetId(), b.GetId()), found[0].GetId());
    EXPECT_EQ(std::max(a.GetId(), b.GetId()), found[1].GetId());
    EXPECT_EQ(found[0].GetExeName(), STLHelpers::Utf8ToWide(name));

    // A setup replaces the binary under the running process: it still matches.
    fs::remove(first);
    fs::copy_file(LUMETTA_TEST_ARGV, first);
    ASSERT_TRUE(System::FindProcessesByName(STLHelpers::Utf8ToWide(name), found));
    EXPECT_EQ(found.size(), 2u);

    ASSERT_TRUE(System::FindProcessesByName(L"NoSuchProgram.exe", found));
    EXPECT_TRUE(found.empty()) << "nothing found is still success";
}

}  // namespace
