#include "engine/HttpDownloader.h"

#include <curl/curl.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "engine/Timeouts.h"
#include "engine/internal/ReportLog.h"
#include "engine/internal/UrlParts.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"

namespace Engine {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kMaxRedirects = 10;
constexpr long kBlockSize = 100 * 1024;

// Writer names of the download's log lines.
constexpr const wchar_t* kRequestWriter = L"Engine:HttpDownloader:Download@1";
constexpr const wchar_t* kResponseWriter = L"Engine:HttpDownloader:Download@2";
constexpr const wchar_t* kTransferWriter = L"Engine:HttpDownloader:Download@3";

void InitialiseCurlOnce() {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        char x = a[i], y = b[i];
        if (x >= 'A' && x <= 'Z') x = static_cast<char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z') y = static_cast<char>(y - 'A' + 'a');
        if (x != y) return false;
    }
    return true;
}

std::string_view Trim(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r' ||
                             text.back() == '\n'))
        text.remove_suffix(1);
    return text;
}

// A decimal Content-Length that fits in 32 bits; anything else is no length at all.
std::optional<uint32_t> ParseLength(std::string_view text) {
    text = Trim(text);
    if (text.empty() || text.size() > 10) return std::nullopt;
    uint64_t value = 0;
    for (char ch : text) {
        if (ch < '0' || ch > '9') return std::nullopt;
        value = value * 10 + static_cast<uint64_t>(ch - '0');
    }
    if (value > 0xFFFFFFFFu) return std::nullopt;
    return static_cast<uint32_t>(value);
}

std::optional<std::string> FirstVariable(std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (auto value = Platform::GetEnvironment(name); value && !value->empty()) return value;
    return std::nullopt;
}

// `location` resolved against `base`, and its scheme; false when curl cannot parse it.
bool ResolveLocation(const std::string& base, const std::string& location, std::string* target,
                     std::string* scheme) {
    CURLU* url = curl_url();
    if (!url) return false;
    char* text = nullptr;
    char* schemeText = nullptr;
    const bool ok = curl_url_set(url, CURLUPART_URL, base.c_str(), 0) == CURLUE_OK &&
                    curl_url_set(url, CURLUPART_URL, location.c_str(), 0) == CURLUE_OK &&
                    curl_url_get(url, CURLUPART_URL, &text, 0) == CURLUE_OK &&
                    curl_url_get(url, CURLUPART_SCHEME, &schemeText, 0) == CURLUE_OK;
    if (ok) {
        *target = text;
        *scheme = schemeText;
    }
    curl_free(text);
    curl_free(schemeText);
    curl_url_cleanup(url);
    return ok;
}

}  // namespace

// One session: the curl handle with its header list, and what the callbacks learn about
// the response in progress.
struct HttpDownloader::Transfer {
    CURL* easy = nullptr;
    curl_slist* headers = nullptr;
    IDownloadConsumer* consumer = nullptr;
    const std::atomic<bool>* stop = nullptr;
    UpdateReport* report = nullptr;  // never null while Download runs

    // Why a callback gave up, when one did: curl then only says that it was told to stop.
    TransferEnd givenUp = TransferEnd::NotStarted;
    char errorText[CURL_ERROR_SIZE] = {};

    std::string currentUrl;
    std::string currentScheme = "http";
    int redirects = 0;

    // The response whose headers are being read.
    int status = 0;
    std::optional<uint32_t> contentLength;
    std::string location;

    // The hop under way.
    bool redirecting = false;  // its body is skipped; the next hop goes to redirectTarget
    std::string redirectTarget;
    std::string redirectScheme;
    bool begun = false;  // the final response has been announced to the consumer

    bool connected = false;
    Clock::time_point lastActivity = Clock::now();
    std::chrono::milliseconds receiveTimeout{ReceiveTimeoutMs()};

