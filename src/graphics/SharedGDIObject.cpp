#include "graphics/SharedGDIObject.h"

#include <QFont>
#include <QImage>

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
    delete handle;
}

}  // namespace CommonGuiLib
