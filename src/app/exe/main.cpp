// lumetta-updater: the updater's executable. The product configuration has been built from
// the command line during static initialisation; the engine goes at exit, after the window.
#include <iostream>
#include <string>
#include <vector>

#include "app/ManagedCheck.h"
#include "app/StartupOptions.h"
#include "app/UpdaterApp.h"
#include "graphics/GuiSession.h"
#include "ui/UpdaterDialogHost.h"

#include "foundation/TextConversion.h"
#include "system/Environment.h"

namespace {

std::string Variable(const char* name) {
    return STLHelpers::WideToUtf8(System::GetEnvironmentString(STLHelpers::Utf8ToWide(name)));
}

}  // namespace

int main(int argc, char** argv) {
    const StartupDecision startup =
        DecideStartup(std::vector<std::string>(argv, argv + argc), &Variable);
    if (startup.exitCode) {
        std::cout << startup.out;
        std::cerr << startup.error;
        return *startup.exitCode;
    }
    if (startup.check) return RunUpdateCheck(GetProductConfiguration(), std::cout, std::cerr);
    CommonGuiLib::GuiSession gui(argc > 0 ? argv[0] : nullptr);
    CUpdaterApp app(GetProductConfiguration(), CUpdaterApp::DefaultServices());
#ifdef LUMETTA_DEMO_AIDS
    // Only in a build made for the demo and the tests; what is installed never reads them.
    app.UseDemoAids({System::GetEnvironmentString(L"LUMETTA_SCREENSHOT"),
                     System::GetEnvironmentString(L"LUMETTA_DEMO_AUTOLAUNCH") == L"1"});
#endif
    app.InitInstance();
    const int exitCode = app.ExitInstance();
    if (exitCode != 0) std::cerr << "lumetta-updater: " << app.FailureReason() << '\n';
    return exitCode;
}
