#include "resourcelib/Skin.h"

#include <utility>

namespace ResourceLib {

Skin::Skin(boost::weak_ptr<IManager> manager, std::wstring name, std::wstring titleID)
    : manager(std::move(manager)), name(std::move(name)), titleID(std::move(titleID)) {}

std::wstring Skin::GetName() const {
    return name;
}

std::wstring Skin::GetTitle() const {
    const ManagerPtr owner = manager.lock();
    if (!owner) return titleID;
    std::wstring title =
        owner->GetString(ResourceName(titleID.c_str(), static_cast<uint32_t>(titleID.size())));
    return title.empty() ? titleID : title;
}

}  // namespace ResourceLib
