// ResourceLib::XmlMetadataProvider: the languages, skins, defaults and base directory of a
// resources directory, read once from its "Metadata.xml" and the optional one-line files
// "DefaultLanguageOverride" and "DefaultSkinOverride" beside it.
//
// Errors: the constructor throws std::runtime_error when "Metadata.xml" is missing or
// malformed ("Failed to open or parse the designated XML file") or has no Languages
// element ("Invalid 'Metadata.xml' content"). CreateXmlMetadataProvider turns any
// std::exception into a null provider. Bad or missing attributes leave empty values.
//
// Thread safety: built on one thread, immutable afterwards; reads from any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "foundation/InterfaceCore.h"
#include "resourcelib/Language.h"
#include "resourcelib/Skin.h"
#include "storages/IManager.h"

namespace ResourceLib {

class XmlMetadataProvider : public IMetadataProvider,
                            public InterfaceCore::HeirClassBase<IMetadataProvider>,
                            public InterfaceCore::EnumeratableClassBase<XmlMetadataProvider> {
public:
    // Reads `directory`/Metadata.xml and the override files; `manager` is handed to every
    // skin for its title.
    XmlMetadataProvider(ResourceName directory, boost::weak_ptr<IManager> manager);

    bool GetLanguages(std::vector<LanguagePtr>& out) const override;
    LanguagePtr FindLanguage(ResourceName name) const override;
    LanguagePtr GetDefaultLanguage() const override;
    bool GetSkins(std::vector<SkinPtr>& out) const override;
    SkinPtr FindSkin(ResourceName name) const override;
    SkinPtr GetDefaultSkin() const override;
    std::wstring GetBaseDirectory() const override;

private:
    std::wstring directory;
    boost::weak_ptr<IManager> manager;
    std::vector<boost::shared_ptr<Language>> languages;
    int32_t defaultLanguage = -1;
    std::vector<boost::shared_ptr<Skin>> skins;
    int32_t defaultSkin = -1;
    std::wstring baseDirectory;
};

using MetadataProviderPtr = boost::shared_ptr<IMetadataProvider>;

// The provider for `directory`, or null when it cannot be read.
MetadataProviderPtr CreateXmlMetadataProvider(ResourceName directory,
                                              boost::weak_ptr<IManager> manager);

}  // namespace ResourceLib
