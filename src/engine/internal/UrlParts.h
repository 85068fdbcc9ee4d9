// Splitting the download URL the way the updater has always split it: only the host, the
// path and the extra information (query or fragment) are used; the scheme, a user name and
// the port written in the URL are ignored, since the request always goes to port 80.
#pragma once

#include <string>
#include <string_view>

namespace Engine::internal {

struct UrlParts {
    std::wstring scheme;
    std::wstring host;
    std::wstring path;   // from the first "/" after the host up to "?" or "#"
    std::wstring extra;  // from "?" or "#" to the end
};

inline constexpr size_t kMaxHostLength = 256;
inline constexpr size_t kMaxPathLength = 2048;
inline constexpr size_t kMaxExtraLength = 2048;

// False for a URL without "://", with an empty host, or with a part longer than its limit.
bool CrackUrl(std::wstring_view url, UrlParts* parts);

// The URL actually requested: "http://" host ":80" path extra, the path "/" when empty.
// Spaces, control characters and non-ASCII bytes of path and extra are percent-encoded.
std::string RequestUrl(const UrlParts& parts);

}  // namespace Engine::internal
