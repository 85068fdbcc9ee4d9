// What the application needs of the user interface, without Qt in sight: the skin, the
// warning box and one modal run of the progress dialog.
//
// Thread safety: everything here on the user-interface thread (the thread that built the
// CommonGuiLib::GuiSession), and only while that session exists, except where a function
// says otherwise.
#pragma once

#include <functional>
#include <string>

#include "resourcelib/StringID.h"

namespace Engine {
class UpdateEngine;
}

namespace UI {

// What the progress dialog is given by whoever runs it; the user interface does not know
// the application's configuration.
struct UpdaterDialogContext {
    // The engine whose update the dialog starts and follows. Required.
    Engine::UpdateEngine* engine = nullptr;
    // Started beside the running product: the finished dialog offers no launch button.
    bool runWithProduct = false;
    // Replaces the product placeholders ("{ProductName}", ...); texts pass unchanged when empty.
    std::function<std::wstring(const std::wstring&)> expand;
    // The localised text of an id. Required; the application gives ApplicationText.
    std::function<std::wstring(AppResources::StringID)> text;
    // Shows the failure box (text, caption) over the dialog and returns once it is closed.
    // Empty: a warning message box with an OK button.
    std::function<void(const std::wstring& text, const std::wstring& caption)> showFailure;
    // Whether showing the dialog starts the worker. Tests that play the worker's part by
    // setting its states themselves turn it off.
    bool startEngine = true;

    // Demo aids, off unless set: once the update has finished successfully, save a picture
    // of the dialog to this PNG file, and, with autoLaunch, press "Launch" by itself.
    std::wstring screenshotPath;
    bool autoLaunch = false;
};

// The text of `id` from the process's application resources ("" when it has none). Links
// the resource library in; tests of the dialog give texts of their own.
std::wstring ApplicationText(AppResources::StringID id);

// Applies the Qt style sheet in the file `path` to the whole application. False, and the
// plain look kept, when the file is missing, unreadable or empty.
bool LoadSkin(const std::wstring& path);

// A warning box without owner, with one OK button; returns when it is closed.
void ShowWarningBox(const std::wstring& text, const std::wstring& caption);

// Builds the progress dialog and runs it modally. True when it ended with its launch
// button, false for every other end (cancel, close, failure). Throws std::runtime_error
// when the dialog template cannot be read from the executable's resources.
bool RunUpdaterDialog(const UpdaterDialogContext& context);

}  // namespace UI
