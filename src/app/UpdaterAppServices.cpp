// The real services of start-up: the process's engine, the application resources and the
// Qt user interface. Apart from the start-up logic so that its tests link without them.
#include "app/UpdaterApp.h"
#include "engine/UpdateEngine.h"
#include "resourcelib/ResourceManagerHolder.h"

void CUpdaterApp::InitializeResources(AppResources::ResourceManagerHolder& holder,
                                      const std::wstring& folder, const ProductInfo& product,
                                      const std::wstring& language) {
    const auto params = holder.GetExtraParams();
    params->SetParam(L"ShortProductVersion", product.shortProductVersion);
    params->SetParam(L"FullProductName", product.fullProductName);
    params->SetParam(L"ProductVersion", product.productVersion);
    params->SetParam(L"ProductName", product.productName);
    params->SetParam(L"CompanyName", product.companyName);
    for (const auto& [name, value] : product.extraParameters) params->SetParam(name, value);
    holder.Initialize(folder);
    // A language without texts keeps the default one; the manager logs why.
    if (const auto manager = holder.GetManager()) {
        if (const auto resourceManager = manager->GetResourceManager())
            resourceManager->SetLanguageVerify(language.c_str());
    }
}

CUpdaterApp::Services CUpdaterApp::DefaultServices() {
    Services services;
    services.engine = []() -> Engine::UpdateEngine& { return Engine::GetUpdateEngine(); };
    services.loadSkin = UI::LoadSkin;
    services.initializeResources = [](const std::wstring& folder, const ProductInfo& product,
                                      const std::wstring& language) {
        InitializeResources(AppResources::ResourceManagerHolder::Instance(), folder, product,
                            language);
    };
    services.shutdownResources = [] { AppResources::ResourceManagerHolder::Instance().Shutdown(); };
    services.text = UI::ApplicationText;
    services.warningBox = UI::ShowWarningBox;
    services.makeProductExit = [](Engine::UpdateEngine& engine, uint32_t timeoutMs) {
        // The product may exit by itself between the look and the close: gone is gone.
        return !engine.IsProductRunning() || engine.CloseRunningProduct(timeoutMs) ||
               !engine.IsProductRunning();
    };
    services.runDialog = UI::RunUpdaterDialog;
    services.launchProduct = [](Engine::UpdateEngine& engine) {
        return engine.LaunchProduct(false);
    };
    return services;
}
