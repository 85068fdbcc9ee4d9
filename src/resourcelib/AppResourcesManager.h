// AppResources::Manager: the application's wrapper around its resource manager. It
// assembles the manager for a resources directory (metadata, storages, a parent for the
// metadata's base directory, the string ids), fetches texts by StringID, and can check
// that every language has every text.
//
// Thread safety: built by the holder (any thread, serialised there); used from the
// user-interface thread.
#pragma once

#include <cstdint>
#include <string>

#include <boost/shared_ptr.hpp>

#include "foundation/InterfaceCore.h"
#include "resourcelib/StringID.h"
#include "storages/IManager.h"

namespace AppResources {

struct IManagerHelpersUser : InterfaceCore::IInterfaceCore<IManagerHelpersUser> {
    virtual ResourceLib::ManagerPtr GetResourceManager() const {
        InterfaceCore::ThrowPureVirtualCall();
    }
    // Answers "" here; nothing in the updater uses it.
    virtual std::wstring GetHelperText(int32_t first, int32_t second) const {
        (void)first, (void)second;
        InterfaceCore::ThrowPureVirtualCall();
    }
};

class Manager : public IManagerHelpersUser {
public:
    explicit Manager(ResourceLib::ManagerPtr resourceManager);
    // Clears the resource manager, so storages and parent go with this wrapper.
    ~Manager() override;

    ResourceLib::ManagerPtr GetResourceManager() const override { return resourceManager; }
    std::wstring GetHelperText(int32_t, int32_t) const override { return {}; }

    // Sets the manager up for `directory` (the executable's "Resources" folder when it is
    // empty or missing). False when it was set up already, or when the resource check is on
    // (displayErrors, or the registry's "DisplayErrors") and finds a text missing.
    bool Initialize(ResourceLib::ResourceName directory,
                    const ResourceLib::ExtraParamsProviderPtr& extraParams,
                    int32_t moduleResourceBase, bool displayErrors);

    // "" for an id without text.
    std::wstring GetString(StringID id) const;

    // One line per language that lacks texts and one per missing text; "" when all are there.
    std::wstring CheckResources() const;
    bool IsValid() const { return CheckResources().empty(); }

    const std::wstring& GetDirectory() const { return directory; }

private:
    std::wstring directory;
    int32_t moduleResourceBase = -1;
    ResourceLib::ManagerPtr resourceManager;
    ResourceLib::ExtraParamsProviderPtr extraParams;
};

}  // namespace AppResources