    // libcurl hands one read from the socket (up to kBlockSize) to OnBody in pieces of at
    // most 16 KiB. They are gathered here and written as one block once curl has finished
    // that read (it then calls OnProgress), when the buffer is full, or when the transfer
    // ends. Writing every piece on its own, mostly at offsets that are not page-aligned,
    // made the download about 15 % slower than curl's own tool.
    std::vector<char> pending;
    bool writeFailed = false;

    Transfer() { pending.reserve(kBlockSize); }

    ~Transfer() {
        if (headers) curl_slist_free_all(headers);
        if (easy) curl_easy_cleanup(easy);
    }

    void Touch() { lastActivity = Clock::now(); }

    // Writes the gathered block, if any. False once a write has failed.
    bool FlushPending() {
        if (pending.empty()) return !writeFailed;
        if (!writeFailed && !consumer->Write(pending.data(), pending.size())) {
            GiveUp(TransferEnd::WriteFailed);
            writeFailed = true;
        }
        pending.clear();
        return !writeFailed;
    }

    // Keeps the first reason only: what follows a failure is its consequence.
    void GiveUp(TransferEnd reason) {
        if (givenUp == TransferEnd::NotStarted) givenUp = reason;
    }

    bool EndOfHeaders() {
        if (status >= 100 && status < 200) return true;  // an interim answer; more follow
        const bool redirect =
            status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
        report->responses.push_back({status, contentLength, {}});
        if (redirect && !location.empty()) {
            std::string target, scheme;
            if (!ResolveLocation(currentUrl, location, &target, &scheme) ||
                (scheme != "http" && scheme != "https")) {
                report->responses.back().location = location;
                GiveUp(TransferEnd::BadRedirect);
                return false;
            }
            // From https back to http is not followed: that answer is the final one.
            if (!(currentScheme == "https" && scheme == "http")) {
                report->responses.back().location = target;
                if (redirects >= kMaxRedirects) {
                    GiveUp(TransferEnd::TooManyRedirects);
                    return false;
                }
                internal::LogReportLine(kResponseWriter, [&] {
                    return DescribeResponse(report->responses.back(), true);
                });
                redirecting = true;
                redirectTarget = std::move(target);
                redirectScheme = std::move(scheme);
                return true;
            }
        }
        internal::LogReportLine(kResponseWriter,
                                [&] { return DescribeResponse(report->responses.back(), false); });
        begun = true;
        const uint32_t size =
            contentLength && *contentLength != 0 ? *contentLength : IDownloadConsumer::kUnknownSize;
        if (consumer->Begin(size)) return true;
        GiveUp(TransferEnd::Cancelled);  // the consumer declines when told to stop or over its limit
        return false;
    }

    static size_t OnHeader(char* data, size_t size, size_t count, void* self) {
        auto& t = *static_cast<Transfer*>(self);
        const size_t length = size * count;
        t.Touch();
        const std::string_view line(data, length);
        if (line.starts_with("HTTP/")) {
            const size_t space = line.find(' ');
            t.status = space == std::string_view::npos
                           ? 0
                           : std::atoi(std::string(line.substr(space + 1, 3)).c_str());
            t.contentLength.reset();
            t.location.clear();
        } else if (Trim(line).empty()) {
            return t.EndOfHeaders() ? length : 0;
        } else if (const size_t colon = line.find(':'); colon != std::string_view::npos) {
            const std::string_view name = Trim(line.substr(0, colon));
            if (EqualsNoCase(name, "Content-Length"))
                t.contentLength = ParseLength(line.substr(colon + 1));
            else if (EqualsNoCase(name, "Location"))
                t.location = Trim(line.substr(colon + 1));
        }
        return length;
    }

