// One Qt application for the whole UI test program, on the offscreen platform unless the
// environment names another. It lives until the program ends.
#pragma once

#include <QApplication>

#include <chrono>
#include <functional>
#include <thread>

#include "graphics/GuiSession.h"
#include "platform/Environment.h"

namespace TestSupport {

inline void EnsureQApplication() {
    if (!Platform::GetEnvironment("QT_QPA_PLATFORM"))
        Platform::SetEnvironment("QT_QPA_PLATFORM", "offscreen");
    // Never destroyed: a Qt application must not go down with the static objects at exit.
    static const auto* session = new CommonGuiLib::GuiSession;
    (void)session;
}

// Handles events until `condition` holds; false when it still does not after `timeoutMs`.
inline bool WaitFor(const std::function<bool()>& condition, int timeoutMs = 20000) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        QApplication::processEvents(QEventLoop::AllEvents, 20);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace TestSupport
