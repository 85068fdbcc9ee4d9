// The operations of UpdateEngine on the product's own process.
#include <new>
#include <utility>
#include <vector>

#include "engine/UpdateEngine.h"
#include "foundation/ErrorCodeText.h"
#include "foundation/Exceptions.h"
#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "platform/NamedEvent.h"
#include "platform/ProcessHandle.h"
#include "system/Processes.h"
#include "system/ShellHelpers.h"

namespace Engine {
namespace {

// Logs the text that `make()` builds, building it only when the log takes the line.
template <class Make>
void LogIf(const wchar_t* writer, int level, Make&& make) {
    Debugging::LogMessageIf(Debugging::GetLog(), STLHelpers::litestring(writer), level,
                            std::forward<Make>(make));
}

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
    constexpr const wchar_t* kFoundWriter = L"Engine:UpdateEngine:CloseRunningProduct@1";
    constexpr const wchar_t* kEndWriter = L"Engine:UpdateEngine:CloseRunningProduct@2";
    Platform::ProcessHandle product;
    const uint32_t productId = FindProductProcessId();
    Platform::ProcessHandle::Open(productId, product);
    LogIf(kFoundWriter, Debugging::LevelInfo, [&] {
        return (productId ? L"product " + settings.productExecutable + L" found: process " +
                                std::to_wstring(productId)
                          : L"no running product " + settings.productExecutable) +
               L"; asking it to exit through the event " + settings.exitEventName;
    });

    const std::string eventName = STLHelpers::WideToUtf8(settings.exitEventName);
    Platform::NamedEvent exitEvent;
    if (const uint32_t error = exitEvent.Create(eventName); error != 0) ThrowPlatformError(error);
    exitEvent.Set();

    bool gone;
    if (product.Wait(timeoutMs) == Platform::ProcessHandle::WaitResult::Ended) {
        gone = true;
        LogIf(kEndWriter, Debugging::LevelInfo,
              [&] { return L"product exited within " + std::to_wstring(timeoutMs) + L" ms"; });
    } else {
        const uint32_t killed = product.Kill();
        gone = killed == 0;
        // The kill is delivered at once, but the process needs a moment to go.
        if (gone) product.Wait(5000);
        LogIf(kEndWriter, gone ? Debugging::LevelWarning : Debugging::LevelError, [&] {
            const std::wstring wait = L"after " + std::to_wstring(timeoutMs) + L" ms";
            if (gone) return L"product did not exit " + wait + L" and was ended";
            return (productId ? L"product could not be ended " + wait + L": "
                              : L"no product to end " + wait + L": ") +
                   ErrorHandling::ErrorCodeText(ErrorCode::FromWin32(killed));
        });
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
    const bool started =
        System::ShellOpen(path, L"", minimized ? System::SW_SHOWMINIMIZED : System::SW_SHOW);
    LogIf(L"Engine:UpdateEngine:LaunchProduct@1",
          started ? Debugging::LevelInfo : Debugging::LevelError,
          [&] { return L"launch " + path + (started ? L": started" : L": failed"); });
    return started;
}

}  // namespace Engine
