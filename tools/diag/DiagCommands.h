// Command registry of lumetta-diag. Each command lives in its own source file and adds
// itself from a static initialiser:
//
//   static const DiagCommands::Registration reg{"reg", [](CLI::App& app) { ... }};
//
// The callback adds a subcommand to `app` and sets its callback. A command reports its
// outcome through DiagCommands::SetExitCode (0 unless set).
#pragma once

#include <functional>
#include <string>

namespace CLI {
class App;
}

namespace DiagCommands {

using Installer = std::function<void(CLI::App&)>;

struct Registration {
    Registration(std::string name, Installer install);
};

void SetExitCode(int code);

}  // namespace DiagCommands
