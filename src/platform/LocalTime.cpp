#include "platform/LocalTime.h"

#include <time.h>

namespace Platform {

bool ToLocalTime(std::time_t time, std::tm& local) {
    local = std::tm{};
    return ::localtime_r(&time, &local) != nullptr;
}

}  // namespace Platform
