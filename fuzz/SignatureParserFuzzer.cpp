// libFuzzer target for the signature parser: any bytes, as a signature file and as a public
// key, must be refused or parsed within bounds; what parses is then checked against the
// input itself, which must end in a verdict, never a crash.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "engine/SetupSignature.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(bytes), size);
    std::string reason;

    Engine::SetupSignature signature;
    const bool isSignature = Engine::ParseSignature(text, &signature, &reason);
    Engine::SignaturePublicKey key;
    const bool isKey = Engine::ParsePublicKey(text, &key, &reason);
    if (!isSignature) return 0;

    // The signature's own key id with a key that cannot have made it.
    if (!isKey) key.keyId = signature.keyId;
    Engine::SignatureCheck check(key, signature);
    check.Add(bytes, size / 2);
    check.Add(bytes + size / 2, size - size / 2);
    check.Finish(&reason);
    return 0;
}
