// The Qt application of the process. Fonts, the font database, the palette and the screens
// are only available while one exists, and widgets need it to be a widget application, so
// this is the one helper that makes it: the updater's executable holds one for its whole
// run, and tests and tools that use font, colour or widget code hold one too.
//
// When the process has no Qt application yet, the session creates one and destroys it
// when the session ends; otherwise it uses the one there is and owns nothing.
//
// Thread safety: create and destroy a session on one thread, the one that is to be the
// GUI thread (the main thread), and not while another thread uses Qt. Nesting sessions is
// allowed; only the outermost one owns the application.
#pragma once

#include <memory>

namespace CommonGuiLib {

class GuiSession {
public:
    // For code that may run without a display: with neither DISPLAY nor WAYLAND_DISPLAY set
    // and no platform chosen through QT_QPA_PLATFORM, the application is made on the
    // "offscreen" platform. The environment is left unchanged.
    GuiSession();
    // For a program's main(): Qt reads its own options from a copy of the command line,
    // which it gets without the program's name, so that a window with an empty caption
    // shows none rather than the program's name. Qt ends the process when no display can
    // be opened, as every Qt program does.
    GuiSession(int& argc, char** argv);
    ~GuiSession();
    GuiSession(const GuiSession&) = delete;
    GuiSession& operator=(const GuiSession&) = delete;

    // Whether this session created the application (and will destroy it).
    bool OwnsApplication() const { return m_application != nullptr; }

    // Whether a Qt GUI application exists now, made by a session or by anyone else. Any thread.
    static bool IsGuiRunning();

private:
    struct Application;
    std::unique_ptr<Application> m_application;
};

}  // namespace CommonGuiLib
