// Engine::HttpDownloader: fetches the setup program (or its signature) with one HTTP GET and
// hands the body to a consumer.
//
// Rules a caller can rely on: "http://" is put before a URL without "://"; the request
// always goes to port 80 of the URL's host with plain HTTP (scheme and port in the URL are
// ignored), path and query as written; the agent text is "Mozilla/4.0 (MSIE 6.0);
// dtaglim:128"; no cached copy is accepted; a proxy named by http_proxy (or all_proxy)
// is used, except for hosts in no_proxy; redirects (301, 302, 303, 307, 308) are followed up
// to 10 times, never from https back to http; the status code is not examined, so an error
// page is saved like any body; a Content-Length that is missing, 0 or unreadable means an
// unknown size; every received block (what one read from the connection brought, up to
// 100 KiB) is written and reported once. Connecting may take 60 s, and a transfer fails
// when no byte moves for 30 s (see Engine::Timeouts).
//
// Thread safety: Download on one thread; Close from another only after Download returned.
#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "engine/IDownloadConsumer.h"
#include "engine/UpdateReport.h"

namespace Engine {

class HttpDownloader {
public:
    static constexpr const char* kAgent = "Mozilla/4.0 (MSIE 6.0); dtaglim:128";

    HttpDownloader(std::wstring url, IDownloadConsumer* consumer);
    HttpDownloader(const HttpDownloader&) = delete;
    HttpDownloader& operator=(const HttpDownloader&) = delete;
    ~HttpDownloader();

    // The whole transfer. True when the body was received completely and committed; on
    // failure the consumer has been aborted and the partial file stays.
    bool Download();

    // Ends the transfer's resources; if any were open, aborts the consumer. Always true.
    bool Close();

    // While Download runs it also watches this flag (the worker's stop request) and gives
    // up soon after it is set, instead of waiting out a slow server. Null: not watched.
    void SetStopFlag(const std::atomic<bool>* stop) { stopFlag = stop; }

    // Download records in `report` what it asks and what it learns (the download part of
    // the report), and writes it to the diagnostic log as it goes. Null: nothing is kept.
    void SetReport(UpdateReport* target) { report = target; }

    const std::wstring& GetURL() const { return url; }

private:
    struct Transfer;

    std::wstring url;
    IDownloadConsumer* consumer;
    const std::atomic<bool>* stopFlag = nullptr;
    UpdateReport* report = nullptr;
    std::unique_ptr<Transfer> transfer;  // the session while Download runs
};

}  // namespace Engine
