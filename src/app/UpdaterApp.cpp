#include "app/UpdaterApp.h"

#include <exception>
#include <string>
#include <utility>

#include "foundation/ErrorCodeText.h"
#include "foundation/Exceptions.h"
#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"

using namespace AppResources;

namespace {

// Start-up's lines in the diagnostic log, the message built only when the log takes it.
template <class Make>
void Log(const wchar_t* writer, int level, Make&& make) {
    Debugging::LogMessageIf(Debugging::GetLog(), STLHelpers::litestring(writer), level,
                            std::forward<Make>(make));
}

}  // namespace

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
    Log(L"CUpdaterApp:InitInstance@1", Debugging::LevelInfo, [&] {
        return L"start-up for " + configuration.ExpandPlaceholders(L"{ProductName}") +
               (runWithProduct ? L", beside the running product" : L"");
    });
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
        } catch (const std::exception& error) {
            productGone = false;  // the exit event could not be made: the product stays
            Log(L"CUpdaterApp:InitInstance@2", Debugging::LevelError, [&] {
                return L"the product's exit event cannot be made: " +
                       STLHelpers::Utf8ToWide(error.what());
            });
        } catch (const ErrorHandling::ComError& error) {
            productGone = false;  // the same, reported as the platform's object error
            Log(L"CUpdaterApp:InitInstance@2", Debugging::LevelError, [&] {
                return L"the product's exit event cannot be made: " +
                       ErrorHandling::ErrorCodeText(ErrorCode(error.Error()));
            });
        }
        if (!productGone) {
            Log(L"CUpdaterApp:InitInstance@3", Debugging::LevelError, [] {
                return std::wstring(L"the running product cannot be ended: restart warning");
            });
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
    Log(L"CUpdaterApp:InitInstance@4", Debugging::LevelInfo, [&] {
        return std::wstring(launch ? L"the dialog closed with Launch" : L"the dialog closed");
    });
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
    Log(L"CUpdaterApp:ReportStartFailure@1", Debugging::LevelError,
        [&] { return L"the update cannot go on: " + STLHelpers::Utf8ToWide(reason); });
    exitCode = 1;
    failureReason = reason;
    services.warningBox(Expanded(StringID_InstallationFailed), services.text(StringID_Error));
}

std::wstring CUpdaterApp::Expanded(StringID id) {
    return configuration.ExpandPlaceholders(services.text(id));
}
