#include "graphics/SharedGDIObject.h"

#include <QFont>
#include <QImage>

#include "graphics/internal/FontRecords.h"

namespace CommonGuiLib {

template <>
void ReleaseGDIHandle<kBitmapObject>(QImage* handle) {
    delete handle;
}

template <>
void ReleaseGDIHandle<kIconObject>(QImage* handle) {
    delete handle;
}

template <>
void ReleaseGDIHandle<kFontObject>(QFont* handle) {
    internal::ForgetFontRecord(handle);
    delete handle;
}

}  // namespace CommonGuiLib
