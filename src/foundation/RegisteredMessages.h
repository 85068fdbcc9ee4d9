// A process-wide table of registered message names. There is no window system behind it:
// the same name always gives the same identifier (in the registered range from 0xC000),
// different names give different ones. Names compare without regard to case.
//
// Thread safety: any thread.
#pragma once

#include <string_view>

namespace Reporting {

unsigned RegisterWindowMessage(std::wstring_view name);

// The identifiers that the reporting library registers for "QzNotificationSinkMTOnEvent"
// from its two static initialisers.
unsigned NotificationSinkMessage(int which);

}  // namespace Reporting
