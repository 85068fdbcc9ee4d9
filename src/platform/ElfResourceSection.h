// Giving an existing ELF executable or shared library a new ".rsrc" section (the resource
// image our reader finds there) without changing how it runs: objcopy (binutils) writes a
// new copy beside the file with the section removed and added again, and that copy is
// renamed over the file only once it is complete and its resources read back. Whatever
// fails, the file stays exactly as it was.
//
// Thread safety: any thread, but not two calls on the same file at once.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace Platform {

// Replaces (or adds) the section. Returns "" on success, else a sentence for the user that
// says why nothing was changed: `path` is missing, not a regular file, not an ELF
// executable or shared library, read-only (no write permission, or no write bit at all,
// which even root respects here), or objcopy is missing or failed.
std::string ReplaceElfResourceSection(const std::string& path, std::span<const uint8_t> image);

}  // namespace Platform
