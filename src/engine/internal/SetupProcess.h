// The setup program the worker starts: its start, the wait for it, and its end on cancel.
//
// Thread safety: Start and Wait on the worker thread; Terminate and GetId from the
// controlling thread only after the worker thread has ended (or from the worker thread).
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace Engine {

class SetupProcess {
public:
    SetupProcess();
    ~SetupProcess();

    // Starts `path` in its own folder, the argument text split as a Windows command line
    // would be. False when it cannot be started (reported at level GuardedError; the Win32
    // error number goes to `error` when given).
    bool Start(const std::wstring& path, const std::wstring& arguments, uint32_t* error = nullptr);
    bool HasHandle() const;
    uint32_t GetId() const { return id.load(); }

    // Waits until the process ends (true) or `timeoutMs` passes (0xFFFFFFFF: no limit).
    // False at once without a started process.
    bool Wait(uint32_t timeoutMs);

    // The exit code (128 + signal for a signal) once Wait has seen the process end.
    std::optional<int> ExitCode() const;

    // Ends the process if it still runs; nothing without a started process.
    void Terminate();

private:
    struct State;
    std::unique_ptr<State> state;
    std::atomic<uint32_t> id{0};
};

}  // namespace Engine