    static size_t OnBody(char* data, size_t size, size_t count, void* self) {
        auto& t = *static_cast<Transfer*>(self);
        const size_t length = size * count;
        t.Touch();
        if (t.redirecting || length == 0) return length;
        if (!t.begun) return CURL_WRITEFUNC_ERROR;
        t.report->bytesReceived += length;
        if (t.pending.size() + length > t.pending.capacity() && !t.FlushPending())
            return CURL_WRITEFUNC_ERROR;
        if (length > t.pending.capacity()) {
            if (t.consumer->Write(data, length)) return length;
            t.GiveUp(TransferEnd::WriteFailed);
            return CURL_WRITEFUNC_ERROR;
        }
        t.pending.insert(t.pending.end(), data, data + length);
        return length;
    }

    static int OnConnected(void* self, char*, char*, int, int) {
        auto& t = *static_cast<Transfer*>(self);
        t.connected = true;
        t.Touch();
        return CURL_PREREQFUNC_OK;
    }

    // Connecting is limited by curl's connect time-out; after that, silence is limited by
    // the receive time-out. A stop request ends the transfer either way.
    static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        auto& t = *static_cast<Transfer*>(self);
        if (!t.FlushPending()) return 1;
        if (t.stop && t.stop->load()) {
            t.GiveUp(TransferEnd::Cancelled);
            return 1;
        }
        if (t.connected && Clock::now() - t.lastActivity > t.receiveTimeout) {
            t.GiveUp(TransferEnd::ReceiveTimeout);
            t.report->timeoutMs = static_cast<uint32_t>(t.receiveTimeout.count());
            return 1;
        }
        return 0;
    }

    bool Configure(const std::string& url) {
        easy = curl_easy_init();
        if (!easy) return false;
        currentUrl = url;
        headers = curl_slist_append(headers, "Cache-Control: no-cache");
        headers = curl_slist_append(headers, "Pragma: no-cache");
        headers = curl_slist_append(headers, "Accept:");  // no Accept header, as before
        if (!headers) return false;

        // curl would read the proxy variables with getenv, which is not safe beside our
        // own environment writers; read them here, under the environment lock, instead.
        const auto proxy = FirstVariable({"http_proxy", "all_proxy", "ALL_PROXY"});
        const auto noProxy = FirstVariable({"no_proxy", "NO_PROXY"});
        report->proxy = proxy.value_or("");
        report->noProxy = proxy ? noProxy.value_or("") : "";

        bool ok = true;
        auto set = [&](CURLoption option, auto value) {
            ok = ok && curl_easy_setopt(easy, option, value) == CURLE_OK;
        };
        set(CURLOPT_URL, url.c_str());
        set(CURLOPT_PROTOCOLS_STR, "http,https");
        set(CURLOPT_HTTPGET, 1L);
        set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        set(CURLOPT_USERAGENT, kAgent);
        set(CURLOPT_HTTPHEADER, headers);
        set(CURLOPT_PROXY, proxy ? proxy->c_str() : "");
        set(CURLOPT_NOPROXY, noProxy ? noProxy->c_str() : "");
        set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
        set(CURLOPT_FOLLOWLOCATION, 0L);
        set(CURLOPT_NOSIGNAL, 1L);
        set(CURLOPT_BUFFERSIZE, kBlockSize);
        set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(ConnectTimeoutMs()));
        set(CURLOPT_HEADERFUNCTION, &Transfer::OnHeader);
        set(CURLOPT_HEADERDATA, this);
        set(CURLOPT_WRITEFUNCTION, &Transfer::OnBody);
        set(CURLOPT_WRITEDATA, this);
        set(CURLOPT_PREREQFUNCTION, &Transfer::OnConnected);
        set(CURLOPT_PREREQDATA, this);
        set(CURLOPT_XFERINFOFUNCTION, &Transfer::OnProgress);
        set(CURLOPT_XFERINFODATA, this);
        set(CURLOPT_NOPROGRESS, 0L);
        set(CURLOPT_ERRORBUFFER, errorText);
        return ok;
    }

    // Runs every hop of the request; true when the final response arrived completely.
    bool Perform() {
        for (;;) {
            redirecting = false;
            connected = false;
            status = 0;
            Touch();
            const CURLcode result = curl_easy_perform(easy);
            // What arrived before a failure is kept in the partial file, too.
            const bool flushed = FlushPending();
            if (!flushed || result != CURLE_OK) return Ended(result);
            if (!redirecting) return Ended(result);
            ++redirects;
            currentUrl = std::move(redirectTarget);
            currentScheme = std::move(redirectScheme);
            if (curl_easy_setopt(easy, CURLOPT_URL, currentUrl.c_str()) != CURLE_OK)
                return Ended(CURLE_URL_MALFORMAT);
        }
    }

    // Records how the transfer ended; true when it completed.
    bool Ended(CURLcode result) {
        report->transfer = Classify(result);
        if (report->transfer == TransferEnd::ConnectTimeout)
            report->timeoutMs = static_cast<uint32_t>(ConnectTimeoutMs());
        report->transferError = errorText[0] != '\0' ? errorText
                                : result != CURLE_OK ? curl_easy_strerror(result)
                                                     : "";
        return report->transfer == TransferEnd::Complete;
    }

    TransferEnd Classify(CURLcode result) const {
        if (givenUp != TransferEnd::NotStarted) return givenUp;
        switch (result) {
            case CURLE_OK:
                return begun ? TransferEnd::Complete : TransferEnd::Failed;
            case CURLE_COULDNT_RESOLVE_HOST:
            case CURLE_COULDNT_RESOLVE_PROXY:
                return TransferEnd::NameNotResolved;
            case CURLE_COULDNT_CONNECT: {
                long error = 0;
                curl_easy_getinfo(easy, CURLINFO_OS_ERRNO, &error);
                return error == ECONNREFUSED ? TransferEnd::Refused : TransferEnd::ConnectFailed;
            }
            case CURLE_OPERATION_TIMEDOUT:
                return TransferEnd::ConnectTimeout;  // the only limit curl itself watches
            case CURLE_PARTIAL_FILE:
            case CURLE_RECV_ERROR:
            case CURLE_GOT_NOTHING:
                return TransferEnd::Cut;
            default:
                return TransferEnd::Failed;
        }
    }
};

