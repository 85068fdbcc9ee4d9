// Engine::IDownloadConsumer: where HttpDownloader puts a response body. The setup program
// goes to a file (VerboseWritingConsumer); its signature is kept in memory.
//
// Thread safety: called on the thread that runs the download (or, for Abort, on a cancelling
// thread after that one has ended).
#pragma once

#include <cstddef>
#include <cstdint>

namespace Engine {

struct IDownloadConsumer {
    static constexpr uint32_t kUnknownSize = 0xFFFFFFFFu;

    // The final response has arrived; totalBytes is its length, kUnknownSize when unknown.
    // False ends the download (the consumer has then closed itself as incomplete).
    virtual bool Begin(uint32_t totalBytes) = 0;
    // One block of the body. False ends the download.
    virtual bool Write(const void* data, std::size_t size) = 0;
    // The body is complete / the download ended without it. Nothing happens once closed.
    virtual void Commit() = 0;
    virtual void Abort() = 0;

protected:
    ~IDownloadConsumer() = default;
};

}  // namespace Engine
