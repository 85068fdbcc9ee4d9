// libFuzzer target for the metadata reader: any bytes as a resources folder's Metadata.xml,
// read as the application reads it (the provider alone, then a whole resource manager with
// override files that name the languages and skins just found).
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "FuzzSupport.h"
#include "resourcelib/ManagerImpl.h"
#include "resourcelib/ResourceManagerFactory.h"
#include "resourcelib/XmlMetadataProvider.h"
#include "graphics/GuiSession.h"

namespace {

using namespace ResourceLib;

ResourceName Name(const std::wstring& text) {
    return ResourceName(text.c_str(), static_cast<uint32_t>(text.size()));
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // Skin titles are looked up as strings of a manager, whose storages need the GUI.
    static CommonGuiLib::GuiSession session;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::filesystem::path folder = Fuzz::ScratchFolder() / "metadata";
    const std::wstring directory = Fuzz::Wide(folder);
    std::filesystem::remove_all(folder);
    Fuzz::WriteFile(folder / "Metadata.xml", Fuzz::Bytes(data, size));

    std::vector<LanguagePtr> languages;
    std::vector<SkinPtr> skins;
    auto manager = boost::make_shared<ManagerImpl>();
    if (const MetadataProviderPtr provider = CreateXmlMetadataProvider(Name(directory), manager)) {
        provider->GetLanguages(languages);
        provider->GetSkins(skins);
        provider->GetDefaultLanguage();
        provider->GetDefaultSkin();
        provider->GetBaseDirectory();
        for (const LanguagePtr& language : languages) {
            const std::wstring name = language->GetName();
            if (provider->FindLanguage(Name(name)) == nullptr)
                Fuzz::Fail("a listed language cannot be found by its name");
            language->GetTitle();
            language->GetLocale();
        }
        for (const SkinPtr& skin : skins) {
            if (provider->FindSkin(Name(skin->GetName())) == nullptr)
                Fuzz::Fail("a listed skin cannot be found by its name");
            skin->GetTitle();
        }
    }

    // Override files naming the last language and skin, then the whole manager, which
    // reads them, picks its defaults and looks the skin titles up in its storages.
    if (!languages.empty())
        Fuzz::WriteFile(folder / "DefaultLanguageOverride",
                        STLHelpers::WideToUtf8(languages.back()->GetName().c_str()));
    if (!skins.empty())
        Fuzz::WriteFile(folder / "DefaultSkinOverride",
                        STLHelpers::WideToUtf8(skins.back()->GetName().c_str()));
    const auto full = CreateResourceManager(Name(directory), -1);
    try {
        for (const LanguagePtr& language : languages) full->SetLanguage(Name(language->GetName()));
        for (const SkinPtr& skin : skins) full->SetSkin(Name(skin->GetName()));
        full->GetLanguageName();
    } catch (const std::runtime_error& e) {
        // A folder named like a language that holds an unreadable Resources.xml: the
        // documented outcome of a request, not a fault.
        if (!Fuzz::IsDocumentError(e)) Fuzz::Fail(e.what());
    }
    return 0;
}
