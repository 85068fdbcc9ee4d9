// Lines per second through LogMessage: below the threshold (dropped, or mirrored when the
// mirror takes every line) and above it (appended to the log file), from 1 and 4 threads.
//
//   build/bench/bench_log
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "foundation/LogImpl.h"
#include "platform/Environment.h"

namespace {

namespace fs = std::filesystem;

fs::path Folder() {
    static const fs::path folder =
        fs::temp_directory_path() / ("lumetta-bench-log-" + std::to_string(::getpid()));
    return folder;
}

// A log configured with threshold 3, optionally with a mirror that takes every line.
Debugging::LogImpl* MakeLog(bool mirror) {
    fs::remove_all(Folder());
    Platform::SetEnvironment("Debugging_Log_Path", (Folder() / "bench.log").string());
    Platform::SetEnvironment("Debugging_Log_Level", "3");
    Platform::UnsetEnvironment("Debugging_Log_DelayedData");
    Platform::SetEnvironment("LUMETTA_REGISTRY_DIR", Folder().string());
    if (mirror)
        Platform::SetEnvironment("Debugging_Mirror_Path", (Folder() / "mirror.log").string());
    else
        Platform::UnsetEnvironment("Debugging_Mirror_Path");
    Platform::SetEnvironment("Debugging_Log_Flags", mirror ? "0" : "2");
    auto* log = new Debugging::LogImpl;
    log->EnsureConfigured();
    return log;
}

Debugging::LogImpl* shared = nullptr;

void Run(benchmark::State& state, int level, bool mirror) {
    if (state.thread_index() == 0) shared = MakeLog(mirror);
    const std::wstring message =
        L"ResourceLib: could not find resource \"Caption\" in skin Default";
    for (auto _ : state)
        benchmark::DoNotOptimize(
            Debugging::LogMessage(shared, message, L"ResourceLib:ManagerImpl:Find@42", level));
    state.SetItemsProcessed(state.iterations());
    if (state.thread_index() == 0) {
        delete shared;
        shared = nullptr;
        fs::remove_all(Folder());
    }
}

void BelowThresholdDropped(benchmark::State& state) {
    Run(state, 2, false);
}
void BelowThresholdMirrored(benchmark::State& state) {
    Run(state, 2, true);
}
void AboveThreshold(benchmark::State& state) {
    Run(state, 4, false);
}
void AboveThresholdMirrored(benchmark::State& state) {
    Run(state, 4, true);
}

BENCHMARK(BelowThresholdDropped)->Threads(1)->Threads(4);
BENCHMARK(BelowThresholdMirrored)->Threads(1)->Threads(4);
BENCHMARK(AboveThreshold)->Threads(1)->Threads(4);
BENCHMARK(AboveThresholdMirrored)->Threads(1);

}  // namespace
