// The argument vector of the running process, the Linux form of its command line: read
// from /proc/self/cmdline, each argument converted from UTF-8.
//
// Thread safety: any thread. Never throws but std::bad_alloc; an unreadable file gives no
// arguments.
#pragma once

#include <string>
#include <vector>

namespace System {

std::vector<std::wstring> GetProcessArguments();

}  // namespace System
