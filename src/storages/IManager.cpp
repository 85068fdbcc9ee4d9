#include "storages/IManager.h"

#include "foundation/Log.h"

namespace ResourceLib {
namespace {

// Writer names of SetLanguageVerify's messages: "ResourceLib::IManager::SetLanguageVerify@"
// and the message's number, with each "::" shortened to ":" as the log's name column
// expects.
constexpr const wchar_t* kNoLanguageWriter = L"ResourceLib:IManager:SetLanguageVerify@10";
constexpr const wchar_t* kLoadFailedWriter = L"ResourceLib:IManager:SetLanguageVerify@15";
constexpr const wchar_t* kWrongLanguageWriter = L"ResourceLib:IManager:SetLanguageVerify@19";

void Warn(const wchar_t* writer, std::wstring_view message) {
    Debugging::LogMessage(Debugging::GetLog(), message, STLHelpers::litestring(writer),
                          Debugging::LevelWarning);
}

}  // namespace

std::wstring IManager::GetLanguageName() {
    const LanguagePtr language = GetLanguage();
    return language ? language->GetName() : std::wstring();
}

std::wstring IManager::GetSkinName() {
    const SkinPtr skin = GetSkin();
    return skin ? skin->GetName() : std::wstring();
}

bool IManager::SetLanguageVerify(ResourceName name) {
    if (name.data() == nullptr || name.empty() || name.data()[0] == L'\0') {
        Warn(kNoLanguageWriter, L"Most recently used language is undefined - using default one");
        return true;
    }
    if (!SetLanguage(name))
        Warn(kLoadFailedWriter, L"Failed to load the most recently used language");
    if (GetLanguageName() == name.view()) return true;
    Warn(kWrongLanguageWriter, L"Loaded the wrong language");
    return false;
}

}  // namespace ResourceLib
