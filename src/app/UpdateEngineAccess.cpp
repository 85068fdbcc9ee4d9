// The process-wide update engine, built from the product configuration.
#include "app/ProductConfiguration.h"
#include "engine/UpdateEngine.h"

namespace Engine {

UpdateEngine& GetUpdateEngine() {
    // Built on first use (during start-up, on the user-interface thread) and destroyed at
    // exit, when it cancels the update and ends a setup that still runs.
    static UpdateEngine engine([] {
        ProductConfiguration& configuration = GetProductConfiguration();
        ProductSettings settings;
        settings.downloadURL = configuration.GetDownloadURL();
        settings.silent = configuration.IsSilent();
        settings.publicKey = configuration.GetPublicKey();
        settings.productExecutable = configuration.GetProductExecutable();
        settings.exitEventName = configuration.GetExitEventName();
        settings.installPath = [] { return GetProductConfiguration().GetInstallPath(); };
        return settings;
    }());
    return engine;
}

}  // namespace Engine
