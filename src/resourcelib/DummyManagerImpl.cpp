#include "resourcelib/DummyManagerImpl.h"

namespace ResourceLib {

// Arguments passed by value are released on return: the dummy keeps nothing.

bool DummyManagerImpl::SetParent(ManagerPtr) {
    return false;
}

bool DummyManagerImpl::RegisterResourceName(int32_t, ResourceName, uint32_t) {
    return false;
}

bool DummyManagerImpl::SetLanguageProvider(LanguageProviderPtr) {
    return false;
}

bool DummyManagerImpl::SetSkinProvider(SkinProviderPtr) {
    return false;
}

bool DummyManagerImpl::AddStorage(StoragePtr) {
    return false;
}

void DummyManagerImpl::SetExtraParamsProvider(const ExtraParamsProviderPtr&) {}

std::wstring DummyManagerImpl::GetString(ResourceName) {
    return {};
}

std::wstring DummyManagerImpl::GetString(int32_t) {
    return {};
}

BitmapHandle DummyManagerImpl::GetBitmap(ResourceName, bool) {
    return {};
}

BitmapHandle DummyManagerImpl::GetBitmap(int32_t, bool) {
    return {};
}

IconHandle DummyManagerImpl::GetIcon(ResourceName, int32_t, int32_t) {
    return {};
}

IconHandle DummyManagerImpl::GetIcon(int32_t, int32_t, int32_t) {
    return {};
}

ByteView DummyManagerImpl::GetBinary(ResourceName) {
    return {};
}

ByteView DummyManagerImpl::GetBinary(int32_t) {
    return {};
}

COLORREF DummyManagerImpl::GetColor(ResourceName) {
    return 0;
}

COLORREF DummyManagerImpl::GetColor(int32_t) {
    return 0;
}

FontHandle DummyManagerImpl::GetFont(ResourceName) {
    return {};
}

FontHandle DummyManagerImpl::GetFont(int32_t) {
    return {};
}

int32_t DummyManagerImpl::GetInteger(ResourceName) {
    return 0;
}

int32_t DummyManagerImpl::GetInteger(int32_t) {
    return 0;
}

std::wstring DummyManagerImpl::GetFilePath(int32_t, uint32_t) {
    return {};
}

bool DummyManagerImpl::ClearCache() {
    return false;
}

bool DummyManagerImpl::ReleaseResource(int32_t, uint32_t) {
    return false;
}

std::wstring DummyManagerImpl::GetResourceName(int32_t, uint32_t) {
    return {};
}

int32_t DummyManagerImpl::GetResourceId(ResourceName, uint32_t) {
    return 0;
}

void DummyManagerImpl::SetThrowOnFailure(bool) {}

bool DummyManagerImpl::GetThrowOnFailure() {
    return false;
}

LanguageProviderPtr DummyManagerImpl::GetLanguageProvider() {
    return {};
}

bool DummyManagerImpl::SetLanguage(ResourceName) {
    return false;
}

bool DummyManagerImpl::SetLanguage(LanguagePtr) {
    return false;
}

LanguagePtr DummyManagerImpl::GetLanguage() {
    return {};
}

SkinProviderPtr DummyManagerImpl::GetSkinProvider() {
    return {};
}

bool DummyManagerImpl::SetSkin(ResourceName) {
    return false;
}

bool DummyManagerImpl::SetSkin(SkinPtr) {
    return false;
}

SkinPtr DummyManagerImpl::GetSkin() {
    return {};
}

ExtraParamsProviderPtr DummyManagerImpl::GetExtraParamsProvider() {
    return {};
}

}  // namespace ResourceLib
