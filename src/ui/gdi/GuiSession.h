// A Qt GUI application for code that needs one but may run without a user interface:
// fonts, the font database, the palette and the screens are only available while a
// QGuiApplication exists. Tests and tools that use font or colour code hold a GuiSession.
//
// When the process has no Qt application yet, the session creates one and destroys it
// when the session ends; otherwise it uses the one there is and owns nothing. Without a
// display (neither DISPLAY nor WAYLAND_DISPLAY set) and no platform chosen through
// QT_QPA_PLATFORM, the application is made on the "offscreen" platform, so no display is
// needed. The environment is left unchanged.
//
// Thread safety: create and destroy a session on one thread, the one that is to be the
// GUI thread (the main thread), and not while another thread uses Qt. Nesting sessions is
// allowed; only the outermost one owns the application.
#pragma once

#include <memory>

namespace CommonGuiLib {

class GuiSession {
public:
    GuiSession();
    ~GuiSession();
    GuiSession(const GuiSession&) = delete;
    GuiSession& operator=(const GuiSession&) = delete;

    // Whether this session created the application (and will destroy it).
    bool OwnsApplication() const { return m_application != nullptr; }

    // Whether a QGuiApplication exists now, made by a session or by anyone else. Any thread.
    static bool IsGuiRunning();

private:
    struct Application;
    std::unique_ptr<Application> m_application;
};

}  // namespace CommonGuiLib
