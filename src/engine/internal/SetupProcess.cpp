#include "engine/internal/SetupProcess.h"

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

bool SetupProcess::Wait(uint32_t timeoutMs) {
    return state->process.HasHandle() && state->process.Wait(timeoutMs);
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
