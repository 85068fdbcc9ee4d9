#include "resourcelib/XmlMetadataProvider.h"

#include <array>
#include <exception>
#include <fstream>
#include <stdexcept>

#include <boost/lexical_cast.hpp>
#include <boost/make_shared.hpp>

#include "foundation/TextConversion.h"
#include "storages/XmlFile.h"

namespace ResourceLib {
namespace {

std::wstring JoinPath(const std::wstring& folder, const wchar_t* name) {
    if (folder.empty()) return name;
    return folder.back() == L'/' ? folder + name : folder + L'/' + name;
}

// "01" counts as 1; "true", "" and anything else that is not a decimal number do not.
bool IsMarkedDefault(const FileSystem::XmlFile& file, FileSystem::XmlNode node) {
    try {
        return boost::lexical_cast<int32_t>(file.GetAttributeOr(node, L"default", L"0")) == 1;
    } catch (const std::exception&) {
        return false;
    }
}

// A missing attribute throws out of GetAttribute; the entry is kept with the empty value.
std::wstring AttributeOrEmpty(const FileSystem::XmlFile& file, FileSystem::XmlNode node,
                              const wchar_t* name) {
    try {
        return file.GetAttribute(node, name);
    } catch (const std::exception&) {
        return {};
    }
}

int32_t LocaleOf(const FileSystem::XmlFile& file, FileSystem::XmlNode node) {
    try {
        return boost::lexical_cast<int32_t>(file.GetAttribute(node, L"locale"));
    } catch (const std::exception&) {
        return 0;
    }
}

// The override file's text: its first 127 bytes up to the first NUL, as text of the
// locale's code page (UTF-8 here), untrimmed. Empty when it is missing or empty.
std::wstring ReadOverride(const std::wstring& path) {
    std::ifstream in(STLHelpers::WideToUtf8(path), std::ios::binary);
    if (!in) return {};
    std::array<char, 128> buffer{};
    in.read(buffer.data(), 127);
    return STLHelpers::Utf8ToWide(buffer.data());
}

template <class Item>
void ApplyOverride(const std::wstring& path, const std::vector<boost::shared_ptr<Item>>& items,
                   int32_t& defaultIndex) {
    const std::wstring wanted = ReadOverride(path);
    if (wanted.empty()) return;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (items[i]->GetName() == wanted) {
            defaultIndex = static_cast<int32_t>(i);
            return;
        }
    }
}

template <class Item>
boost::shared_ptr<Item> FindByName(const std::vector<boost::shared_ptr<Item>>& items,
                                   ResourceName name) {
    const std::wstring_view wanted = name.view();
    for (const auto& item : items)
        if (item->GetName() == wanted) return item;
    return {};
}

template <class Item>
boost::shared_ptr<Item> ItemAt(const std::vector<boost::shared_ptr<Item>>& items, int32_t index) {
    if (index < 0 || static_cast<std::size_t>(index) >= items.size()) return {};
    return items[index];
}

}  // namespace

XmlMetadataProvider::XmlMetadataProvider(ResourceName directoryName,
                                         boost::weak_ptr<IManager> owner)
    : directory(directoryName.str()), manager(std::move(owner)) {
    const FileSystem::XmlFile file(JoinPath(directory, L"Metadata.xml"), false);

    if (const FileSystem::XmlNode base = file.SelectSingleNode(L"ResourceLib/Base"))
        baseDirectory = file.GetAttributeOr(base, L"root", L"");

    const FileSystem::XmlNode languageList = file.SelectSingleNode(L"ResourceLib/Languages");
    if (!languageList) throw std::runtime_error("Invalid 'Metadata.xml' content");
    std::vector<FileSystem::XmlNode> children;
    file.GetChildNodes(languageList, children);
    for (const FileSystem::XmlNode& child : children) {
        if (!file.IsElement(child) || file.GetNodeName(child) != L"Language") continue;
        std::wstring name = AttributeOrEmpty(file, child, L"name");
        std::wstring title = AttributeOrEmpty(file, child, L"title");
        const int32_t locale = LocaleOf(file, child);
        const bool isDefault = IsMarkedDefault(file, child);
        try {
            languages.push_back(
                boost::make_shared<Language>(std::move(name), std::move(title), locale));
            if (isDefault) defaultLanguage = static_cast<int32_t>(languages.size() - 1);
        } catch (const std::exception&) {
        }
    }
    ApplyOverride(JoinPath(directory, L"DefaultLanguageOverride"), languages, defaultLanguage);

    const FileSystem::XmlNode skinList = file.SelectSingleNode(L"ResourceLib/Skins");
    if (!skinList) return;
    file.GetChildNodes(skinList, children);
    for (const FileSystem::XmlNode& child : children) {
        if (!file.IsElement(child) || file.GetNodeName(child) != L"Skin") continue;
        std::wstring name = AttributeOrEmpty(file, child, L"name");
        std::wstring titleID = AttributeOrEmpty(file, child, L"titleID");
        const bool isDefault = IsMarkedDefault(file, child);
        try {
            skins.push_back(boost::make_shared<Skin>(manager, std::move(name), std::move(titleID)));
            if (isDefault) defaultSkin = static_cast<int32_t>(skins.size() - 1);
        } catch (const std::exception&) {
        }
    }
    ApplyOverride(JoinPath(directory, L"DefaultSkinOverride"), skins, defaultSkin);
}

bool XmlMetadataProvider::GetLanguages(std::vector<LanguagePtr>& out) const {
    out.assign(languages.begin(), languages.end());
    return true;
}

LanguagePtr XmlMetadataProvider::FindLanguage(ResourceName name) const {
    return FindByName(languages, name);
}

LanguagePtr XmlMetadataProvider::GetDefaultLanguage() const {
    return ItemAt(languages, defaultLanguage);
}

bool XmlMetadataProvider::GetSkins(std::vector<SkinPtr>& out) const {
    out.assign(skins.begin(), skins.end());
    return true;
}

SkinPtr XmlMetadataProvider::FindSkin(ResourceName name) const {
    return FindByName(skins, name);
}

SkinPtr XmlMetadataProvider::GetDefaultSkin() const {
    return ItemAt(skins, defaultSkin);
}

std::wstring XmlMetadataProvider::GetBaseDirectory() const {
    return baseDirectory;
}

MetadataProviderPtr CreateXmlMetadataProvider(ResourceName directory,
                                              boost::weak_ptr<IManager> manager) {
    try {
        return boost::make_shared<XmlMetadataProvider>(directory, std::move(manager));
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace ResourceLib
