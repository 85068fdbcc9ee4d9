// Engine::VerifySignedFile: whether a file on disk carries a valid signature by a given key
// (see SetupSignature.h), with the reason in words when it does not.
//
// Thread safety: any thread.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

namespace Engine {

struct SignatureVerdict {
    bool valid = false;
    std::string reason;          // why not, when not valid
    std::string keyId;           // of the key, once it could be read
    std::string trustedComment;  // of the signature, once it could be read
};

// Reads the file at `path` in blocks and checks it against `signatureText` (a signature
// file's content) and `publicKey` (the base64 line of a public key). A set `stop` flag ends
// the reading early, as a failure.
SignatureVerdict VerifySignedFile(const std::wstring& path, std::string_view publicKey,
                                  std::string_view signatureText,
                                  const std::atomic<bool>* stop = nullptr);

}  // namespace Engine