HttpDownloader::HttpDownloader(std::wstring url, IDownloadConsumer* consumer)
    : url(url.find(L"://") == std::wstring::npos ? L"http://" + url : std::move(url)),
      consumer(consumer) {}

HttpDownloader::~HttpDownloader() {
    transfer.reset();
}

bool HttpDownloader::Download() {
    if (!consumer) return false;
    UpdateReport unkept;
    UpdateReport& record = report ? *report : unkept;
    record.url = url;
    internal::UrlParts parts;
    if (!internal::CrackUrl(url, &parts)) {
        // A URL without a usable host fails at the connection, once the session is open,
        // so the file is closed as incomplete like after any other failed attempt.
        record.transfer = TransferEnd::BadAddress;
        internal::LogReportLine(kTransferWriter, [&] { return DescribeTransfer(record); });
        consumer->Abort();
        return false;
    }
    InitialiseCurlOnce();

    const std::string requestUrl = internal::RequestUrl(parts);
    record.url = STLHelpers::Utf8ToWide(requestUrl);
    transfer = std::make_unique<Transfer>();
    transfer->consumer = consumer;
    transfer->stop = stopFlag;
    transfer->report = &record;
    const bool configured = transfer->Configure(requestUrl);
    internal::LogReportLine(kRequestWriter, [&] { return DescribeRequest(record); });
    if (!configured) record.transfer = TransferEnd::Failed;
    const bool complete = configured && transfer->Perform();
    internal::LogReportLine(kTransferWriter, [&] { return DescribeTransfer(record); });
    if (!complete) {
        Close();
        return false;
    }
    consumer->Commit();
    transfer.reset();
    return true;
}

bool HttpDownloader::Close() {
    const bool wasOpen = transfer != nullptr;
    transfer.reset();
    if (wasOpen && consumer) consumer->Abort();
    return true;
}

}  // namespace Engine
