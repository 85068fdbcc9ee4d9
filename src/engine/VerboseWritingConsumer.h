// Engine::VerboseWritingConsumer: writes the downloaded body into the destination file and
// reports every step to its owner (the worker) through IVerboseWritingConsumerCallback.
// The file is created by the constructor and held exclusively until Commit or Abort; a
// partial file stays on disk after Abort.
//
// Thread safety: one thread at a time (the worker thread, or a cancelling thread after the
// worker thread has ended).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/IDownloadConsumer.h"
#include "engine/IVerboseWritingConsumerCallback.h"
#include "system/ExclusiveFile.h"

namespace Engine {

class VerboseWritingConsumer final : public IDownloadConsumer {
public:
    // Creates (or truncates) `path`. `callback` may be null. Throws std::runtime_error
    // "Cannot open destination file" when the file cannot be created, after telling the
    // callback OnFinish(false).
    VerboseWritingConsumer(const std::wstring& path, IVerboseWritingConsumerCallback* callback);
    VerboseWritingConsumer(const VerboseWritingConsumer&) = delete;
    VerboseWritingConsumer& operator=(const VerboseWritingConsumer&) = delete;

    // Announces the expected size, kUnknownSize when unknown. False when the callback
    // declines; the file is then closed as incomplete.
    bool Begin(uint32_t totalBytes) override;

    // Appends one block. False when the write fails (the file stays open), when the
    // callback declines (the file is closed as incomplete), or when not all bytes were
    // written.
    bool Write(const void* data, std::size_t size) override;

    // Closes the file as complete / incomplete. Nothing happens once it is closed.
    void Commit() override;
    void Abort() override;

    bool IsOpen() const { return file.IsOpen(); }
    uint32_t GetBytesWritten() const { return bytesWritten; }

private:
    void Finish(bool success);

    System::ExclusiveFile file;
    uint32_t bytesWritten = 0;  // since the file was opened; counts modulo 2^32
    IVerboseWritingConsumerCallback* callback;
};

}  // namespace Engine
