// Files and folders the tests build their fixtures in: a private temporary folder that goes
// away with everything in it, and whole-file writing and reading.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "platform/Environment.h"

namespace TestSupport {

// Writes `content` as the whole file (binary, replacing what was there). False when the file
// cannot be written.
inline bool WriteFile(const std::filesystem::path& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
    out.close();
    return static_cast<bool>(out);
}

// The whole file; empty when it cannot be read.
inline std::string ReadFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The whole file as bytes; empty when it cannot be read.
inline std::vector<uint8_t> ReadBytes(const std::filesystem::path& path) {
    const std::string text = ReadFile(path);
    return std::vector<uint8_t>(text.begin(), text.end());
}

// `text` as UTF-16LE after a byte-order mark, as the registry editor saves its exports.
inline std::string Utf16LeWithBom(std::u16string_view text) {
    std::string bytes = "\xFF\xFE";
    for (char16_t c : text) bytes += {static_cast<char>(c & 0xFF), static_cast<char>(c >> 8)};
    return bytes;
}

// A fresh folder under $TMPDIR (or /tmp), removed with its content by the destructor.
// Path() is empty when the folder could not be made.
class TempFolder {
public:
    explicit TempFolder(const std::string& prefix = "lumetta-test") {
        const auto tmp = Platform::GetEnvironment("TMPDIR");
        std::string pattern =
            (tmp && !tmp->empty() ? *tmp : std::string("/tmp")) + "/" + prefix + "-XXXXXX";
        if (::mkdtemp(pattern.data()) != nullptr) path_ = pattern;
    }
    ~TempFolder() {
        if (path_.empty()) return;
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::filesystem::path& Path() const { return path_; }
    std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

private:
    std::filesystem::path path_;
};

}  // namespace TestSupport
