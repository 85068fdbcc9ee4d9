// Fetching the signature of a setup program: the download URL with ".minisig" after its
// path, through the same HttpDownloader (and so the same HTTP rules) as the setup itself,
// kept in memory and limited in size.
#pragma once

#include <atomic>
#include <string>
#include <string_view>

#include "engine/SignedFile.h"

namespace Engine::internal {

// `url` (normalised: with "://") with ".minisig" put after its path, before any query or
// fragment; "" when the URL cannot be split.
std::wstring SignatureUrl(std::wstring_view url);

// Downloads the signature of the setup at `url` into *text. False with *reason when the
// URL cannot be split, the transfer fails (`stop` set, connection, time-out) or the body
// is larger than a signature file may be.
bool DownloadSignature(const std::wstring& url, const std::atomic<bool>* stop, std::string* text,
                       std::string* reason);

// Fetches the signature of the setup downloaded from `url` into `setupPath` and checks the
// file with `publicKey`; a set `stop` ends either step early, as a failure.
SignatureVerdict CheckSetupSignature(const std::wstring& url, const std::wstring& setupPath,
                                     const std::wstring& publicKey, const std::atomic<bool>* stop);

}  // namespace Engine::internal
