#include <CLI/CLI.hpp>

#include <cstdio>
#include <exception>
#include <map>

#include "DiagCommands.h"

namespace DiagCommands {
namespace {

std::map<std::string, Installer>& Commands() {
    static std::map<std::string, Installer> commands;
    return commands;
}

int exitCode = 0;

}  // namespace

Registration::Registration(std::string name, Installer install) {
    Commands().emplace(std::move(name), std::move(install));
}

void SetExitCode(int code) {
    exitCode = code;
}

}  // namespace DiagCommands

int main(int argc, char** argv) {
    CLI::App app{"lumetta-diag: shows what the Lumetta Updater sees on this machine"};
    app.require_subcommand(1);
    for (auto& [name, install] : DiagCommands::Commands()) install(app);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app.exit(e);
    } catch (const std::exception& e) {
        std::fprintf(stderr, "lumetta-diag: %s\n", e.what());
        return 2;
    }
    return DiagCommands::exitCode;
}
