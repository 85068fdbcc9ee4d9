// One QApplication for the whole UI test program, on the offscreen platform unless the
// environment names another. It lives until the program ends.
#pragma once

#include <QApplication>

#include "platform/Environment.h"

namespace TestSupport {

inline void EnsureQApplication() {
    if (qApp != nullptr) return;
    if (!Platform::GetEnvironment("QT_QPA_PLATFORM"))
        Platform::SetEnvironment("QT_QPA_PLATFORM", "offscreen");
    static int argc = 1;
    static char name[] = "ui_tests";
    static char* argv[] = {name, nullptr};
    new QApplication(argc, argv);
}

}  // namespace TestSupport
