// What the fuzz targets share: a private scratch folder for inputs that the product reads
// from files, and the conversions between the fuzzer's bytes and the product's texts.
#pragma once
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "foundation/TextConversion.h"

namespace Fuzz {

// One folder per fuzzing process, made on first use below the temporary folder and left
// for the system to clean (libFuzzer ends the process with _exit, so no destructor runs).
inline const std::filesystem::path& ScratchFolder() {
    static const std::filesystem::path folder = [] {
        const char* tmp = std::getenv("TMPDIR");
        std::filesystem::path base = tmp && *tmp ? tmp : "/tmp";
        auto path = base / ("lumetta-fuzz-" + std::to_string(::getpid()));
        std::filesystem::create_directories(path);
        return path;
    }();
    return folder;
}

// Writes `bytes` to `path`, replacing what was there and making the folders first.
inline void WriteFile(const std::filesystem::path& path, std::string_view bytes) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary | std::ios::trunc)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

inline std::string_view Bytes(const uint8_t* data, size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

// The input read as UTF-8 text, which is how the product receives every text it parses.
inline std::wstring Text(const uint8_t* data, size_t size) {
    return STLHelpers::Utf8ToWide(Bytes(data, size));
}

inline std::wstring Wide(const std::filesystem::path& path) {
    return STLHelpers::Utf8ToWide(path.string());
}

// Stops the run with a report when a property that must hold for every input fails, so
// libFuzzer keeps the input as a reproducer.
[[noreturn]] inline void Fail(const char* what) {
    std::fprintf(stderr, "property failed: %s\n", what);
    std::abort();
}

// The two exceptions that a request to the XML storage lets out for a bad file.
inline bool IsDocumentError(const std::exception& e) {
    const std::string_view what = e.what();
    return what == "Failed to open or parse the designated XML file" ||
           what == "Invalid resource XML format";
}

}  // namespace Fuzz
