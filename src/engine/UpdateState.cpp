#include "engine/UpdateState.h"

namespace Engine {

const char* UpdateStateName(UpdateState state) {
    switch (state) {
        case Preparing:
            return "Preparing";
        case Connecting:
            return "Connecting";
        case Downloading:
            return "Downloading";
        case Installing:
            return "Installing";
        case Finished:
            return "Finished";
    }
    return "Unknown";
}

}  // namespace Engine
