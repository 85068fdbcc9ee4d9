#include "engine/Timeouts.h"

#include <atomic>

namespace Engine {
namespace {

std::atomic<uint32_t> connectTimeout{kDefaultConnectTimeoutMs};
std::atomic<uint32_t> receiveTimeout{kDefaultReceiveTimeoutMs};
std::atomic<uint32_t> silentSetupTimeout{kDefaultSilentSetupTimeoutMs};

}  // namespace

uint32_t ConnectTimeoutMs() {
    return connectTimeout.load();
}
uint32_t ReceiveTimeoutMs() {
    return receiveTimeout.load();
}
uint32_t SilentSetupTimeoutMs() {
    return silentSetupTimeout.load();
}

namespace Testing {

void SetTimeouts(uint32_t connectMs, uint32_t receiveMs, uint32_t silentSetupMs) {
    if (connectMs) connectTimeout.store(connectMs);
    if (receiveMs) receiveTimeout.store(receiveMs);
    if (silentSetupMs) silentSetupTimeout.store(silentSetupMs);
}

void RestoreDefaultTimeouts() {
    connectTimeout.store(kDefaultConnectTimeoutMs);
    receiveTimeout.store(kDefaultReceiveTimeoutMs);
    silentSetupTimeout.store(kDefaultSilentSetupTimeoutMs);
}

}  // namespace Testing
}  // namespace Engine
