// Engine::ProductSettings: what the engine needs to know about the product it updates. The
// application fills it from its product configuration (see GetUpdateEngine); tests fill it
// directly.
#pragma once

#include <functional>
#include <string>

namespace Engine {

struct ProductSettings {
    // Where the setup program is downloaded from.
    std::wstring downloadURL;
    // Run the setup with the silent switches and a time limit; otherwise without either.
    bool silent = true;
    // The base64 line of the minisign public key that must have signed the setup; empty:
    // setups are run unchecked.
    std::wstring publicKey;
    // File name of the product's executable ("LumettaPlayer.exe"), to find it running and
    // to launch it.
    std::wstring productExecutable;
    // Name of the named event the running product waits on.
    std::wstring exitEventName;
    // Folder of the installed product; asked afresh each time, as a setup may change it.
    std::function<std::wstring()> installPath;
};

}  // namespace Engine
