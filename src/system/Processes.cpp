#include "system/Processes.h"

#include <locale>

#include "foundation/Reporting.h"
#include "foundation/TextConversion.h"
#include "platform/ProcTable.h"
#include "platform/ProcessHandle.h"
#include "platform/Spawn.h"
#include "system/CommandLine.h"
#include "system/FileHelpers.h"

namespace System {
namespace {

bool EqualIgnoringCase(const std::wstring& a, const std::wstring& b) {
    if (a.size() != b.size()) return false;
    const std::locale locale;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(a[i], locale) != std::tolower(b[i], locale)) return false;
    return true;
}

void ReportStartFailure(uint32_t error) {
    const ErrorCode code = ErrorCode::FromWin32(error);
    Reporting::ReportGuarded(
        STLHelpers::litestring_a::FromLiteral(
            "((CreateProcessW(0,&cmd.front(),0,0,0,flags,0,GetLocation(),&si,&pi)))"),
        &code);
}

}  // namespace

ProcessInfo StartProcess(const std::wstring& path, const std::wstring& arguments,
                         uint32_t /*flags*/, uint32_t* error) {
    if (error != nullptr) *error = path.empty() ? 2u : 0u;  // no file: ERROR_FILE_NOT_FOUND
    if (path.empty()) return {};
    const std::wstring commandLine = BuildCommandLine(path, arguments);
    const std::vector<std::wstring> argv = CommandLineToArgv(commandLine);
    // The program is what the command line names first: the path without its quotes. Its
    // folder is the working folder (a quoted path is not taken as a folder starting with a
    // quote).
    const std::wstring program = argv.empty() ? std::wstring() : argv.front();
    Platform::SpawnRequest request;
    request.executable = STLHelpers::WideToUtf8(program);
    request.workingFolder = STLHelpers::WideToUtf8(GetLocation(program));
    for (const std::wstring& argument : argv)
        request.arguments.push_back(STLHelpers::WideToUtf8(argument));

    auto handle = std::make_shared<Platform::ProcessHandle>();
    uint32_t pid = 0;
    const uint32_t failure = program.empty() ? 2u : Platform::SpawnProcess(request, *handle, &pid);
    if (failure != 0) {
        ReportStartFailure(failure);
        if (error != nullptr) *error = failure;
        return {};
    }
    return ProcessInfo(pid, std::move(handle));
}

bool EnumerateProcesses(std::vector<ProcessInfo>& list, bool clear) {
    if (clear) list.clear();
    std::vector<Platform::ProcessEntry> entries;
    if (Platform::ReadProcessTable(entries) != 0) return false;
    list.reserve(list.size() + entries.size());
    for (const Platform::ProcessEntry& entry : entries) {
        auto info = std::make_shared<ProcessSnapshot>();
        info->threadCount = entry.threadCount;
        info->basePriority = entry.basePriority;
        info->parentId = entry.parentPid;
        info->exeFile = STLHelpers::Utf8ToWide(entry.exeFile);
        list.emplace_back(entry.pid, nullptr, std::move(info));
    }
    return true;
}

bool FindProcessesByName(const std::wstring& name, std::vector<ProcessInfo>& list, bool clear) {
    if (clear) list.clear();
    std::vector<ProcessInfo> all;
    if (!EnumerateProcesses(all, true)) return false;
    for (const ProcessInfo& process : all)
        if (EqualIgnoringCase(GetFileName(process.GetExeName()), name)) list.push_back(process);
    return true;
}

}  // namespace System
