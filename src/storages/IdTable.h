// ResourceLib::IdTable: a table of entries indexed by a non-negative 32-bit id that
// behaves as if it were a vector grown to the largest id asked for (its Size), while
// keeping memory bounded: small ids live in a vector, larger ones only as the entries
// that were actually stored. An entry below Size that was never stored reads as a
// default-constructed one.
//
// Errors: none; ids must be non-negative (callers refuse negative ones first).
// Thread safety: none of its own; the owner serialises access.
#pragma once

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

namespace ResourceLib {

template <class Entry>
class IdTable {
public:
    // Ids below this are kept in the vector; the resource ids of this system are small.
    static constexpr int32_t kDenseIds = 1024;

    // One more than the largest id grown to; 0 when empty.
    int64_t Size() const { return size; }

    // The stored entry for `id`, or null when there is none (also beyond Size).
    Entry* Find(int32_t id) {
        if (id < 0 || id >= size) return nullptr;
        if (id < kDenseIds) return &dense[static_cast<std::size_t>(id)];
        const auto found = sparse.find(id);
        return found != sparse.end() ? &found->second : nullptr;
    }
    const Entry* Find(int32_t id) const { return const_cast<IdTable*>(this)->Find(id); }

    // Makes Size at least `id + 1` without storing an entry for a large id.
    void Grow(int32_t id) {
        if (id < size) return;
        size = int64_t{id} + 1;
        dense.resize(static_cast<std::size_t>(std::min<int64_t>(size, kDenseIds)));
    }

    // The entry for `id`, created (default-constructed) when needed; grows Size.
    Entry& Obtain(int32_t id) {
        Grow(id);
        if (id < kDenseIds) return dense[static_cast<std::size_t>(id)];
        return sparse[id];
    }

    void Clear() {
        dense.clear();
        sparse.clear();
        size = 0;
    }

private:
    std::vector<Entry> dense;
    std::map<int32_t, Entry> sparse;
    int64_t size = 0;
};

}  // namespace ResourceLib
