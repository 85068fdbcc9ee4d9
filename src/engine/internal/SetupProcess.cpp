#include "engine/internal/SetupProcess.h"

#include <algorithm>
#include <chrono>

#include "platform/ProcessHandle.h"
#include "system/ProcessInfo.h"
#include "system/Processes.h"

namespace Engine {

struct SetupProcess::State {
    System::ProcessInfo process;
};

SetupProcess::SetupProcess() : state(std::make_unique<State>()) {}
SetupProcess::~SetupProcess() = default;

bool SetupProcess::Start(const std::wstring& path, const std::wstring& arguments, uint32_t* error) {
    state->process = System::StartProcess(path, arguments, System::kCreateNoWindow, error);
    id.store(state->process.GetId());
    return state->process.HasHandle();
}

bool SetupProcess::HasHandle() const {
    return state->process.HasHandle();
}

SetupProcess::WaitResult SetupProcess::Wait(uint32_t timeoutMs, const std::atomic<bool>* stop) {
    if (!state->process.HasHandle()) return WaitResult::Failed;
    // In steps, to look at the stop request between them.
    constexpr int64_t kStepMs = 50;
    const auto start = std::chrono::steady_clock::now();
    for (;;) {
        int64_t step = kStepMs;
        if (timeoutMs != System::kInfinite) {
            const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
                                     std::chrono::steady_clock::now() - start)
                                     .count();
            step = std::clamp<int64_t>(static_cast<int64_t>(timeoutMs) - elapsed, 0, kStepMs);
        }
        if (state->process.Wait(static_cast<uint32_t>(step))) return WaitResult::Ended;
        if (stop && stop->load()) return WaitResult::Stopped;
        if (timeoutMs != System::kInfinite && step < kStepMs) return WaitResult::TimedOut;
    }
}

std::optional<int> SetupProcess::ExitCode() const {
    const auto& handle = state->process.GetHandle();
    return handle ? handle->ExitStatus() : std::nullopt;
}

void SetupProcess::Terminate() {
    // Without an identifier there is nothing to end (and nothing worth a report).
    if (state->process.GetId() == 0) return;
    // Reaped right away, so the ended setup does not linger as a zombie.
    if (state->process.Terminate(0)) state->process.Wait(5000);
}

}  // namespace Engine
