// CUpdaterApp: the application object. Its start-up runs the whole program: the skin, the
// application resources and their language, the mark that an updater is at work, a running
// product made to exit, the progress dialog, and the launch of the installed product when
// the user asks for it. There is no message loop of the application's own.
//
// Start-up reaches everything outside itself through Services, so that tests can run it
// without a window or a product; DefaultServices gives the real ones.
//
// Thread safety: the main thread only (which is also the dialog's thread).
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "app/ProductConfiguration.h"
#include "platform/NamedMutex.h"
#include "resourcelib/StringID.h"
#include "ui/UpdaterDialogHost.h"

namespace Engine {
class UpdateEngine;
}
namespace AppResources {
class ResourceManagerHolder;
}

class CUpdaterApp {
public:
    // Every member is required.
    struct Services {
        // The process's engine, built on first use; throws when it cannot be built.
        std::function<Engine::UpdateEngine&()> engine;
        // Applies the skin file; false when there is none.
        std::function<bool(const std::wstring& path)> loadSkin;
        // Hands the product texts to the application resources, initialises them from
        // `folder` and selects `language` (the results are not checked).
        std::function<void(const std::wstring& folder, const ProductInfo& product,
                           const std::wstring& language)>
            initializeResources;
        std::function<void()> shutdownResources;
        std::function<std::wstring(AppResources::StringID)> text;
        std::function<void(const std::wstring& text, const std::wstring& caption)> warningBox;
        // True when no product runs or the running one is gone (asked to exit, then ended
        // after `timeoutMs`).
        std::function<bool(Engine::UpdateEngine&, uint32_t timeoutMs)> makeProductExit;
        // Runs the dialog modally; true when it ended with its launch button.
        std::function<bool(const UI::UpdaterDialogContext&)> runDialog;
        std::function<bool(Engine::UpdateEngine&)> launchProduct;
    };

    // Time a running product gets to exit by itself before it is ended.
    static constexpr uint32_t kProductExitTimeoutMs = 2000;
    // Folders beside the executable.
    static constexpr const wchar_t* kSkinFile = L"Styles/Default.skn";
    static constexpr const wchar_t* kResourcesFolder = L"Resources/CommonDialogs";

    // The application resources, the process's engine and the Qt user interface (a
    // CommonGuiLib::GuiSession must exist while start-up runs).
    static Services DefaultServices();
    // What DefaultServices' initializeResources does, on `holder`: hands every parameter of
    // `product` to its placeholders, initialises it from `folder` and selects `language`.
    static void InitializeResources(AppResources::ResourceManagerHolder& holder,
                                    const std::wstring& folder, const ProductInfo& product,
                                    const std::wstring& language);

    // `configuration` must outlive the application object.
    CUpdaterApp(ProductConfiguration& configuration, Services services);
    CUpdaterApp(const CUpdaterApp&) = delete;
    CUpdaterApp& operator=(const CUpdaterApp&) = delete;

    // The whole run. Always false: nothing follows but ExitInstance. Failures end up in the
    // exit code and FailureReason; nothing escapes except std::bad_alloc.
    bool InitInstance();
    // Shuts the application resources down; the process's exit code: 0, or 1 when the
    // update could not begin at all (no engine, no dialog).
    int ExitInstance();

    // Why the exit code is not 0, in English for the console; "" otherwise.
    const std::string& FailureReason() const { return failureReason; }

    // Aids for demonstrations and tests (see UI::UpdaterDialogContext): a picture of the
    // finished dialog, and the launch button pressed by itself. Only a build made for them
    // sets these; call before InitInstance.
    struct DemoAids {
        std::wstring screenshotPath;
        bool autoLaunch = false;
    };
    void UseDemoAids(DemoAids aids) { demoAids = std::move(aids); }

private:
    Engine::UpdateEngine* AcquireEngine();
    void ReportStartFailure(const std::string& reason);
    std::wstring Expanded(AppResources::StringID id);

    ProductConfiguration& configuration;
    Services services;
    Platform::NamedMutex mutex;  // the update or the extras mutex
    int exitCode = 0;
    std::string failureReason;
    DemoAids demoAids;
};
