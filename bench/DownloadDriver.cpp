// One download through the engine's own downloader and file writer, nothing else: the
// engine's half of bench/download.sh, which measures its throughput, CPU time and peak
// memory against curl's.
//
//   bench_download_driver URL FILE
//
// Prints "bytes N seconds S" and exits 0 when the whole body arrived; exits 1 otherwise.
#include <chrono>
#include <cstdio>
#include <exception>
#include <string>

#include "engine/HttpDownloader.h"
#include "engine/VerboseWritingConsumer.h"
#include "foundation/TextConversion.h"

namespace {

// Does what the worker does with each event, minus the observers: keeps the counts.
class Progress : public Engine::IVerboseWritingConsumerCallback {
public:
    bool OnStart(uint32_t totalBytes) override {
        total = totalBytes;
        return true;
    }
    bool OnWritten(uint32_t bytesWritten) override {
        ++blocks;
        written = bytesWritten;
        return true;
    }
    void OnFinish(bool success) override { finished = success; }

    uint32_t total = 0;
    uint32_t written = 0;
    uint64_t blocks = 0;
    bool finished = false;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: %s URL FILE\n", argv[0]);
        return 2;
    }
    try {
        Progress progress;
        Engine::VerboseWritingConsumer consumer(STLHelpers::Utf8ToWide(argv[2]), &progress);
        Engine::HttpDownloader downloader(STLHelpers::Utf8ToWide(argv[1]), &consumer);
        const auto start = std::chrono::steady_clock::now();
        const bool ok = downloader.Download();
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        // The counts are 32-bit, as the engine keeps them; a 4 GiB body would wrap.
        std::printf("bytes %u seconds %.3f blocks %llu\n", progress.written, elapsed.count(),
                    static_cast<unsigned long long>(progress.blocks));
        if (!ok || !progress.finished) {
            std::fprintf(stderr, "%s: the download failed\n", argv[0]);
            return 1;
        }
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
        return 1;
    }
}
