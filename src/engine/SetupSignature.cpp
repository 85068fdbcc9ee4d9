#include "engine/SetupSignature.h"

#include <sodium.h>

#include <algorithm>
#include <cstring>
#include <vector>

namespace Engine {
namespace {

constexpr std::string_view kUntrustedPrefix = "untrusted comment: ";
constexpr std::string_view kTrustedPrefix = "trusted comment: ";
constexpr std::string_view kLegacyTag = "Ed";
constexpr std::string_view kPrehashedTag = "ED";
constexpr std::size_t kTagSize = 2;

bool SodiumReady() {
    // sodium_init may be called from several threads and more than once.
    static const bool ready = sodium_init() >= 0;
    return ready;
}

// Standard base64 with padding, the whole text; the decoded bytes must number `expected`.
bool DecodeBase64(std::string_view text, std::size_t expected, std::vector<uint8_t>* bytes) {
    if (text.empty()) return false;
    bytes->assign(text.size() / 4 * 3 + 3, 0);
    std::size_t length = 0;
    const char* end = nullptr;
    if (sodium_base642bin(bytes->data(), bytes->size(), text.data(), text.size(), nullptr, &length,
                          &end, sodium_base64_VARIANT_ORIGINAL) != 0 ||
        end != text.data() + text.size())
        return false;
    bytes->resize(length);
    return length == expected;
}

std::string_view TrimBlanks(std::string_view text) {
    const auto blank = [](char ch) { return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\n'; };
    while (!text.empty() && blank(text.front())) text.remove_prefix(1);
    while (!text.empty() && blank(text.back())) text.remove_suffix(1);
    return text;
}

bool Fail(std::string* reason, std::string text) {
    if (reason) *reason = std::move(text);
    return false;
}

}  // namespace

bool ParsePublicKey(std::string_view text, SignaturePublicKey* key, std::string* reason) {
    if (!SodiumReady()) return Fail(reason, "the cryptography library cannot be initialised");
    text = TrimBlanks(text);
    if (text.empty()) return Fail(reason, "the public key is empty");
    std::vector<uint8_t> bytes;
    if (!DecodeBase64(text, kTagSize + key->keyId.size() + key->key.size(), &bytes))
        return Fail(reason, "the public key is not the base64 line of a minisign public key");
    if (std::string_view(reinterpret_cast<const char*>(bytes.data()), kTagSize) != kLegacyTag)
        return Fail(reason, "the public key is not an Ed25519 key");
    std::copy_n(bytes.begin() + kTagSize, key->keyId.size(), key->keyId.begin());
    std::copy_n(bytes.begin() + kTagSize + key->keyId.size(), key->key.size(), key->key.begin());
    return true;
}

bool ParseSignature(std::string_view text, SetupSignature* signature, std::string* reason) {
    if (!SodiumReady()) return Fail(reason, "the cryptography library cannot be initialised");
    if (text.empty()) return Fail(reason, "the signature file is empty");
    if (text.size() > kMaxSignatureFileSize)
        return Fail(reason, "the signature file is larger than " +
                                std::to_string(kMaxSignatureFileSize) + " bytes");

    // The first line is checked before the count of lines, so that an error page in place
    // of the signature is named as what it is.
    std::string_view lines[4];
    std::size_t count = 0;
    std::string_view rest = text;
    for (; count < 4 && !rest.empty(); ++count) {
        const std::size_t end = rest.find('\n');
        std::string_view line = rest.substr(0, end);
        rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        lines[count] = line;
    }
    SetupSignature result;
    if (!lines[0].starts_with(kUntrustedPrefix))
        return Fail(reason, "the signature file does not begin with an untrusted comment");
    if (count < 4) return Fail(reason, "the signature file is truncated");
    if (!TrimBlanks(rest).empty())
        return Fail(reason, "the signature file has more than four lines");
    result.untrustedComment = lines[0].substr(kUntrustedPrefix.size());

    std::vector<uint8_t> bytes;
    if (!DecodeBase64(lines[1], kTagSize + result.keyId.size() + result.signature.size(), &bytes))
        return Fail(reason, "the signature line is not base64 of a minisign signature");
    const std::string_view tag(reinterpret_cast<const char*>(bytes.data()), kTagSize);
    if (tag != kLegacyTag && tag != kPrehashedTag)
        return Fail(reason, "the signature algorithm is not supported");
    result.prehashed = tag == kPrehashedTag;
    std::copy_n(bytes.begin() + kTagSize, result.keyId.size(), result.keyId.begin());
    std::copy_n(bytes.begin() + kTagSize + result.keyId.size(), result.signature.size(),
                result.signature.begin());

    if (!lines[2].starts_with(kTrustedPrefix))
        return Fail(reason, "the signature file has no trusted comment");
    result.trustedComment = lines[2].substr(kTrustedPrefix.size());
    if (result.untrustedComment.size() > kMaxSignatureCommentSize ||
        result.trustedComment.size() > kMaxSignatureCommentSize)
        return Fail(reason, "a comment of the signature file is longer than " +
                                std::to_string(kMaxSignatureCommentSize) + " bytes");

    if (!DecodeBase64(lines[3], result.globalSignature.size(), &bytes))
        return Fail(reason, "the trusted comment's signature is not base64 of 64 bytes");
    std::copy(bytes.begin(), bytes.end(), result.globalSignature.begin());

    *signature = std::move(result);
    return true;
}

// minisign prints the id as a little-endian number in upper-case hex without leading zeros;
// integrators compare what we log with what minisign showed them, so ours must read the same.
std::string KeyIdText(const SignatureKeyId& id) {
    static const char kHex[] = "0123456789ABCDEF";
    std::string text;
    for (auto byte = id.rbegin(); byte != id.rend(); ++byte) {
        text += kHex[*byte >> 4];
        text += kHex[*byte & 15];
    }
    const size_t first = text.find_first_not_of('0');
    return first == std::string::npos ? "0" : text.substr(first);
}

struct SignatureCheck::State {
    SignaturePublicKey key;
    SetupSignature signature;
    crypto_generichash_state hash;  // prehashed: the running hash of the file
    std::vector<uint8_t> file;      // legacy: the file itself
    std::string failure;            // known before the end
    bool finished = false;
};

SignatureCheck::SignatureCheck(const SignaturePublicKey& key, const SetupSignature& signature)
    : state(std::make_unique<State>()) {
    state->key = key;
    state->signature = signature;
    if (!SodiumReady())
        state->failure = "the cryptography library cannot be initialised";
    else if (key.keyId != signature.keyId)
        state->failure = "the signature was made with another key (key ID " +
                         KeyIdText(signature.keyId) + ", expected " + KeyIdText(key.keyId) + ")";
    else if (signature.prehashed)
        crypto_generichash_init(&state->hash, nullptr, 0, crypto_generichash_BYTES_MAX);
}

SignatureCheck::~SignatureCheck() = default;

bool SignatureCheck::Add(const void* data, std::size_t size) {
    if (state->finished || !state->failure.empty()) return false;
    const auto* bytes = static_cast<const uint8_t*>(data);
    if (state->signature.prehashed) {
        crypto_generichash_update(&state->hash, bytes, size);
        return true;
    }
    if (size > kMaxLegacyFileSize - state->file.size()) {
        state->failure = "the file is too large for a legacy signature (more than " +
                         std::to_string(kMaxLegacyFileSize >> 20) + " MiB); sign it prehashed";
        state->file = {};
        return false;
    }
    state->file.insert(state->file.end(), bytes, bytes + size);
    return true;
}

bool SignatureCheck::Finish(std::string* reason) {
    if (state->finished) return Fail(reason, "the file has been checked already");
    state->finished = true;
    if (!state->failure.empty()) return Fail(reason, state->failure);
    const SetupSignature& signature = state->signature;
    const unsigned char* key = state->key.key.data();

    bool fileSigned = false;
    if (signature.prehashed) {
        std::array<uint8_t, crypto_generichash_BYTES_MAX> digest{};
        crypto_generichash_final(&state->hash, digest.data(), digest.size());
        fileSigned = crypto_sign_verify_detached(signature.signature.data(), digest.data(),
                                                 digest.size(), key) == 0;
    } else {
        fileSigned = crypto_sign_verify_detached(signature.signature.data(), state->file.data(),
                                                 state->file.size(), key) == 0;
    }
    if (!fileSigned)
        return Fail(reason,
                    "the signature does not match the file (changed after signing, "
                    "or signed with another key)");

    std::vector<uint8_t> global(signature.signature.begin(), signature.signature.end());
    global.insert(global.end(), signature.trustedComment.begin(), signature.trustedComment.end());
    if (crypto_sign_verify_detached(signature.globalSignature.data(), global.data(), global.size(),
                                    key) != 0)
        return Fail(reason, "the trusted comment's signature does not verify");
    return true;
}

}  // namespace Engine
