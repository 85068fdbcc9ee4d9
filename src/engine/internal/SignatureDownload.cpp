#include "engine/internal/SignatureDownload.h"

#include "engine/HttpDownloader.h"
#include "engine/SetupSignature.h"
#include "engine/internal/UrlParts.h"
#include "foundation/TextConversion.h"

namespace Engine::internal {
namespace {

// Collects the body up to the size limit of a signature file; anything longer ends the
// download, announced or not.
class SignatureBody final : public IDownloadConsumer {
public:
    bool Begin(uint32_t totalBytes) override {
        tooLarge = totalBytes != kUnknownSize && totalBytes > kMaxSignatureFileSize;
        return !tooLarge;
    }
    bool Write(const void* data, std::size_t size) override {
        if (size > kMaxSignatureFileSize - text.size()) {
            tooLarge = true;
            return false;
        }
        text.append(static_cast<const char*>(data), size);
        return true;
    }
    void Commit() override {}
    void Abort() override {}

    std::string text;
    bool tooLarge = false;
};

}  // namespace

std::wstring SignatureUrl(std::wstring_view url) {
    UrlParts parts;
    if (!CrackUrl(url, &parts)) return {};
    std::wstring path = parts.path.empty() ? L"/" : parts.path;
    return parts.scheme + L"://" + parts.host + path + L".minisig" + parts.extra;
}

bool DownloadSignature(const std::wstring& url, const std::atomic<bool>* stop, std::string* text,
                       std::string* reason) {
    const std::wstring signatureUrl = SignatureUrl(url);
    if (signatureUrl.empty()) {
        *reason = "the download URL cannot be split";
        return false;
    }
    SignatureBody body;
    HttpDownloader downloader(signatureUrl, &body);
    downloader.SetStopFlag(stop);
    if (!downloader.Download()) {
        *reason =
            body.tooLarge
                ? "the signature at " + STLHelpers::WideToUtf8(signatureUrl) + " is larger than " +
                      std::to_string(kMaxSignatureFileSize) + " bytes"
                : "the signature cannot be downloaded from " + STLHelpers::WideToUtf8(signatureUrl);
        return false;
    }
    *text = std::move(body.text);
    return true;
}

SignatureVerdict CheckSetupSignature(const std::wstring& url, const std::wstring& setupPath,
                                     const std::wstring& publicKey, const std::atomic<bool>* stop) {
    SignatureVerdict verdict;
    std::string signature;
    if (!DownloadSignature(url, stop, &signature, &verdict.reason)) return verdict;
    return VerifySignedFile(setupPath, STLHelpers::WideToUtf8(publicKey), signature, stop);
}

}  // namespace Engine::internal
