// What the storage tests share: languages and skins to switch between, a manager that
// binds a storage, and image files written by the tests (with the gdi tests' writers).
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <vector>

#include <boost/make_shared.hpp>

#include "foundation/TextConversion.h"
#include "graphics/GdiFixtures.h"
#include "resourcelib/ManagerImpl.h"
#include "storages/ResourceErrors.h"
#include "support/TestFiles.h"

namespace StorageTests {

struct Language : ResourceLib::ILanguage, ResourceLib::ISkin {
    Language(std::wstring name, int32_t locale) : name(std::move(name)), locale(locale) {}
    std::wstring GetName() const override { return name; }
    std::wstring GetTitle() const override { return name; }
    int32_t GetLocale() const override { return locale; }
    std::wstring name;
    int32_t locale;
};

// Null for an empty name.
inline ResourceLib::LanguagePtr MakeLanguage(const std::wstring& name, int32_t locale = 0) {
    return name.empty() ? nullptr : boost::make_shared<Language>(name, locale);
}
inline ResourceLib::SkinPtr MakeSkin(const std::wstring& name) {
    return name.empty() ? nullptr : boost::make_shared<Language>(name, 0);
}

// A manager bound to `storage`, which holds it only weakly: the test keeps it.
inline boost::shared_ptr<ResourceLib::ManagerImpl> Bind(const ResourceLib::StoragePtr& storage,
                                                        const std::wstring& language = L"",
                                                        const std::wstring& skin = L"") {
    auto manager = boost::make_shared<ResourceLib::ManagerImpl>();
    manager->SetLanguage(MakeLanguage(language));
    manager->SetSkin(MakeSkin(skin));
    manager->AddStorage(storage);
    return manager;
}

inline boost::system::error_code ErrorOf(ResourceLib::ResourceError code) {
    return ResourceLib::MakeErrorCode(code);
}

inline std::wstring Wide(const std::filesystem::path& path) {
    return STLHelpers::Utf8ToWide(path.string());
}

// A resource name that refers to `text`, which must outlive it.
inline ResourceLib::ResourceName Name(const std::wstring& text) {
    return ResourceLib::ResourceName(text.c_str(), static_cast<uint32_t>(text.size()));
}

// Writes `content` to `path`, making its folders first.
inline void WriteFile(const std::filesystem::path& path, const std::string& content) {
    std::filesystem::create_directories(path.parent_path());
    TestSupport::WriteFile(path, content);
}

// A .bmp file of one opaque colour (0xRRGGBB).
inline std::string BmpFile(int width, int height, uint32_t rgb) {
    const std::string dib = GdiFixtures::Dib(width, height, 0xFF000000u | rgb, false);
    std::string file = "BM";
    for (uint32_t field : {uint32_t(14 + dib.size()), 0u, 14u + 40u})
        GdiFixtures::Put(file, field, 4);
    return file + dib;
}

// An .ico file with one square image of each size.
inline std::string IcoFile(std::initializer_list<int> sizes) {
    std::vector<GdiFixtures::IconImage> images;
    for (int size : sizes) images.push_back({size, 0xFF336699u});
    return GdiFixtures::IcoFile(images);
}

}  // namespace StorageTests
