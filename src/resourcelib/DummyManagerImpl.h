// ResourceLib::DummyManagerImpl: the manager the application falls back on when no real
// one could be built. It has nothing: every getter gives the empty result, every set-up
// operation refuses (false) and forgets its argument, and GetResourceId gives 0 rather
// than kNoResourceId. SetLanguageVerify, GetLanguageName and GetSkinName are IManager's
// own, so SetLanguageVerify with a name logs two warnings and gives false.
//
// Thread safety: stateless; any thread. Never throws.
#pragma once

#include "storages/IManager.h"

namespace ResourceLib {

class DummyManagerImpl : public IManager,
                         public InterfaceCore::HeirClassBase<IManager>,
                         public InterfaceCore::EnumeratableClassBase<DummyManagerImpl> {
public:
    void Clear() override {}
    bool SetParent(ManagerPtr parent) override;
    bool RegisterResourceName(int32_t id, ResourceName name, uint32_t type) override;
    bool SetLanguageProvider(LanguageProviderPtr provider) override;
    bool SetSkinProvider(SkinProviderPtr provider) override;
    bool AddStorage(StoragePtr storage) override;
    void SetExtraParamsProvider(const ExtraParamsProviderPtr& provider) override;

    std::wstring GetString(ResourceName name) override;
    std::wstring GetString(int32_t id) override;
    BitmapHandle GetBitmap(ResourceName name, bool premultiplyAlpha) override;
    BitmapHandle GetBitmap(int32_t id, bool premultiplyAlpha) override;
    IconHandle GetIcon(ResourceName name, int32_t width, int32_t height) override;
    IconHandle GetIcon(int32_t id, int32_t width, int32_t height) override;
    ByteView GetBinary(ResourceName name) override;
    ByteView GetBinary(int32_t id) override;
    COLORREF GetColor(ResourceName name) override;
    COLORREF GetColor(int32_t id) override;
    FontHandle GetFont(ResourceName name) override;
    FontHandle GetFont(int32_t id) override;
    int32_t GetInteger(ResourceName name) override;
    int32_t GetInteger(int32_t id) override;
    std::wstring GetFilePath(int32_t id, uint32_t type) override;

    bool ClearCache() override;
    bool ReleaseResource(int32_t id, uint32_t type) override;
    std::wstring GetResourceName(int32_t id, uint32_t type) override;
    int32_t GetResourceId(ResourceName name, uint32_t type) override;
    void SetThrowOnFailure(bool flag) override;
    bool GetThrowOnFailure() override;

    LanguageProviderPtr GetLanguageProvider() override;
    bool SetLanguage(ResourceName name) override;
    bool SetLanguage(LanguagePtr language) override;
    LanguagePtr GetLanguage() override;

    SkinProviderPtr GetSkinProvider() override;
    bool SetSkin(ResourceName name) override;
    bool SetSkin(SkinPtr skin) override;
    SkinPtr GetSkin() override;

    ExtraParamsProviderPtr GetExtraParamsProvider() override;
};

}  // namespace ResourceLib
