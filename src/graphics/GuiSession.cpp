#include "graphics/GuiSession.h"

#include <QApplication>
#include <QCoreApplication>
#include <QGuiApplication>

#include "platform/Environment.h"

namespace CommonGuiLib {

// The application keeps references to its argument count and vector, so they live beside it
// when the session supplies them.
struct GuiSession::Application {
    explicit Application(bool offscreen) : ownArgc(offscreen ? 3 : 1), app(ownArgc, ownArgv) {}
    Application(int& argc, char** argv) : app(argc, argv) {}

    char name[8] = "lumetta";
    char platformOption[10] = "-platform";
    char platformName[10] = "offscreen";
    char* ownArgv[4] = {name, platformOption, platformName, nullptr};
    int ownArgc = 1;
    QApplication app;
};

namespace {

bool IsSetAndNotEmpty(const char* variable) {
    const auto value = Platform::GetEnvironment(variable);
    return value && !value->empty();
}

}  // namespace

GuiSession::GuiSession() {
    if (QCoreApplication::instance() != nullptr) return;
    // Choosing the platform on the command line rather than in the environment keeps the
    // choice from being inherited by the processes we start.
    const bool offscreen = !IsSetAndNotEmpty("QT_QPA_PLATFORM") && !IsSetAndNotEmpty("DISPLAY") &&
                           !IsSetAndNotEmpty("WAYLAND_DISPLAY");
    m_application = std::make_unique<Application>(offscreen);
}

GuiSession::GuiSession(int& argc, char** argv) {
    if (QCoreApplication::instance() != nullptr) return;
    m_application = std::make_unique<Application>(argc, argv);
}

GuiSession::~GuiSession() = default;

bool GuiSession::IsGuiRunning() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
}

}  // namespace CommonGuiLib
