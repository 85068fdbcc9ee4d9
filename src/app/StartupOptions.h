// The updater's own GNU-style options, read before anything else starts: no window, no
// network and no product is touched for them. The product's "/name value" options are not
// affected; they are read by ProductConfiguration.
//
//   --help      prints the usage and exits 0
//   --version   prints "lumetta-updater <version>" and exits 0
//   --check     asks the update feed whether there is an update, without a window (see
//               RunUpdateCheck for what it prints and its exit statuses)
//   --anything  else: an error on stderr, exit status 2
//
// Without a display (neither DISPLAY nor WAYLAND_DISPLAY, and no QT_QPA_PLATFORM naming a
// platform), the updater says so on stderr in one line and exits 1 instead of letting the
// window system abort it.
//
// Thread safety: the main thread, before other threads start. Never throws.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct StartupDecision {
    bool check = false;           // --check: run the update check instead of the dialog
    std::optional<int> exitCode;  // set: print `out` to stdout, `error` to stderr, and exit
    std::string out;
    std::string error;
};

// `arguments` are the program's, its own path first; `environment` looks up a variable
// ("" when unset).
StartupDecision DecideStartup(const std::vector<std::string>& arguments,
                              std::string (*environment)(const char* name));
