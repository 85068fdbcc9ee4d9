// Keys and signatures made by the real minisign program, for the tests of signed setups.
#pragma once

#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/TestFiles.h"

namespace TestSupport {

struct MinisignKey {
    std::string secretKeyFile;
    std::string publicKey;  // the base64 line of the .pub file; empty when minisign failed
};

// A new key pair without a password, its files `folder`/`name`.key and .pub.
inline MinisignKey MakeMinisignKey(const std::string& folder, const std::string& name) {
    MinisignKey key{folder + "/" + name + ".key", {}};
    const std::string pub = folder + "/" + name + ".pub";
    if (RunProgram({"minisign", "-G", "-W", "-f", "-p", pub, "-s", key.secretKeyFile}).exitCode !=
        0)
        return key;
    const std::string text = ReadFile(pub);
    const size_t start = text.find('\n');
    if (start != std::string::npos)
        key.publicKey = text.substr(start + 1, text.find('\n', start + 1) - start - 1);
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
