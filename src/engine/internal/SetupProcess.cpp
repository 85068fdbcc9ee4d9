#include "engine/internal/SetupProcess.h"

#include "system/ProcessInfo.h"
#include "system/Processes.h"

namespace Engine {

struct SetupProcess::State {
    System::ProcessInfo process;
};

SetupProcess::SetupProcess() : state(std::make_unique<State>()) {}
SetupProcess::~SetupProcess() = default;

bool SetupProcess::Start(const std::wstring& path, const std::wstring& arguments) {
    state->process = System::StartProcess(path, arguments, System::kCreateNoWindow);
    id.store(state->process.GetId());
    return state->process.HasHandle();
}

bool SetupProcess::HasHandle() const {
    return state->process.HasHandle();
}

bool SetupProcess::Wait(uint32_t timeoutMs) {
    return state->process.HasHandle() && state->process.Wait(timeoutMs);
}

void SetupProcess::Terminate() {
    // Without an identifier there is nothing to end (and nothing worth a report).
    if (state->process.GetId() == 0) return;
    // Reaped right away, so the ended setup does not linger as a zombie.
    if (state->process.Terminate(0)) state->process.Wait(5000);
}

}  // namespace Engine
