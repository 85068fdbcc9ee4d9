// Synchronization::AtomicNumberT: a counter whose operations are atomic. The policy names
// how; AtomicAutoPolicy picks the natural atomic of the type. The type's name, as the
// run-time type information gives it, is part of the names of process-wide values, so
// keep the template's name and arguments stable.
//
// Thread safety: every operation from any thread.
#pragma once

#include <atomic>

namespace Synchronization {

template <class T>
struct AtomicAutoPolicy {
    using Storage = std::atomic<T>;
    static T Increment(Storage& s) { return s.fetch_add(1, std::memory_order_acq_rel) + 1; }
    static T Decrement(Storage& s) { return s.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    static T Add(Storage& s, T delta) {
        return s.fetch_add(delta, std::memory_order_acq_rel) + delta;
    }
    static T Read(const Storage& s) { return s.load(std::memory_order_acquire); }
    static T Exchange(Storage& s, T value) { return s.exchange(value, std::memory_order_acq_rel); }
};

template <class T, class Policy = AtomicAutoPolicy<T>>
class AtomicNumberT {
public:
    constexpr AtomicNumberT() : m_value(T{}) {}
    constexpr explicit AtomicNumberT(T value) : m_value(value) {}
    AtomicNumberT(const AtomicNumberT&) = delete;
    AtomicNumberT& operator=(const AtomicNumberT&) = delete;

    T Increment() { return Policy::Increment(m_value); }    // the new value
    T Decrement() { return Policy::Decrement(m_value); }    // the new value
    T Add(T delta) { return Policy::Add(m_value, delta); }  // the new value
    T Read() const { return Policy::Read(m_value); }
    T Exchange(T value) { return Policy::Exchange(m_value, value); }  // the old value

private:
    typename Policy::Storage m_value;
};

}  // namespace Synchronization
