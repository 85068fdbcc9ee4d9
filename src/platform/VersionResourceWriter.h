// Writing a version resource (VS_VERSIONINFO) as the system's version API reads it: the
// fixed file information with the file and product version, one string table for US
// English and Unicode ("040904B0") and the translation entry that points at it.
//
// Thread safety: pure functions, any thread.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Platform {

using VersionQuad = std::array<uint16_t, 4>;

// "a.b.c.d": four decimal numbers from 0 to 65535, nothing else. False for any other text.
bool ParseVersionQuad(std::string_view text, VersionQuad& out);
std::string FormatVersionQuad(const VersionQuad& version);

struct VersionResourceFields {
    VersionQuad version{};
    // Written when not empty, as "CompanyName", "ProductName" and "FileDescription".
    std::u16string company, product, description;
};

// The resource's bytes; "FileVersion" and "ProductVersion" are the dotted version. Empty
// when the texts are too long for the format's 16-bit block lengths.
std::vector<uint8_t> WriteVersionResource(const VersionResourceFields& fields);

// The language the resource is stored under (US English), as resource compilers do.
constexpr uint16_t kVersionResourceLanguage = 0x0409;

}  // namespace Platform
