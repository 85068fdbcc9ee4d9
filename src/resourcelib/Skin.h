// ResourceLib::Skin: one skin a resources directory offers. Its display title is a string
// resource looked up in the manager on each call, so it follows the current language.
//
// Errors: GetTitle throws what the manager's GetString throws (with throw-on-failure set,
// std::runtime_error for a missing title resource).
//
// Thread safety: immutable; GetTitle may be called wherever the manager may be.
#pragma once

#include <string>

#include <boost/weak_ptr.hpp>

#include "foundation/InterfaceCore.h"
#include "storages/IManager.h"

namespace ResourceLib {

class Skin : public ISkin,
             public InterfaceCore::HeirClassBase<ISkin>,
             public InterfaceCore::EnumeratableClassBase<Skin> {
public:
    // `manager` is never kept alive by the skin.
    Skin(boost::weak_ptr<IManager> manager, std::wstring name, std::wstring titleID);

    std::wstring GetName() const override;
    // The string resource named by titleID, or titleID itself when the manager is gone or
    // the resource is empty.
    std::wstring GetTitle() const override;

private:
    boost::weak_ptr<IManager> manager;
    std::wstring name;
    std::wstring titleID;
};

}  // namespace ResourceLib
