#include "engine/DocumentFetch.h"

#include <curl/curl.h>

#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>

#include "engine/Timeouts.h"
#include "platform/Environment.h"

namespace Engine {
namespace {

constexpr int kMaxRedirects = 5;

struct EasyFree {
    void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
struct UrlFree {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

std::optional<std::string> FirstVariable(std::initializer_list<const char*> names) {
    for (const char* name : names)
        if (auto value = Platform::GetEnvironment(name); value && !value->empty()) return value;
    return std::nullopt;
}

// The scheme of `url` in lower case; "" when curl cannot parse it.
std::string SchemeOf(const std::string& url) {
    std::unique_ptr<CURLU, UrlFree> handle(curl_url());
    char* scheme = nullptr;
    if (!handle || curl_url_set(handle.get(), CURLUPART_URL, url.c_str(), 0) != CURLUE_OK ||
        curl_url_get(handle.get(), CURLUPART_SCHEME, &scheme, 0) != CURLUE_OK)
        return {};
    std::string result(scheme);
    curl_free(scheme);
    return result;
}

struct Sink {
    std::string* body;
    std::size_t maxBytes;
    const std::atomic<bool>* stop;
    bool tooLarge = false;

    static size_t OnBody(char* data, size_t size, size_t count, void* self) {
        auto* sink = static_cast<Sink*>(self);
        const size_t bytes = size * count;
        if (sink->body->size() + bytes > sink->maxBytes) {
            sink->tooLarge = true;
            return 0;  // ends the transfer
        }
        sink->body->append(data, bytes);
        return bytes;
    }
    static int OnProgress(void* self, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
        const auto* sink = static_cast<const Sink*>(self);
        return sink->stop != nullptr && sink->stop->load() ? 1 : 0;
    }
};

// One request without following redirects; false with `result->reason` when it failed.
bool Request(FetchedDocument* result, const std::string& scheme, std::size_t maxBytes,
             const std::atomic<bool>* stop, std::string* location) {
    std::unique_ptr<CURL, EasyFree> easy(curl_easy_init());
    if (!easy) {
        result->reason = "the HTTP library could not start";
        return false;
    }
    // curl would read the proxy variables with getenv, which is not safe beside our own
    // changes to the environment; they are read here under its lock instead.
    const auto proxy = scheme == "https"
                           ? FirstVariable({"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
                           : FirstVariable({"http_proxy", "all_proxy", "ALL_PROXY"});
    const auto noProxy = FirstVariable({"no_proxy", "NO_PROXY"});
    const std::string agent = ManagedUserAgent();
    result->body.clear();
    Sink sink{&result->body, maxBytes, stop};
    char errorText[CURL_ERROR_SIZE] = "";
    CURL* h = easy.get();
    curl_easy_setopt(h, CURLOPT_URL, result->finalUrl.c_str());
    curl_easy_setopt(h, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(h, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(h, CURLOPT_USERAGENT, agent.c_str());
    curl_easy_setopt(h, CURLOPT_PROXY, proxy ? proxy->c_str() : "");
    curl_easy_setopt(h, CURLOPT_NOPROXY, noProxy ? noProxy->c_str() : "");
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(h, CURLOPT_SSL_VERIFYHOST, 2L);
    curl_easy_setopt(h, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(h, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(ConnectTimeoutMs()));
    curl_easy_setopt(h, CURLOPT_LOW_SPEED_LIMIT, 1L);
    curl_easy_setopt(h, CURLOPT_LOW_SPEED_TIME,
                     static_cast<long>((ReceiveTimeoutMs() + 999) / 1000));
    curl_easy_setopt(h, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maxBytes));
    curl_easy_setopt(h, CURLOPT_WRITEFUNCTION, &Sink::OnBody);
    curl_easy_setopt(h, CURLOPT_WRITEDATA, &sink);
    curl_easy_setopt(h, CURLOPT_XFERINFOFUNCTION, &Sink::OnProgress);
    curl_easy_setopt(h, CURLOPT_XFERINFODATA, &sink);
    curl_easy_setopt(h, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(h, CURLOPT_ERRORBUFFER, errorText);
    const CURLcode code = curl_easy_perform(h);
    curl_easy_getinfo(h, CURLINFO_RESPONSE_CODE, &result->status);
    if (sink.tooLarge || code == CURLE_FILESIZE_EXCEEDED) {
        result->reason = result->finalUrl + " is larger than " + std::to_string(maxBytes) +
                         " bytes, more than such a document may be";
        return false;
    }
    if (code != CURLE_OK) {
        result->reason = "fetching " + result->finalUrl +
                         " failed: " + (errorText[0] ? errorText : curl_easy_strerror(code));
        return false;
    }
    char* target = nullptr;
    if (result->status >= 300 && result->status < 400 &&
        curl_easy_getinfo(h, CURLINFO_REDIRECT_URL, &target) == CURLE_OK && target != nullptr)
        *location = target;
    return true;
}

}  // namespace

std::string ManagedUserAgent() {
    return "Lumetta-Updater/" LUMETTA_VERSION_TEXT " (Linux)";
}

FetchedDocument FetchDocument(const std::string& url, std::size_t maxBytes,
                              const std::atomic<bool>* stop) {
    static std::once_flag once;
    std::call_once(once, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });
    FetchedDocument result;
    result.finalUrl = url;
    result.allHttps = true;
    for (int hop = 0;; ++hop) {
        const std::string scheme = SchemeOf(result.finalUrl);
        if (scheme != "http" && scheme != "https") {
            result.reason = "the address " + result.finalUrl +
                            " is not http:// or https://; nothing else is fetched";
            return result;
        }
        if (scheme == "http" && hop > 0 && result.allHttps) {
            result.reason = "a redirect from https to http (" + result.finalUrl +
                            ") was refused: the connection would lose its protection";
            return result;
        }
        result.allHttps = result.allHttps && scheme == "https";
        std::string location;
        if (!Request(&result, scheme, maxBytes, stop, &location)) return result;
        if (!location.empty()) {
            if (hop == kMaxRedirects) {
                result.reason = "more than 5 redirects from " + url;
                return result;
            }
            result.finalUrl = location;
            continue;
        }
        if (result.status < 200 || result.status >= 300) {
            result.reason =
                "the server answered " + std::to_string(result.status) + " for " + result.finalUrl;
            return result;
        }
        result.ok = true;
        return result;
    }
}

}  // namespace Engine
