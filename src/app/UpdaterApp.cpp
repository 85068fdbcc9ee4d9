#include "app/UpdaterApp.h"

#include <exception>
#include <utility>

#include "foundation/Exceptions.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"

using namespace AppResources;

CUpdaterApp::CUpdaterApp(ProductConfiguration& productConfiguration, Services appServices)
    : configuration(productConfiguration), services(std::move(appServices)) {}

bool CUpdaterApp::InitInstance() {
    const std::wstring folder = System::GetModuleFolder();

    // Without a skin the dialog keeps its plain look. A skin is a style sheet; there is no
    // second, INI-named form of it to try.
    services.loadSkin(System::MakeAbsolute(kSkinFile, folder));

    services.initializeResources(System::MakeAbsolute(kResourcesFolder, folder),
                                 configuration.GetProductInfo(),
                                 configuration.GetConfiguredLanguageName());

    const bool runWithProduct = configuration.IsRunWithProduct();
    Engine::UpdateEngine* engine = nullptr;
    if (!runWithProduct) {
        // Marks, for the product and other updaters, that an update is under way; a second
        // updater opens the same mutex and goes on.
        mutex.Create(STLHelpers::WideToUtf8(configuration.GetUpdateMutexName()));
        engine = AcquireEngine();
        if (engine == nullptr) return false;
        bool productGone = false;
        try {
            productGone = services.makeProductExit(*engine, kProductExitTimeoutMs);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception&) {
            productGone = false;  // the exit event could not be made: the product stays
        } catch (const ErrorHandling::ComError&) {
            productGone = false;  // the same, reported as the platform's object error
        }
        if (!productGone) {
            services.warningBox(Expanded(StringID_ComputerMustBeRestarted),
                                configuration.ExpandPlaceholders(L"{ProductName} {ComponentName}"));
            return false;
        }
    } else {
        mutex.Create(STLHelpers::WideToUtf8(configuration.GetExtrasMutexName()));
        engine = AcquireEngine();
        if (engine == nullptr) return false;
    }

    UI::UpdaterDialogContext context;
    context.engine = engine;
    context.runWithProduct = runWithProduct;
    context.expand = [this](const std::wstring& text) {
        return configuration.ExpandPlaceholders(text);
    };
    context.text = services.text;
    context.screenshotPath = demoAids.screenshotPath;
    context.autoLaunch = demoAids.autoLaunch;

    bool launch = false;
    try {
        launch = services.runDialog(context);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        ReportStartFailure(error.what());
        return false;
    }
    if (launch) {
        mutex.Close();
        if (!runWithProduct) services.launchProduct(*engine);
    }
    return false;
}

int CUpdaterApp::ExitInstance() {
    services.shutdownResources();
    return exitCode;
}

Engine::UpdateEngine* CUpdaterApp::AcquireEngine() {
    try {
        return &services.engine();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        // Typically the setup file cannot be created in the temporary folder.
        ReportStartFailure(error.what());
        return nullptr;
    }
}

void CUpdaterApp::ReportStartFailure(const std::string& reason) {
    exitCode = 1;
    failureReason = reason;
    services.warningBox(Expanded(StringID_InstallationFailed), services.text(StringID_Error));
}

std::wstring CUpdaterApp::Expanded(StringID id) {
    return configuration.ExpandPlaceholders(services.text(id));
}
