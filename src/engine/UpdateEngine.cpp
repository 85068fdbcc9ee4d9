#include "engine/UpdateEngine.h"

#include <algorithm>
#include <chrono>

namespace Engine {
namespace {

constexpr uint32_t kRemovalStepMs = 10;
constexpr auto kRemovalLimit = std::chrono::milliseconds(5000);

}  // namespace

UpdateEngine::UpdateEngine(ProductSettings settings, std::wstring setupFilePath)
    : settings(std::move(settings)),
      worker(this->settings.downloadURL, this->settings.silent, &broadcaster,
             std::move(setupFilePath)) {}

UpdateEngine::~UpdateEngine() {
    worker.Cancel();
}

bool UpdateEngine::AddListener(IUpdateEvents* listener) {
    std::lock_guard lock(listenerLock);
    if (std::find(listeners.begin(), listeners.end(), listener) != listeners.end()) return false;
    listeners.push_back(listener);
    return true;
}

bool UpdateEngine::RemoveListener(IUpdateEvents* listener) {
    {
        std::lock_guard lock(listenerLock);
        auto it = std::find(listeners.begin(), listeners.end(), listener);
        if (it == listeners.end()) return false;
        listeners.erase(it);
    }
    // An observer that leaves from inside an event is itself a round in flight.
    if (worker.IsOwnThread()) return true;
    {
        std::lock_guard lock(idleLock);
        if (idleEvent.IsSet()) idleEvent.Reset();
    }
    const auto start = std::chrono::steady_clock::now();
    while (notificationsInFlight.Read() != 0 &&
           std::chrono::steady_clock::now() - start < kRemovalLimit) {
        if (idleEvent.Wait(kRemovalStepMs)) {
            // A round ended, but others may have begun since: look again.
            std::lock_guard lock(idleLock);
            idleEvent.Reset();
        }
    }
    return true;
}

bool UpdateEngine::Start() {
    return worker.Start(false, 0);
}

bool UpdateEngine::Cancel() {
    worker.Cancel();
    return true;
}

bool UpdateEngine::IsListening(IUpdateEvents* listener) {
    std::lock_guard lock(listenerLock);
    return std::find(listeners.begin(), listeners.end(), listener) != listeners.end();
}

void UpdateEngine::Deliver(void (IUpdateEvents::*event)()) {
    notificationsInFlight.Increment();
    struct RoundEnd {
        UpdateEngine& engine;
        ~RoundEnd() {
            if (engine.notificationsInFlight.Decrement() == 0) {
                std::lock_guard lock(engine.idleLock);
                if (!engine.idleEvent.IsSet()) engine.idleEvent.Set();
            }
        }
    } roundEnd{*this};

    std::vector<IUpdateEvents*> copy;
    {
        std::lock_guard lock(listenerLock);
        copy = listeners;
    }
    for (IUpdateEvents* listener : copy)
        if (IsListening(listener)) (listener->*event)();
}

}  // namespace Engine
