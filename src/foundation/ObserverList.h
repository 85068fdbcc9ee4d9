// Synchronization::ObserverList: the observers of one event source, notified in
// registration order.
//
// A round of notifications goes to a copy of the list, and each observer is checked for
// membership just before its call, so an observer may be removed while rounds are under
// way. Remove waits (at most 5 s) until the rounds in flight have ended, so that no call
// reaches the observer after Remove returned; called from inside a round of this list on
// the same thread, it returns at once instead (the caller is itself that round).
//
// Thread safety: every operation from any thread. No lock is held while an observer runs.
// Observers are not owned.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <vector>

#include "foundation/AtomicNumber.h"

namespace Synchronization {

template <class Listener>
class ObserverList {
public:
    ObserverList() = default;
    ObserverList(const ObserverList&) = delete;
    ObserverList& operator=(const ObserverList&) = delete;

    // False when the observer is registered already.
    bool Add(Listener* listener) {
        std::lock_guard lock(listenerLock);
        if (std::find(listeners.begin(), listeners.end(), listener) != listeners.end())
            return false;
        listeners.push_back(listener);
        return true;
    }

    // False (at once) when the observer was not registered.
    bool Remove(Listener* listener) {
        {
            std::lock_guard lock(listenerLock);
            auto it = std::find(listeners.begin(), listeners.end(), listener);
            if (it == listeners.end()) return false;
            listeners.erase(it);
        }
        if (std::find(deliveringLists.begin(), deliveringLists.end(), this) !=
            deliveringLists.end())
            return true;
        std::unique_lock lock(idleLock);
        idleEvent = false;
        const auto deadline = std::chrono::steady_clock::now() + kRemovalLimit;
        while (notificationsInFlight.Read() != 0 && std::chrono::steady_clock::now() < deadline) {
            // A round ended, but others may have begun since: look again after each.
            if (idleChanged.wait_for(lock, kRemovalStep, [this] { return idleEvent; }))
                idleEvent = false;
        }
        return true;
    }

    bool Contains(Listener* listener) {
        std::lock_guard lock(listenerLock);
        return std::find(listeners.begin(), listeners.end(), listener) != listeners.end();
    }

    // One round: call(listener) for each observer still registered when its turn comes.
    // An exception from an observer ends the round and leaves this function.
    template <class Call>
    void Deliver(Call&& call) {
        notificationsInFlight.Increment();
        deliveringLists.push_back(this);
        struct RoundEnd {
            ObserverList& list;
            ~RoundEnd() {
                deliveringLists.pop_back();
                if (list.notificationsInFlight.Decrement() == 0) {
                    std::lock_guard lock(list.idleLock);
                    list.idleEvent = true;
                    list.idleChanged.notify_all();
                }
            }
        } roundEnd{*this};

        std::vector<Listener*> copy;
        {
            std::lock_guard lock(listenerLock);
            copy = listeners;
        }
        for (Listener* listener : copy)
            if (Contains(listener)) call(*listener);
    }

private:
    static constexpr auto kRemovalStep = std::chrono::milliseconds(10);
    static constexpr auto kRemovalLimit = std::chrono::milliseconds(5000);
    // The lists whose rounds run on this thread, innermost last.
    static inline thread_local std::vector<const ObserverList*> deliveringLists;

    std::mutex listenerLock;
    AtomicNumberT<int32_t> notificationsInFlight;
    std::mutex idleLock;
    std::condition_variable idleChanged;
    bool idleEvent = false;            // set when the last round in flight ends
    std::vector<Listener*> listeners;  // in registration order
};

}  // namespace Synchronization
