// ResourceLib::Language: one language a resources directory offers, as its "Metadata.xml"
// describes it. Immutable; shared by the provider, the manager and the storages.
//
// Thread safety: read-only after construction; any thread.
#pragma once

#include <cstdint>
#include <string>

#include "foundation/InterfaceCore.h"
#include "storages/ILanguage.h"

namespace ResourceLib {

class Language : public ILanguage,
                 public InterfaceCore::HeirClassBase<ILanguage>,
                 public InterfaceCore::EnumeratableClassBase<Language> {
public:
    Language(std::wstring name, std::wstring title, int32_t locale);

    std::wstring GetName() const override;
    std::wstring GetTitle() const override;
    int32_t GetLocale() const override;

private:
    std::wstring name;
    std::wstring title;
    int32_t locale;
};

}  // namespace ResourceLib
