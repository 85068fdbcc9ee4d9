// lumetta-diag ps NAME: the running processes whose executable file name is NAME (ignoring
// case), found the way the updater looks for a running product, one per line:
// identifier, parent, threads, executable file name. Exit status 0 when one was found,
// 1 when none, 2 when the processes cannot be listed.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "DiagCommands.h"
#include "foundation/TextConversion.h"
#include "system/Processes.h"

namespace {

int ListProcesses(const std::string& name) {
    std::vector<System::ProcessInfo> found;
    if (!System::FindProcessesByName(STLHelpers::Utf8ToWide(name), found)) {
        std::fprintf(stderr, "lumetta-diag: cannot list the running processes\n");
        return 2;
    }
    if (found.empty()) {
        std::printf("no process named %s\n", name.c_str());
        return 1;
    }
    std::printf("%-8s %-8s %-7s %s\n", "PID", "PARENT", "THREADS", "NAME");
    for (const System::ProcessInfo& process : found) {
        const System::ProcessSnapshot* info = process.GetSnapshot();
        std::printf("%-8u %-8u %-7u %s\n", process.GetId(), info->parentId, info->threadCount,
                    STLHelpers::WideToUtf8(info->exeFile).c_str());
    }
    return 0;
}

const DiagCommands::Registration registration{
    "ps", [](CLI::App& app) {
        auto* ps = app.add_subcommand(
            "ps", "List the running processes whose executable is NAME, as the updater finds them");
        auto name = std::make_shared<std::string>();
        ps->add_option("NAME", *name, "Executable file name, e.g. LumettaPlayer.exe")->required();
        ps->callback([name]() { DiagCommands::SetExitCode(ListProcesses(*name)); });
    }};

}  // namespace
