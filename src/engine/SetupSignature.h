// Signatures of setup programs in the minisign format, and their verification (Ed25519).
//
// A public key is the base64 line of a minisign ".pub" file: "Ed", an 8-byte key id and the
// 32-byte key. A signature file has four lines:
//
//   untrusted comment: <text>
//   base64("Ed" or "ED", key id, 64-byte signature of the file, or of its BLAKE2b-512 hash)
//   trusted comment: <text>
//   base64(64-byte signature of the first signature followed by the trusted comment)
//
// A file counts as signed only when the key ids match, the file's signature verifies with
// the key, and so does the signature over the trusted comment.
//
// Parsing reads only the given text; SignatureCheck only the bytes it is fed. Both fail
// with a reason in words, never by throwing (std::bad_alloc aside).
//
// Thread safety: the functions from any thread; one SignatureCheck from one thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace Engine {

using SignatureKeyId = std::array<uint8_t, 8>;

struct SignaturePublicKey {
    SignatureKeyId keyId{};
    std::array<uint8_t, 32> key{};
};

struct SetupSignature {
    bool prehashed = false;  // "ED": the file's BLAKE2b-512 hash is signed; "Ed": the file
    SignatureKeyId keyId{};
    std::array<uint8_t, 64> signature{};
    std::string untrustedComment;
    std::string trustedComment;
    std::array<uint8_t, 64> globalSignature{};
};

// Limits of what is accepted. A signature file is a few hundred bytes; these leave room
// for long comments and stop anything that is not a signature early.
inline constexpr std::size_t kMaxSignatureFileSize = 64 * 1024;
inline constexpr std::size_t kMaxSignatureCommentSize = 8 * 1024;

// The key from its base64 line; blanks and line ends around it are ignored. False with
// *reason when it is not a minisign Ed25519 public key.
bool ParsePublicKey(std::string_view text, SignaturePublicKey* key, std::string* reason);

// The signature from the text of a signature file (lines end in "\n" or "\r\n"). False
// with *reason when the text is not a well-formed signature.
bool ParseSignature(std::string_view text, SetupSignature* signature, std::string* reason);

// The key id as minisign shows it: upper-case hex, last byte first, no leading zeros.
std::string KeyIdText(const SignatureKeyId& id);

// Checks one file against one signature, fed in pieces:
//
//   SignatureCheck check(key, signature);
//   while (more && check.Add(data, size)) ...;
//   if (!check.Finish(&reason)) ...;
class SignatureCheck {
public:
    // A legacy ("Ed") signature covers the file itself, which must then be held whole;
    // larger files are refused.
    static constexpr std::size_t kMaxLegacyFileSize = std::size_t{256} << 20;

    SignatureCheck(const SignaturePublicKey& key, const SetupSignature& signature);
    SignatureCheck(const SignatureCheck&) = delete;
    SignatureCheck& operator=(const SignatureCheck&) = delete;
    ~SignatureCheck();

    // The next bytes of the file. False once the outcome is known to be a failure (another
    // key, a legacy-signed file that is too large): the caller may stop feeding.
    bool Add(const void* data, std::size_t size);
    // Whether the bytes added are the signed file; false with *reason otherwise. Once only.
    bool Finish(std::string* reason);

private:
    struct State;
    std::unique_ptr<State> state;
};

}  // namespace Engine
