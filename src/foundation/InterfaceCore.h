// InterfaceCore::IInterfaceCore: the root of every interface of the system. It gives each
// interface a virtual destructor, so an object may be destroyed through any interface
// pointer it is held by.
#pragma once

namespace InterfaceCore {

template <class Interface>
struct IInterfaceCore {
    virtual ~IInterfaceCore() = default;
};

}  // namespace InterfaceCore
