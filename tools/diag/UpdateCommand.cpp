// lumetta-diag update [--launch] [--setup-timeout-ms N] [ARGS...]: one whole update without
// the dialog, configured by the updater arguments ARGS. Like the updater's start-up it first
// makes a running product exit (unless /runWithProduct), then downloads and installs,
// printing each state and the progress; with --launch it starts the installed product
// afterwards. Exit status 0 when the update succeeded, 1 when it failed, 2 when the running
// product could not be ended or the update could not begin.
//
// After the result it tells what happened, one line per step with the level tag the
// diagnostic log gives it, and after a failure a last line with the reason in words.
#include <CLI/CLI.hpp>

#include <condition_variable>
#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "DiagCommands.h"
#include "app/ProductConfiguration.h"
#include "engine/Timeouts.h"
#include "engine/UpdateEngine.h"
#include "engine/UpdateReport.h"
#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"

namespace {

constexpr uint32_t kProductExitTimeoutMs = 2000;

// Prints states as they come and progress at most once per percent (or per MiB when the
// size is unknown), so that a large download does not flood the terminal.
class Printer : public Engine::IUpdateEvents {
public:
    explicit Printer(Engine::UpdateEngine& engine) : engine(engine) {}

    void OnStateChanged() override {
        const Engine::UpdateState state = engine.GetState();
        std::printf("state %u %s\n", static_cast<unsigned>(state), Engine::UpdateStateName(state));
        std::fflush(stdout);
        if (state == Engine::Finished) {
            std::lock_guard lock(mutex);
            finished = true;
            changed.notify_all();
        }
    }

    void OnProgress() override {
        const uint32_t total = engine.GetTotalSize(), done = engine.GetDownloadedSize();
        const uint64_t step = total ? uint64_t{done} * 100 / total : done >> 20;
        if (step == lastStep) return;
        lastStep = step;
        std::printf("progress %u / %u\n", done, total);
        std::fflush(stdout);
    }

    void WaitUntilFinished() {
        std::unique_lock lock(mutex);
        changed.wait(lock, [&] { return finished; });
    }

private:
    Engine::UpdateEngine& engine;
    uint64_t lastStep = ~uint64_t{0};
    std::mutex mutex;
    std::condition_variable changed;
    bool finished = false;
};

int RunUpdate(const std::vector<std::string>& args, bool launch, uint32_t setupTimeoutMs) {
    std::vector<std::wstring> arguments{System::GetModulePath()};
    for (const auto& arg : args) arguments.push_back(STLHelpers::Utf8ToWide(arg));
    ProductConfiguration configuration(std::move(arguments));
    if (setupTimeoutMs) Engine::Testing::SetTimeouts(0, 0, setupTimeoutMs);

    Engine::ProductSettings settings;
    settings.downloadURL = configuration.GetDownloadURL();
    settings.silent = configuration.IsSilent();
    settings.publicKey = configuration.GetPublicKey();
    settings.productExecutable = configuration.GetProductExecutable();
    settings.exitEventName = configuration.GetExitEventName();
    settings.installPath = [&configuration] { return configuration.GetInstallPath(); };
    std::printf("download %s\n", STLHelpers::WideToUtf8(settings.downloadURL).c_str());

    Engine::UpdateEngine engine(std::move(settings));
    std::printf("setup file %s\n",
                STLHelpers::WideToUtf8(engine.GetWorker().GetSetupFilePath()).c_str());
    if (!configuration.IsRunWithProduct() && engine.IsProductRunning()) {
        std::printf("closing the running product\n");
        if (!engine.CloseRunningProduct(kProductExitTimeoutMs)) {
            std::fprintf(stderr, "lumetta-diag: the running product cannot be ended\n");
            return 2;
        }
    }

    Printer printer(engine);
    engine.AddListener(&printer);
    if (!engine.Start()) {
        std::fprintf(stderr, "lumetta-diag: the update cannot be started\n");
        return 2;
    }
    printer.WaitUntilFinished();
    engine.GetWorker().WaitForEnd(ThreadLib::kInfinite);
    engine.RemoveListener(&printer);

    const bool failed = engine.IsFailed();
    std::printf("result %s\n", failed ? "failed" : "installed");
    const Engine::UpdateReport& report = engine.GetWorker().GetReport();
    for (const Engine::ReportLine& line : Engine::DescribeRun(report))
        std::printf("%s %s\n", STLHelpers::WideToUtf8(Debugging::LevelTag(line.level)).c_str(),
                    STLHelpers::WideToUtf8(line.text).c_str());
    if (failed)
        std::printf("reason: %s\n", STLHelpers::WideToUtf8(Engine::FailureReason(report)).c_str());
    if (!failed && launch) {
        const bool launched = engine.LaunchProduct(false);
        std::printf("launch %s\n", launched ? "started" : "failed");
        if (!launched) return 1;
    }
    return failed ? 1 : 0;
}

const DiagCommands::Registration registration{
    "update", [](CLI::App& app) {
        auto* update =
            app.add_subcommand("update", "Run one update without the dialog, showing its progress");
        auto args = std::make_shared<std::vector<std::string>>();
        auto launch = std::make_shared<bool>(false);
        auto timeout = std::make_shared<uint32_t>(0);
        update->add_flag("--launch", *launch, "Start the installed product after a success");
        update->add_option("--setup-timeout-ms", *timeout,
                           "Limit of a silent setup run instead of 300000 ms");
        update->add_option("ARGS", *args, "Updater arguments, e.g. /downloadURL URL /isSilent 0");
        update->callback([=]() {
            try {
                DiagCommands::SetExitCode(RunUpdate(*args, *launch, *timeout));
            } catch (const std::exception& e) {
                std::fprintf(stderr, "lumetta-diag: %s\n", e.what());
                DiagCommands::SetExitCode(2);
            }
        });
    }};

}  // namespace
