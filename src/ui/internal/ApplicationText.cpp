// Kept apart from the dialog so that only programs that ask for the application's own texts
// link the resource library in.
#include <exception>

#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "resourcelib/ResourceManagerHolder.h"
#include "ui/UpdaterDialogHost.h"

namespace UI {

std::wstring ApplicationText(AppResources::StringID id) {
    // A malformed resource file throws out of the storage that reads it. The texts are asked
    // for inside Qt's event handling, which must not be unwound, and a missing text is
    // shown empty anyway: log the reason and go on with "".
    try {
        return AppResources::ResourceManagerHolder::Instance().GetManager()->GetString(id);
    } catch (const std::exception& error) {
        Debugging::LogMessage(Debugging::GetLog(),
                              L"Text " + std::to_wstring(int(id)) + L" unavailable: " +
                                  STLHelpers::Utf8ToWide(error.what()),
                              STLHelpers::litestring(L"UI:ApplicationText"), 3, 0);
        return {};
    }
}

}  // namespace UI
