// Kept apart from the dialog so that only programs that ask for the application's own texts
// link the resource library in.
#include "resourcelib/ResourceManagerHolder.h"
#include "ui/UpdaterDialogHost.h"

namespace UI {

std::wstring ApplicationText(AppResources::StringID id) {
    return AppResources::ResourceManagerHolder::Instance().GetManager()->GetString(id);
}

}  // namespace UI
