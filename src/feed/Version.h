// Product versions as update feeds and version resources write them: up to four dotted
// decimal numbers, missing ones 0 ("2.1" is 2.1.0.0).
//
// Thread safety: plain values and pure functions, from any thread.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace Feed {

struct Version {
    std::array<uint32_t, 4> parts{};

    auto operator<=>(const Version&) const = default;

    // "a.b.c.d", always four numbers.
    std::string ToString() const;
};

// Nothing when `text` is empty, has more than four parts, an empty part, a character other
// than digits and dots (surrounding white space aside) or a part above 4294967295.
std::optional<Version> ParseVersion(std::string_view text);

}  // namespace Feed
