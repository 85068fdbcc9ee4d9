// The diagnostic log's per-thread state: created on first use in a thread-local slot and
// registered, under a lock of its own, in a process-wide table while the thread lives.
#pragma once

#include <ostream>

namespace Debugging::internal {

struct ThreadLogState {
    int depth = 0;       // blanks before each message
    int threshold = 6;   // the thread's own threshold
    int lastLevel = -1;  // level of the previous line (-1: none yet)
    bool lastContinuation = false;
    bool forceHeader = false;  // one-shot: the next line gets a header
    std::ostream* stream = nullptr;
};

// The calling thread's state.
ThreadLogState& CurrentThreadLogState();

// How many threads have a registered state (for tests and diagnostics).
std::size_t RegisteredThreadLogStates();

}  // namespace Debugging::internal
