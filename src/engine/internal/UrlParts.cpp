#include "engine/internal/UrlParts.h"

#include "foundation/TextConversion.h"

namespace Engine::internal {
namespace {

void AppendEncoded(std::string& out, const std::wstring& text) {
    static const char kHex[] = "0123456789ABCDEF";
    for (unsigned char byte : STLHelpers::WideToUtf8(text)) {
        if (byte <= 0x20 || byte >= 0x7F) {
            out += '%';
            out += kHex[byte >> 4];
            out += kHex[byte & 15];
        } else {
            out += static_cast<char>(byte);
        }
    }
}

}  // namespace

bool CrackUrl(std::wstring_view url, UrlParts* parts) {
    const size_t schemeEnd = url.find(L"://");
    if (schemeEnd == std::wstring_view::npos) return false;
    UrlParts result;
    result.scheme = url.substr(0, schemeEnd);

    std::wstring_view rest = url.substr(schemeEnd + 3);
    const size_t authorityEnd = rest.find_first_of(L"/?#");
    std::wstring_view authority = rest.substr(0, authorityEnd);
    rest =
        authorityEnd == std::wstring_view::npos ? std::wstring_view() : rest.substr(authorityEnd);

    if (const size_t at = authority.rfind(L'@'); at != std::wstring_view::npos)
        authority.remove_prefix(at + 1);
    if (!authority.empty() && authority.front() == L'[') {
        const size_t close = authority.find(L']');
        if (close == std::wstring_view::npos) return false;
        authority = authority.substr(0, close + 1);
    } else if (const size_t colon = authority.find(L':'); colon != std::wstring_view::npos) {
        authority = authority.substr(0, colon);
    }
    result.host = authority;

    const size_t extraStart = rest.find_first_of(L"?#");
    result.path = rest.substr(0, extraStart);
    if (extraStart != std::wstring_view::npos) result.extra = rest.substr(extraStart);

    if (result.host.empty() || result.host.size() > kMaxHostLength ||
        result.path.size() > kMaxPathLength || result.extra.size() > kMaxExtraLength)
        return false;
    *parts = std::move(result);
    return true;
}

std::string RequestUrl(const UrlParts& parts) {
    std::string url = "http://" + STLHelpers::WideToUtf8(parts.host) + ":80";
    if (parts.path.empty() || parts.path.front() != L'/') url += '/';
    AppendEncoded(url, parts.path);
    AppendEncoded(url, parts.extra);
    return url;
}

}  // namespace Engine::internal
