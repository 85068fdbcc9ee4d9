// SHA-256 of a setup as the managed flow verifies it against the feed: bytes per second of
// Engine::DigestFile over a 256 MiB file in the page cache (the file is read once before).
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "engine/FileDigest.h"

namespace {

const std::string& Setup() {
    static const std::string path = [] {
        const char* folder = std::getenv("TMPDIR");
        std::string file = std::string(folder && *folder ? folder : "/tmp") + "/lumetta-digest.bin";
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        std::vector<char> block(1 << 20);
        for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 7 % 251);
        for (int i = 0; i < 256; ++i)
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
        return file;
    }();
    return path;
}

void Sha256OfFile(benchmark::State& state) {
    Engine::FileDigest digest;
    std::string reason;
    Engine::DigestFile(Setup(), &digest, &reason);  // into the page cache
    for (auto _ : state) {
        if (!Engine::DigestFile(Setup(), &digest, &reason)) state.SkipWithError(reason.c_str());
        benchmark::DoNotOptimize(digest.sha256.data());
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                            static_cast<int64_t>(digest.length));
}
BENCHMARK(Sha256OfFile)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
