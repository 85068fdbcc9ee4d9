#include "feed/Version.h"

#include "feed/internal/Text.h"

namespace Feed {

std::string Version::ToString() const {
    return std::to_string(parts[0]) + "." + std::to_string(parts[1]) + "." +
           std::to_string(parts[2]) + "." + std::to_string(parts[3]);
}

std::optional<Version> ParseVersion(std::string_view text) {
    text = internal::Trim(text);
    if (text.empty()) return std::nullopt;
    Version version;
    std::size_t index = 0;
    while (true) {
        if (index == version.parts.size()) return std::nullopt;
        const std::size_t dot = text.find('.');
        const std::string_view part = text.substr(0, dot);
        uint64_t value = 0;
        if (part.empty() || part.size() > 10) return std::nullopt;
        for (const char digit : part) {
            if (digit < '0' || digit > '9') return std::nullopt;
            value = value * 10 + static_cast<uint64_t>(digit - '0');
        }
        if (value > UINT32_MAX) return std::nullopt;
        version.parts[index++] = static_cast<uint32_t>(value);
        if (dot == std::string_view::npos) return version;
        text.remove_prefix(dot + 1);
    }
}

}  // namespace Feed
