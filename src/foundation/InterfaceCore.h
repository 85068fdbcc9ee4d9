// The bases every interface and class of the resource library is built from.
//
// InterfaceCore::IInterfaceCore is the root of each interface: a virtual destructor, so an
// object may be destroyed through any interface pointer it is held by. HeirClassBase names
// the interface a concrete class implements; EnumeratableClassBase gives a concrete class
// shared_from_this, since every such object lives behind a boost::shared_ptr.
//
// Interface operations with a body of their own call ThrowPureVirtualCall: a class that
// leaves one out fails loudly when it is called instead of being abstract.
#pragma once

#include <stdexcept>

#include <boost/enable_shared_from_this.hpp>

namespace InterfaceCore {

template <class Interface>
struct IInterfaceCore {
    virtual ~IInterfaceCore() = default;
};

template <class Interface>
struct HeirClassBase {};

template <class Class>
struct EnumeratableClassBase : boost::enable_shared_from_this<Class> {};

// Throws std::runtime_error "Pure virtual function call".
[[noreturn]] inline void ThrowPureVirtualCall() {
    throw std::runtime_error("Pure virtual function call");
}

}  // namespace InterfaceCore
