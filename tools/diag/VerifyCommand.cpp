// lumetta-diag verify FILE [--signature FILE.minisig] --public-key KEY: checks FILE and its
// minisign signature with KEY exactly as the updater checks a downloaded setup, so that a
// release pipeline can test what it publishes. Exit status 0 when the signature is valid,
// 1 with the reason otherwise.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include "DiagCommands.h"
#include "engine/SignedFile.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"

namespace {

struct VerifyOptions {
    std::string file;
    std::string signature;  // empty: FILE.minisig
    std::string publicKey;
};

int Verify(const VerifyOptions& options) {
    const std::string signaturePath =
        options.signature.empty() ? options.file + ".minisig" : options.signature;
    std::vector<uint8_t> signature;
    if (!System::ReadWholeFile(STLHelpers::Utf8ToWide(signaturePath), signature)) {
        std::fprintf(stderr, "invalid: the signature file %s cannot be read\n",
                     signaturePath.c_str());
        return 1;
    }
    // Bytes beyond the limit are refused by the parser, as in a download.
    const Engine::SignatureVerdict verdict = Engine::VerifySignedFile(
        STLHelpers::Utf8ToWide(options.file), options.publicKey,
        std::string_view(reinterpret_cast<const char*>(signature.data()), signature.size()));
    if (!verdict.valid) {
        std::fprintf(stderr, "invalid: %s\n", verdict.reason.c_str());
        return 1;
    }
    std::printf("valid: signed by key %s\ntrusted comment: %s\n", verdict.keyId.c_str(),
                verdict.trustedComment.c_str());
    return 0;
}

const DiagCommands::Registration registration{
    "verify", [](CLI::App& app) {
        auto* verify = app.add_subcommand(
            "verify", "Check a file's minisign signature as the updater checks a setup");
        auto options = std::make_shared<VerifyOptions>();
        verify->add_option("FILE", options->file, "The signed file")->required();
        verify->add_option("--signature", options->signature,
                           "The signature file (default: FILE.minisig)");
        verify
            ->add_option("--public-key", options->publicKey,
                         "The public key: the base64 line of a minisign .pub file")
            ->required();
        verify->callback([options]() { DiagCommands::SetExitCode(Verify(*options)); });
    }};

}  // namespace
