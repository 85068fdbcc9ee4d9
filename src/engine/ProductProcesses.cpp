// The operations of UpdateEngine on the product's own process.
#include <new>
#include <vector>

#include "engine/UpdateEngine.h"
#include "foundation/Exceptions.h"
#include "foundation/TextConversion.h"
#include "platform/NamedEvent.h"
#include "platform/ProcessHandle.h"
#include "system/Processes.h"
#include "system/ShellHelpers.h"

namespace Engine {
namespace {

[[noreturn]] void ThrowPlatformError(uint32_t win32Error) {
    const ErrorCode code = ErrorCode::FromWin32(win32Error);
    if (code.Value() == E_OUTOFMEMORY) throw std::bad_alloc();
    throw ErrorHandling::ComError(code.Value());
}

}  // namespace

uint32_t UpdateEngine::FindProductProcessId() {
    std::vector<System::ProcessInfo> matches;
    if (settings.productExecutable.empty() ||
        !System::FindProcessesByName(settings.productExecutable, matches) || matches.empty())
        return 0;
    return matches.front().GetId();
}

bool UpdateEngine::IsProductRunning() {
    return FindProductProcessId() > 0;
}

bool UpdateEngine::CloseRunningProduct(uint32_t timeoutMs) {
    Platform::ProcessHandle product;
    Platform::ProcessHandle::Open(FindProductProcessId(), product);

    const std::string eventName = STLHelpers::WideToUtf8(settings.exitEventName);
    Platform::NamedEvent exitEvent;
    if (const uint32_t error = exitEvent.Create(eventName); error != 0) ThrowPlatformError(error);
    exitEvent.Set();

    bool gone;
    if (product.Wait(timeoutMs) == Platform::ProcessHandle::WaitResult::Ended) {
        gone = true;
    } else {
        gone = product.Kill() == 0;
        // The kill is delivered at once, but the process needs a moment to go.
        if (gone) product.Wait(5000);
    }
    // The signal is for this product only: whatever the outcome, none may wait for a
    // product started later, which would exit at once. A signal nobody took is taken back;
    // and once no copy of the product runs, the name goes too, so that the next start makes
    // a fresh event. Copies still running keep the name they wait on.
    exitEvent.Wait(0);
    exitEvent.Close();
    if (FindProductProcessId() == 0) Platform::NamedEvent::Remove(eventName);
    return gone;
}

bool UpdateEngine::LaunchProduct(bool minimized) {
    std::wstring path = settings.installPath ? settings.installPath() : std::wstring();
    if (!path.empty() && path.back() != L'/') path += L'/';
    path += settings.productExecutable;
    return System::ShellOpen(path, L"", minimized ? System::SW_SHOWMINIMIZED : System::SW_SHOW);
}

}  // namespace Engine
