#include "system/GrowingBufferQuery.h"

#include <algorithm>
#include <vector>

namespace System {

std::optional<std::wstring> QueryWithGrowingBuffer(uint32_t startSize, uint32_t limit,
                                                   const BufferQuery& query, uint32_t* lastError) {
    constexpr int kMaxRounds = 10;
    uint32_t error = 0;
    std::vector<wchar_t> buffer(std::max<uint32_t>(startSize, 1));
    for (int round = 0; round < kMaxRounds; ++round) {
        error = 0;
        const auto size = static_cast<uint32_t>(buffer.size());
        const uint32_t length = query(buffer.data(), size, error);
        if (length == 0 && error != 0) break;
        if (uint64_t{length} + 2 <= size) {
            if (lastError) *lastError = 0;
            return std::wstring(buffer.data(), length);
        }
        if (length > limit) break;
        uint64_t grown = length;
        // A query that truncates returns the buffer size itself: double instead.
        if (length <= size) grown = std::max<uint64_t>(grown, uint64_t{size} * 2);
        grown = std::min<uint64_t>(grown, uint64_t{limit} + 1);
        if (grown <= size) break;
        buffer.assign(static_cast<size_t>(grown), L'\0');
    }
    if (lastError) *lastError = error;
    return std::nullopt;
}

}  // namespace System
