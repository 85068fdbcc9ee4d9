#include "engine/SignedFile.h"

#include <fstream>
#include <vector>

#include "engine/SetupSignature.h"
#include "foundation/TextConversion.h"

namespace Engine {

SignatureVerdict VerifySignedFile(const std::wstring& path, std::string_view publicKey,
                                  std::string_view signatureText, const std::atomic<bool>* stop) {
    SignatureVerdict verdict;
    SignaturePublicKey key;
    if (!ParsePublicKey(publicKey, &key, &verdict.reason)) return verdict;
    verdict.keyId = KeyIdText(key.keyId);
    SetupSignature signature;
    if (!ParseSignature(signatureText, &signature, &verdict.reason)) return verdict;
    verdict.trustedComment = signature.trustedComment;

    SignatureCheck check(key, signature);
    std::ifstream file(STLHelpers::WideToUtf8(path), std::ios::binary);
    if (!file) {
        verdict.reason = "the file cannot be opened";
        return verdict;
    }
    std::vector<char> block(1 << 20);
    bool more = true;
    while (more && file) {
        if (stop && stop->load()) {
            verdict.reason = "the check was stopped";
            return verdict;
        }
        file.read(block.data(), static_cast<std::streamsize>(block.size()));
        more = check.Add(block.data(), static_cast<std::size_t>(file.gcount()));
    }
    if (more && file.bad()) {
        verdict.reason = "the file cannot be read";
        return verdict;
    }
    verdict.valid = check.Finish(&verdict.reason);
    return verdict;
}

}  // namespace Engine
