// The SHA-256 of a whole file, as update feeds bind a setup to its release (lumetta:sha256).
//
// Thread safety: any thread. Failure: false with the reason in words; nothing is thrown
// (std::bad_alloc aside).
#pragma once

#include <cstdint>
#include <string>

namespace Engine {

struct FileDigest {
    std::string sha256;  // 64 lower-case hex digits
    uint64_t length = 0;
};

// Reads `path` in large blocks from start to end.
bool DigestFile(const std::string& path, FileDigest* digest, std::string* reason);

}  // namespace Engine
