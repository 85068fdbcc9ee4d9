// lumetta-updater: the updater's executable. The product configuration has been built from
// the command line during static initialisation; the engine goes at exit, after the window.
#include <iostream>

#include "app/UpdaterApp.h"
#include "graphics/GuiSession.h"
#include "ui/UpdaterDialogHost.h"

int main(int argc, char** argv) {
    CommonGuiLib::GuiSession gui(argc, argv);
    CUpdaterApp app(GetProductConfiguration(), CUpdaterApp::DefaultServices());
    app.InitInstance();
    const int exitCode = app.ExitInstance();
    if (exitCode != 0) std::cerr << "lumetta-updater: " << app.FailureReason() << '\n';
    return exitCode;
}
