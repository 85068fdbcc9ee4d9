// The time limits of one update: connecting (60 s), the wait for data while sending and
// receiving (30 s each), and a silent setup run (300000 ms). Tests shorten them through
// Engine::Testing; the updater itself never changes them.
//
// Thread safety: any thread; a change applies to waits that begin afterwards.
#pragma once

#include <cstdint>

namespace Engine {

inline constexpr uint32_t kDefaultConnectTimeoutMs = 60000;
inline constexpr uint32_t kDefaultReceiveTimeoutMs = 30000;
inline constexpr uint32_t kDefaultSilentSetupTimeoutMs = 300000;

uint32_t ConnectTimeoutMs();
// How long a transfer may go without sending or receiving a byte.
uint32_t ReceiveTimeoutMs();
uint32_t SilentSetupTimeoutMs();

namespace Testing {
// 0 keeps the current value of that limit.
void SetTimeouts(uint32_t connectMs, uint32_t receiveMs, uint32_t silentSetupMs);
void RestoreDefaultTimeouts();
}  // namespace Testing

}  // namespace Engine
