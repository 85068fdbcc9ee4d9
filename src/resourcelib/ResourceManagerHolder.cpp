#include "resourcelib/ResourceManagerHolder.h"

#include <cwctype>

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/atomic_shared_ptr.hpp>

#include "foundation/Reporting.h"
#include "resourcelib/DummyManagerImpl.h"
#include "resourcelib/ManagerImpl.h"
#include "system/FileHelpers.h"

namespace AppResources {
namespace {

// Module resources of the application live at ids offset by this base.
constexpr int32_t kModuleResourceBase = 10000;

std::wstring LowerAsciiLetters(std::wstring_view text) {
    std::wstring lowered(text);
    for (wchar_t& c : lowered)
        if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
    return lowered;
}

bool IsWholeDecimalNumber(const std::wstring& text) {
    if (text.empty()) return false;
    std::size_t i = (text[0] == L'-' || text[0] == L'+') ? 1 : 0;
    if (i == text.size()) return false;
    for (; i < text.size(); ++i)
        if (text[i] < L'0' || text[i] > L'9') return false;
    return true;
}

}  // namespace

std::wstring ResourceManagerHolder::ResManagerExtraParamsProvider::GetParam(
    ResourceLib::ResourceName name) const {
    auto it = params.find(LowerAsciiLetters(name.view()));
    return it == params.end() ? std::wstring() : it->second;
}

void ResourceManagerHolder::ResManagerExtraParamsProvider::SetParam(const std::wstring& name,
                                                                    const std::wstring& value) {
    if (name.empty() || name.find_first_of(L"{}") != std::wstring::npos ||
        IsWholeDecimalNumber(name))
        return;
    params[LowerAsciiLetters(name)] = value;
}

ResourceManagerHolder& ResourceManagerHolder::Instance() {
    static ResourceManagerHolder holder;
    return holder;
}

std::wstring ResourceManagerHolder::DefaultDirectory() {
    const std::wstring module = System::GetModulePath();
    return System::GetLocation(module) + L"Resources/" +
           System::RemoveExtension(System::GetFileName(module));
}

bool ResourceManagerHolder::Initialize(const std::wstring& directory) {
    if (m_isDisabled.Read() != 0) return false;
    Synchronization::ExclusiveLock guard(lock);
    if (initCount.Read() != 0) return false;
    return InitializeLocked(directory);
}

bool ResourceManagerHolder::AutoInitialize() {
    const std::wstring directory = DefaultDirectory();
    Synchronization::ExclusiveLock guard(lock);
    if (initCount.Read() != 0) return true;
    return InitializeLocked(directory);
}

bool ResourceManagerHolder::InitializeLocked(const std::wstring& directory) {
    if (m_isDisabled.Read() != 0) {
        const ErrorCode code(E_FAIL);
        Reporting::ReportDebug(STLHelpers::litestring_a("((!m_isDisabled))"), &code);
        return false;
    }
    auto created = boost::make_shared<Manager>(boost::make_shared<ResourceLib::ManagerImpl>());
    created->Initialize(ResourceLib::ResourceName(directory.c_str()), GetExtraParams(),
                        kModuleResourceBase, false);
    boost::atomic_store(&manager, created);
    initCount.Increment();
    return true;
}

boost::shared_ptr<Manager> ResourceManagerHolder::GetManager() {
    if (initCount.Read() == 0 && m_isDisabled.Read() == 0 && !AutoInitialize()) {
        const ErrorCode code(E_FAIL);
        Reporting::ReportError(STLHelpers::litestring_a("((_AutoInitialize()))"), &code);
    }
    if (auto current = boost::atomic_load(&manager)) return current;
    return boost::make_shared<Manager>(boost::make_shared<ResourceLib::DummyManagerImpl>());
}

void ResourceManagerHolder::Shutdown() {
    m_isDisabled.Exchange(1);
    boost::atomic_store(&manager, boost::shared_ptr<Manager>());
}

boost::shared_ptr<ResourceManagerHolder::ResManagerExtraParamsProvider>
ResourceManagerHolder::GetExtraParams() {
    if (!extraParams) extraParams = boost::make_shared<ResManagerExtraParamsProvider>();
    return extraParams;
}

}  // namespace AppResources
