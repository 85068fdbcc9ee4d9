#include "resourcelib/AppResourcesManager.h"

#include <exception>
#include <vector>

#include <boost/make_shared.hpp>

#include "resourcelib/ResourceManagerFactory.h"
#include "resourcelib/XmlMetadataProvider.h"
#include "storages/FileStorage.h"
#include "storages/SystemStorage.h"
#include "storages/WinResStorage.h"
#include "storages/XmlStorage.h"
#include "system/FileHelpers.h"
#include "system/RegistryKey.h"
#include "system/RegistryRoots.h"

namespace AppResources {
namespace {

bool DisplayErrorsSwitchedOn() {
    Registry::Key key(Registry::HKEY_CURRENT_USER, L"Software\\ResourceLib");
    return key.ReadDword(L"DisplayErrors", 0, true) != 0;
}

std::wstring JoinPath(const std::wstring& folder, const std::wstring& name) {
    if (folder.empty() || folder.back() == L'/') return folder + name;
    return folder + L'/' + name;
}

}  // namespace

Manager::Manager(ResourceLib::ManagerPtr resourceManager)
    : resourceManager(std::move(resourceManager)) {}

Manager::~Manager() {
    if (resourceManager) resourceManager->Clear();
}

bool Manager::Initialize(ResourceLib::ResourceName directoryName,
                         const ResourceLib::ExtraParamsProviderPtr& extraParamsProvider,
                         int32_t moduleBase, bool displayErrors) {
    extraParams = extraParamsProvider;
    const bool check = DisplayErrorsSwitchedOn() || displayErrors;
    if (!directory.empty() || moduleResourceBase != -1) return false;

    directory = directoryName.str();
    moduleResourceBase = moduleBase;
    if (directory.empty() || !System::FileExists(directory))
        directory = JoinPath(System::GetModuleFolder(), L"Resources");

    const ResourceLib::ResourceName dir(directory.c_str());
    boost::shared_ptr<ResourceLib::IMetadataProvider> metadata =
        ResourceLib::CreateXmlMetadataProvider(dir, resourceManager);
    resourceManager->SetLanguageProvider(metadata);
    resourceManager->SetSkinProvider(metadata);
    if (extraParams) resourceManager->SetExtraParamsProvider(extraParams);

    resourceManager->AddStorage(boost::make_shared<ResourceLib::XmlStorage>(directory));
    resourceManager->AddStorage(boost::make_shared<ResourceLib::FileStorage>(directory));
    resourceManager->AddStorage(boost::make_shared<ResourceLib::WinResStorage>(moduleResourceBase));
    resourceManager->AddStorage(boost::make_shared<ResourceLib::SystemStorage>());

    const std::wstring base = metadata ? metadata->GetBaseDirectory() : std::wstring();
    if (!base.empty()) {
        const std::wstring parentDirectory = JoinPath(directory, base);
        resourceManager->SetParent(ResourceLib::CreateResourceManager(
            ResourceLib::ResourceName(parentDirectory.c_str()), -1));
    }

    for (int32_t id = 0; id < kStringIDCount; ++id)
        resourceManager->RegisterResourceName(
            id, ResourceLib::ResourceName(kStringIDs[id].resourceName),
            ResourceLib::ResourceType_String);

    return check ? IsValid() : true;
}

std::wstring Manager::GetString(StringID id) const {
    return resourceManager->GetString(static_cast<int32_t>(id));
}

std::wstring Manager::CheckResources() const {
    const ResourceLib::LanguageProviderPtr provider = resourceManager->GetLanguageProvider();
    if (!provider) return L"--> Failed to initialize languages!";

    const bool savedThrowOnFailure = resourceManager->GetThrowOnFailure();
    resourceManager->SetThrowOnFailure(true);
    std::vector<ResourceLib::LanguagePtr> languages;
    provider->GetLanguages(languages);

    std::wstring report;
    int lastReported = -1;
    for (int i = 0; i < int(languages.size()); ++i) {
        resourceManager->SetLanguage(languages[i]);
        for (int32_t id = 0; id < kStringIDCount; ++id) {
            try {
                resourceManager->GetString(id);
            } catch (const std::exception&) {
                if (lastReported != i) {
                    lastReported = i;
                    report += L"-->" + languages[i]->GetTitle() + L" (" + languages[i]->GetName() +
                              L"):\n";
                }
                report +=
                    std::wstring(kStringIDs[id].enumerator) + L" (" + std::to_wstring(id) + L")\n";
            }
        }
    }
    resourceManager->SetLanguage(provider->GetDefaultLanguage());
    resourceManager->SetThrowOnFailure(savedThrowOnFailure);
    return report;
}

}  // namespace AppResources
