#include "app/StartupOptions.h"

namespace {

constexpr const char* kUsage =
    "Usage: lumetta-updater [/name value]... [--check | --help | --version]\n"
    "\n"
    "Downloads the product's setup program, runs it silently and offers to launch the\n"
    "installed product, in one small dialog. The product is named by the options below or\n"
    "compiled in; see lumetta-updater(1) for every option, registry value and file.\n"
    "\n"
    "  /productName NAME      the product (its registry keys and exit event)\n"
    "  /downloadURL URL       where the setup program is downloaded from\n"
    "  /publicKey KEY         the minisign key that must have signed the setup\n"
    "  /isSilent 0            run the setup with its own windows\n"
    "  /languageName NAME     the dialog's language (en-us, de-de, fr-fr, da-dk, ja-jp)\n"
    "  /feedURL URL           the update feed (see lumetta-diag feed check)\n"
    "  --check                without a window: prints \"update VERSION URL\" (exit status 10)\n"
    "                         or \"up-to-date VERSION\" (exit status 0) from the update feed\n"
    "  --help                 this text\n"
    "  --version              the updater's version\n"
    "\n"
    "Exit status: 0 when the updater ran (its dialog says whether the update succeeded),\n"
    "1 when it could not begin (no display, no setup file), 2 for an unknown option.\n"
    "With --check: 0 up to date, 10 an update is available, 1 the check failed.\n";

}  // namespace

StartupDecision DecideStartup(const std::vector<std::string>& arguments,
                              std::string (*environment)(const char* name)) {
    StartupDecision decision;
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument.rfind("--", 0) != 0) continue;
        if (argument == "--check") {
            decision.check = true;
            continue;
        }
        if (argument == "--help") {
            decision.exitCode = 0;
            decision.out = kUsage;
        } else if (argument == "--version") {
            decision.exitCode = 0;
            decision.out = "lumetta-updater " LUMETTA_VERSION_TEXT "\n";
        } else {
            decision.exitCode = 2;
            decision.error = "lumetta-updater: unknown option " + argument +
                             " (lumetta-updater --help lists the options)\n";
        }
        return decision;
    }
    if (decision.check) return decision;
    if (environment("DISPLAY").empty() && environment("WAYLAND_DISPLAY").empty() &&
        environment("QT_QPA_PLATFORM").empty()) {
        decision.exitCode = 1;
        decision.error =
            "lumetta-updater: no display: neither DISPLAY nor WAYLAND_DISPLAY is set, and the "
            "update dialog needs one\n";
    }
    return decision;
}
