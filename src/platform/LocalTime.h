// Calendar time in the local time zone (TZ, else the system's zone).
//
// Thread safety: any thread; the conversion keeps no shared buffer.
#pragma once

#include <ctime>

namespace Platform {

// The local calendar time of `time`. False (and `local` zeroed) when it cannot be
// represented.
bool ToLocalTime(std::time_t time, std::tm& local);

}  // namespace Platform
