// Facts about the running process that code outside the platform layer needs: its id, and
// whether an address of its own memory can be read.
//
// Thread safety: any thread; nothing is kept.
#pragma once

#include <cstddef>
#include <cstdint>

namespace Platform {

// The id of the running process (the Windows GetCurrentProcessId).
uint32_t CurrentProcessId();

// Copies `size` bytes at `address` of this process into `buffer`. False, without faulting,
// when any of those bytes is not readable (unmapped, guard page, null); the buffer is then
// left in an unspecified state.
bool ReadOwnMemory(const void* address, void* buffer, std::size_t size);

}  // namespace Platform
