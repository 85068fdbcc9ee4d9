// AppResources::ResourceManagerHolder: the process's one application resource manager.
// Start-up fills the product parameters and initialises it from the application's
// resources folder; a first GetManager without that initialises it from the default
// folder; shutdown disables it. GetManager never fails: without a manager it hands out
// one whose texts are all empty.
//
// Thread safety: GetManager, Initialize, AutoInitialize and Shutdown from any thread
// (initialisation is serialised); the manager itself is used from the user-interface
// thread. GetManager reports an Error-level check (throwing ErrorHandling::ErrorException
// through the installed sink) when the automatic initialisation fails.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include <boost/shared_ptr.hpp>

#include "foundation/AtomicNumber.h"
#include "foundation/RWLock.h"
#include "resourcelib/AppResourcesManager.h"

namespace AppResources {

class ResourceManagerHolder {
public:
    // The product's names and versions for placeholders such as "{ProductName}".
    class ResManagerExtraParamsProvider
        : public ResourceLib::IManagerExtraParamsProvider,
          public InterfaceCore::HeirClassBase<ResourceLib::IManagerExtraParamsProvider>,
          public InterfaceCore::EnumeratableClassBase<ResManagerExtraParamsProvider> {
    public:
        // The value of the parameter (names compare ignoring the case of A-Z), or "".
        std::wstring GetParam(ResourceLib::ResourceName name) const override;
        // Ignored for an empty name, a name with "{" or "}", or a name that is a whole
        // decimal number; otherwise sets (or replaces) the value.
        void SetParam(const std::wstring& name, const std::wstring& value);

    private:
        std::map<std::wstring, std::wstring> params;  // lower-cased names
    };

    ResourceManagerHolder() = default;
    ResourceManagerHolder(const ResourceManagerHolder&) = delete;
    ResourceManagerHolder& operator=(const ResourceManagerHolder&) = delete;

    // The holder of the process.
    static ResourceManagerHolder& Instance();

    // False after shutdown and when already initialised; otherwise builds the manager for
    // `directory` (kept even when its own set-up reports a problem) and returns true.
    bool Initialize(const std::wstring& directory);
    // Initialises from <executable folder>/Resources/<executable name without extension>
    // unless initialised already (then true).
    bool AutoInitialize();
    boost::shared_ptr<Manager> GetManager();
    void Shutdown();

    // Created on first use; start-up fills it before Initialize.
    boost::shared_ptr<ResManagerExtraParamsProvider> GetExtraParams();

    static std::wstring DefaultDirectory();

private:
    bool InitializeLocked(const std::wstring& directory);

    Synchronization::AtomicNumberT<int32_t> initCount;
    Synchronization::AtomicNumberT<int32_t> m_isDisabled;
    Synchronization::RWLock lock;        // always taken exclusively
    boost::shared_ptr<Manager> manager;  // read and written atomically
    boost::shared_ptr<ResManagerExtraParamsProvider> extraParams;
};

}  // namespace AppResources
