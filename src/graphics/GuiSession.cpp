#include "graphics/GuiSession.h"

#include <QApplication>
#include <QCoreApplication>
#include <QGuiApplication>

#include <string>
#include <vector>

#include "platform/Environment.h"

namespace CommonGuiLib {

// The application keeps references to its argument count and vector, so they live beside it.
struct GuiSession::Application {
    explicit Application(bool offscreen)
        : arguments(offscreen ? std::vector<std::string>{"lumetta", "-platform", "offscreen"}
                              : std::vector<std::string>{"lumetta"}),
          argc(Pointers()),
          app(argc, argv.data()) {}

    // Qt titles a window whose caption is empty with the program's name, taken from the
    // first argument; the program's windows show the captions they are given and nothing
    // else, so Qt gets an empty one. The X11 instance name stays the program's file name.
    Application(int programArgc, char** programArgv)
        : arguments(ProgramArguments(programArgc, programArgv)),
          argc(Pointers()),
          app(argc, argv.data()) {}

    static std::vector<std::string> ProgramArguments(int count, char** values) {
        std::vector<std::string> result{""};
        if (count > 0 && values[0] != nullptr) {
            const std::string program = values[0];
            result.insert(result.end(), {"-name", program.substr(program.find_last_of('/') + 1)});
        }
        for (int i = 1; i < count; ++i) result.emplace_back(values[i] ? values[i] : "");
        return result;
    }

    int Pointers() {
        for (std::string& argument : arguments) argv.push_back(argument.data());
        argv.push_back(nullptr);
        return static_cast<int>(arguments.size());
    }

    std::vector<std::string> arguments;
    std::vector<char*> argv;
    int argc;
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
