// Engine::IVerboseWritingConsumerCallback: how the destination-file writer reports to its
// owner. Called on the thread that drives the writer.
#pragma once

#include <cstdint>

namespace Engine {

struct IVerboseWritingConsumerCallback {
    // Writing begins; totalBytes is the expected size, 0 when unknown. False aborts.
    virtual bool OnStart(uint32_t totalBytes) = 0;
    // A block has been written; bytesWritten is the running total. False aborts.
    virtual bool OnWritten(uint32_t bytesWritten) = 0;
    // Writing has ended, completely (true) or not.
    virtual void OnFinish(bool success) = 0;

protected:
    ~IVerboseWritingConsumerCallback() = default;
};

}  // namespace Engine
