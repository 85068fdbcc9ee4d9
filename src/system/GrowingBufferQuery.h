// The pattern shared by system queries that fill a caller's buffer and report the length
// they need (GetModuleFileNameW, GetLongPathNameW, GetTempPathW, GetEnvironmentVariableW):
// call with a start size, and while the answer does not fit, grow the buffer to what the
// query asks for (at least doubling when it claims a length that would already fit),
// never beyond limit + 1, for at most 10 rounds.
//
// Thread safety: any thread; the query runs on the calling thread.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace System {

// `query(buffer, size, lastError)` writes at most `size` characters and returns the length
// of the text (without terminator) when it fits, else the length it needs; on failure it
// returns 0 and sets `lastError` (which is cleared before each call).
using BufferQuery = std::function<uint32_t(wchar_t* buffer, uint32_t size, uint32_t& lastError)>;

// The complete text, or nullopt when the query failed (`lastError`, if given, tells why),
// needed more than `limit` characters, or did not settle within 10 rounds.
std::optional<std::wstring> QueryWithGrowingBuffer(uint32_t startSize, uint32_t limit,
                                                   const BufferQuery& query,
                                                   uint32_t* lastError = nullptr);

}  // namespace System
