#include "engine/VerboseWritingConsumer.h"

#include <stdexcept>

#include "foundation/ErrorCodeText.h"
#include "foundation/Log.h"

namespace Engine {

VerboseWritingConsumer::VerboseWritingConsumer(const std::wstring& path,
                                               IVerboseWritingConsumerCallback* callback)
    : callback(callback) {
    if (const ErrorCode created = file.Create(path); created.Failed()) {
        Debugging::LogMessageIf(Debugging::GetLog(),
                                L"Engine:VerboseWritingConsumer:VerboseWritingConsumer@1",
                                Debugging::LevelError, [&] {
                                    return L"the setup file " + path + L" cannot be created: " +
                                           ErrorHandling::ErrorCodeText(created);
                                });
        if (callback) callback->OnFinish(false);
        this->callback = nullptr;
        throw std::runtime_error("Cannot open destination file");
    }
}

bool VerboseWritingConsumer::Begin(uint32_t totalBytes) {
    if (!callback) return true;
    if (!callback->OnStart(totalBytes == kUnknownSize ? 0 : totalBytes)) {
        Abort();
        return false;
    }
    return true;
}

bool VerboseWritingConsumer::Write(const void* data, std::size_t size) {
    std::size_t written = 0;
    if (file.Write(data, size, &written).Failed()) return false;
    bytesWritten += static_cast<uint32_t>(written);
    if (callback && !callback->OnWritten(bytesWritten)) {
        Abort();
        return false;
    }
    return written == size;
}

void VerboseWritingConsumer::Commit() {
    Finish(true);
}

void VerboseWritingConsumer::Abort() {
    Finish(false);
}

void VerboseWritingConsumer::Finish(bool success) {
    if (!file.IsOpen()) return;
    if (callback) callback->OnFinish(success);
    file.Close();
    bytesWritten = 0;
}

}  // namespace Engine
