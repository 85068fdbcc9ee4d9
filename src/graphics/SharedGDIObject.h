// CommonGuiLib::SharedGDIObjectImpl: one image or font shared by several owners. The
// holder deletes what it owns when the last shared pointer to it goes, so images handed
// out by the resource library may be kept by any number of controls.
//
// Kinds: 0 a bitmap (a 32-bit ARGB QImage), 1 an icon (a QImage of the size asked for),
// 3 a font (a QFont). The Qt types are only named here, so libraries that pass handles
// along need no Qt header; code that draws includes them itself.
//
// Thread safety: a holder is immutable after construction; the shared pointer's count is
// atomic, so the last release may happen on any thread.
#pragma once

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>

class QImage;
class QFont;

namespace CommonGuiLib {

enum GDIObjectKind : int { kBitmapObject = 0, kIconObject = 1, kFontObject = 3 };

template <int Kind>
struct GDIHandleType;
template <>
struct GDIHandleType<kBitmapObject> {
    using type = QImage;
};
template <>
struct GDIHandleType<kIconObject> {
    using type = QImage;
};
template <>
struct GDIHandleType<kFontObject> {
    using type = QFont;
};

// Deletes a handle of the kind; defined where the Qt types are complete.
template <int Kind>
void ReleaseGDIHandle(typename GDIHandleType<Kind>::type* handle);
template <>
void ReleaseGDIHandle<kBitmapObject>(QImage* handle);
template <>
void ReleaseGDIHandle<kIconObject>(QImage* handle);
template <>
void ReleaseGDIHandle<kFontObject>(QFont* handle);

template <int Kind>
class SharedGDIObjectImpl {
public:
    using Handle = typename GDIHandleType<Kind>::type;

    SharedGDIObjectImpl() = default;
    // Takes `handle` (may be null); released at destruction when `owned`.
    explicit SharedGDIObjectImpl(Handle* handle, bool owned = true)
        : owned(owned), handle(handle) {}
    SharedGDIObjectImpl(const SharedGDIObjectImpl&) = delete;
    SharedGDIObjectImpl& operator=(const SharedGDIObjectImpl&) = delete;
    ~SharedGDIObjectImpl() {
        if (owned && handle != nullptr) ReleaseGDIHandle<Kind>(handle);
        owned = false;
    }

    Handle* GetHandle() const { return handle; }
    bool IsOwned() const { return owned; }
    explicit operator bool() const { return handle != nullptr; }

private:
    bool owned = false;
    Handle* handle = nullptr;
};

using SharedBitmap = boost::shared_ptr<SharedGDIObjectImpl<kBitmapObject>>;
using SharedIcon = boost::shared_ptr<SharedGDIObjectImpl<kIconObject>>;
using SharedFont = boost::shared_ptr<SharedGDIObjectImpl<kFontObject>>;

// True when `object` holds a handle (an empty pointer or a null handle does not).
template <class Shared>
bool HasHandle(const Shared& object) {
    return object && object->GetHandle() != nullptr;
}

}  // namespace CommonGuiLib
