// Start-up's own decisions: which mutex marks the run, when the product is made to exit,
// when the restart warning stops it, when the product is launched, and the orderly end when
// no engine can be built. Everything outside start-up is replaced by recording fakes.
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/UpdaterApp.h"
#include "engine/UpdateEngine.h"
#include "foundation/Exceptions.h"
#include "foundation/TextConversion.h"
#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"

using namespace AppResources;

namespace {

class UpdaterAppTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(folder.Path().empty());
        Engine::ProductSettings settings;
        settings.downloadURL = L"127.0.0.1/LumettaTestSetup.exe";
        settings.productExecutable = L"lumetta-test-no-product";
        engine =
            std::make_unique<Engine::UpdateEngine>(settings, (folder / "Update1.exe").wstring());
    }

    // The product name is unique per test, and so are the mutexes named from it.
    std::unique_ptr<ProductConfiguration> Configuration(bool runWithProduct) {
        std::vector<std::wstring> arguments = {L"lumetta-updater", L"/productName", productName};
        if (runWithProduct) arguments.push_back(L"/runWithProduct");
        return std::make_unique<ProductConfiguration>(arguments);
    }

    bool Held(const std::wstring& suffix) const {
        return Platform::NamedMutex::IsHeld(STLHelpers::WideToUtf8(productName + suffix));
    }

    CUpdaterApp::Services Services() {
        CUpdaterApp::Services services;
        services.engine = [this]() -> Engine::UpdateEngine& { return *engine; };
        services.loadSkin = [this](const std::wstring& path) {
            calls.push_back(L"skin " + path);
            return false;
        };
        services.initializeResources = [this](const std::wstring& folder, const ProductInfo&,
                                              const std::wstring&) {
            calls.push_back(L"resources " + folder);
        };
        services.shutdownResources = [this] { calls.push_back(L"shutdown"); };
        services.text = [](StringID id) {
            return L"text" + std::to_wstring(id) + L" {ProductName}";
        };
        services.warningBox = [this](const std::wstring& text, const std::wstring& caption) {
            calls.push_back(L"warning " + text + L" / " + caption);
        };
        services.makeProductExit = [this](Engine::UpdateEngine&, uint32_t timeoutMs) {
            calls.push_back(L"exit " + std::to_wstring(timeoutMs) +
                            (Held(L"_UpdateMutex") ? L" marked" : L" unmarked"));
            return productExits;
        };
        services.runDialog = [this](const UI::UpdaterDialogContext& context) {
            calls.push_back(std::wstring(L"dialog") +
                            (context.runWithProduct ? L" with product" : L"") +
                            (Held(L"_UpdateMutex") ? L" update" : L"") +
                            (Held(L"_ExtrasMutex") ? L" extras" : L"") + L" " +
                            context.expand(context.text(StringID_ProductInstallation)));
            return true;
        };
        services.launchProduct = [this](Engine::UpdateEngine&) {
            calls.push_back(std::wstring(L"launch") + (Held(L"_UpdateMutex") ? L" marked" : L""));
            return true;
        };
        return services;
    }

    TestSupport::TempFolder folder{"lumetta-app"};
    TestSupport::ScopedEnvironment runtime{"XDG_RUNTIME_DIR", folder.Path().string()};
    std::wstring productName =
        L"Lumetta Test " +
        STLHelpers::Utf8ToWide(::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::unique_ptr<Engine::UpdateEngine> engine;
    std::vector<std::wstring> calls;
    bool productExits = true;
};

TEST_F(UpdaterAppTest, ANormalStartClosesTheProductAndLaunchesTheNewOne) {
    auto configuration = Configuration(false);
    CUpdaterApp app(*configuration, Services());
    EXPECT_FALSE(app.InitInstance());
    EXPECT_EQ(app.ExitInstance(), 0);
    ASSERT_EQ(calls.size(), 6u);
    EXPECT_TRUE(calls[0].starts_with(L"skin /") && calls[0].ends_with(L"/Styles/Default.skn"));
    EXPECT_TRUE(calls[1].ends_with(L"/Resources/CommonDialogs")) << calls[1];
    EXPECT_EQ(calls[2], L"exit 2000 marked");
    EXPECT_EQ(calls[3], L"dialog update text7 " + productName);
    EXPECT_EQ(calls[4], L"launch");  // the mark is gone before the product starts
    EXPECT_EQ(calls[5], L"shutdown");
}

TEST_F(UpdaterAppTest, BesideTheProductOnlyTheExtrasMutexMarksTheRun) {
    auto configuration = Configuration(true);
    CUpdaterApp app(*configuration, Services());
    app.InitInstance();
    // No product check, no update mutex, and no launch: the product is running already.
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[2], L"dialog with product extras text7 " + productName);
}

TEST_F(UpdaterAppTest, StartsThatEndWithoutUpdate) {
    auto configuration = Configuration(false);
    productExits = false;
    CUpdaterApp app(*configuration, Services());
    app.InitInstance();
    ASSERT_EQ(calls.size(), 4u);
    EXPECT_EQ(calls[3],
              L"warning text6 " + productName + L" / " + productName + L" Automatic Update");
    EXPECT_EQ(app.ExitInstance(), 0);

    // An exit event that cannot be made is the platform's object error, not a
    // std::exception: the same warning, and start-up still ends in order.
    calls.clear();
    CUpdaterApp::Services noEvent = Services();
    noEvent.makeProductExit = [](Engine::UpdateEngine&, uint32_t) -> bool {
        throw ErrorHandling::ComError(E_FAIL, L"no event");
    };
    CUpdaterApp eventless(*configuration, noEvent);
    EXPECT_FALSE(eventless.InitInstance());
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_TRUE(calls[2].starts_with(L"warning text6 ")) << calls[2];

    // No engine (the setup file cannot be created): the failure text and exit code 1.
    calls.clear();
    CUpdaterApp::Services services = Services();
    services.engine = []() -> Engine::UpdateEngine& {
        throw std::runtime_error("Cannot open destination file");
    };
    CUpdaterApp failing(*configuration, services);
    failing.InitInstance();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[2], L"warning text5 " + productName + L" / text10 {ProductName}");
    EXPECT_EQ(failing.ExitInstance(), 1);
    EXPECT_EQ(failing.FailureReason(), "Cannot open destination file");
}

}  // namespace
