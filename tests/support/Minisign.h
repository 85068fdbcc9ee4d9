// Fixed key pairs and signatures made by the real minisign program, for the tests of signed
// setups. The keys live in tests/fixtures/keys: their ids begin with zero nibbles, where a
// zero-padded id and minisign's own differ.
#pragma once

#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/TestFiles.h"

namespace TestSupport {

struct MinisignKey {
    std::string secretKeyFile;
    std::string publicKey;  // the base64 line of the .pub file; empty when it cannot be read
    std::string keyId;      // as minisign writes it in the .pub file's comment
};

// The fixture pair `name` ("mine": id EE7336E7F2B60, "other": id D6E4897747139CB).
inline MinisignKey FixedMinisignKey(const std::string& name) {
    const std::string base = std::string(LUMETTA_TEST_KEYS) + "/" + name;
    MinisignKey key{base + ".key", {}, {}};
    const std::string text = ReadFile(base + ".pub");
    const size_t end = text.find('\n');
    if (end == std::string::npos) return key;
    key.keyId = text.substr(text.rfind(' ', end) + 1, end - text.rfind(' ', end) - 1);
    key.publicKey = text.substr(end + 1, text.find('\n', end + 1) - end - 1);
    return key;
}

// Signs `file` into `signature` (prehashed unless `extra` holds "-l"); true on success.
inline bool MinisignSign(const MinisignKey& key, const std::string& file,
                         const std::string& signature, std::vector<std::string> extra = {}) {
    std::vector<std::string> argv{"minisign", "-S", "-s", key.secretKeyFile,
                                  "-m",       file, "-x", signature};
    argv.insert(argv.end(), extra.begin(), extra.end());
    return RunProgram(argv).exitCode == 0;
}

}  // namespace TestSupport
