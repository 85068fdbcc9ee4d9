// The stages of one update run. States only move forward; Finished is final.
#pragma once

#include <cstdint>

namespace Engine {

enum UpdateState : uint32_t {
    Preparing = 0,    // the worker exists, its thread has not begun
    Connecting = 1,   // the thread runs: connecting and sending the request
    Downloading = 2,  // the response has arrived; the setup file receives data
    Installing = 3,   // the download is complete; the setup program runs
    Finished = 4,     // ended, successfully or not (see the failed flag), or cancelled
};

// "Preparing", "Connecting", ...; "Unknown" for other values.
const char* UpdateStateName(UpdateState state);

}  // namespace Engine
