// Fetching the small documents of managed updates (the update feed, its signature, release
// notes) into memory, under stricter rules than the setup download of the plain flow:
//
// - only http:// and https://, any port, also after a redirect (never file: or any other
//   scheme); at most 5 redirects, and never from https back to http;
// - the proxy named by https_proxy (for https) or http_proxy, else all_proxy, except for
//   hosts in no_proxy; a server certificate must chain to the system's trust store;
// - a status other than 2xx fails and names the status; a body larger than the cap fails
//   as soon as the cap is passed;
// - the agent text is "Lumetta-Updater/<version> (Linux)"; the connect and receive limits
//   are those of Engine::Timeouts.
//
// Thread safety: any thread; each call is independent. Failure: ok false with a reason in
// words; nothing is thrown (std::bad_alloc aside).
#pragma once

#include <atomic>
#include <cstddef>
#include <string>

namespace Engine {

struct FetchedDocument {
    bool ok = false;
    long status = 0;        // of the last response; 0 when none came
    std::string body;       // complete only when ok
    std::string finalUrl;   // after redirects
    bool allHttps = false;  // every request of the chain went over https
    std::string reason;     // why it failed
};

// The agent text, with this build's version.
std::string ManagedUserAgent();

// `stop`, when set, ends the transfer soon after it is set, as a failure.
FetchedDocument FetchDocument(const std::string& url, std::size_t maxBytes,
                              const std::atomic<bool>* stop = nullptr);

}  // namespace Engine
