// Languages and skins as the resource manager and its storages see them, and the
// providers that list them. The records are immutable and shared freely.
//
// Thread safety: records and providers are built on one thread and only read afterwards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "foundation/InterfaceCore.h"
#include "storages/ResourceTypes.h"

namespace ResourceLib {

struct ILanguage : InterfaceCore::IInterfaceCore<ILanguage> {
    // The key the manager and the override file match, exactly.
    virtual std::wstring GetName() const { InterfaceCore::ThrowPureVirtualCall(); }
    virtual std::wstring GetTitle() const { InterfaceCore::ThrowPureVirtualCall(); }
    // A Windows locale identifier (LCID); 0 when unknown.
    virtual int32_t GetLocale() const { InterfaceCore::ThrowPureVirtualCall(); }
};

struct ISkin : InterfaceCore::IInterfaceCore<ISkin> {
    virtual std::wstring GetName() const { InterfaceCore::ThrowPureVirtualCall(); }
    // May ask the manager for a string, so it may throw what the manager throws.
    virtual std::wstring GetTitle() const { InterfaceCore::ThrowPureVirtualCall(); }
};

using LanguagePtr = boost::shared_ptr<ILanguage>;
using SkinPtr = boost::shared_ptr<ISkin>;

struct ILanguageProvider : InterfaceCore::IInterfaceCore<ILanguageProvider> {
    // Replaces the contents of `out` with the languages in document order.
    virtual bool GetLanguages(std::vector<LanguagePtr>& out) const {
        (void)out;
        InterfaceCore::ThrowPureVirtualCall();
    }
    // The first language named exactly `name`, else null.
    virtual LanguagePtr FindLanguage(ResourceName name) const {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    // Null when there is none.
    virtual LanguagePtr GetDefaultLanguage() const { InterfaceCore::ThrowPureVirtualCall(); }
};

struct ISkinProvider : InterfaceCore::IInterfaceCore<ISkinProvider> {
    virtual bool GetSkins(std::vector<SkinPtr>& out) const {
        (void)out;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual SkinPtr FindSkin(ResourceName name) const {
        (void)name;
        InterfaceCore::ThrowPureVirtualCall();
    }
    virtual SkinPtr GetDefaultSkin() const { InterfaceCore::ThrowPureVirtualCall(); }
};

struct IMetadataProvider : ILanguageProvider,
                           ISkinProvider,
                           InterfaceCore::IInterfaceCore<IMetadataProvider> {
    // The fallback resources directory, relative to this one; empty when none.
    virtual std::wstring GetBaseDirectory() const { InterfaceCore::ThrowPureVirtualCall(); }
};

using LanguageProviderPtr = boost::shared_ptr<ILanguageProvider>;
using SkinProviderPtr = boost::shared_ptr<ISkinProvider>;

}  // namespace ResourceLib
