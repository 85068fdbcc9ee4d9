// Writing the lines of an UpdateReport to the diagnostic log.
#pragma once

#include "engine/UpdateReport.h"
#include "foundation/Log.h"

namespace Engine::internal {

// Logs the line that `describe()` words under the writer name `writer`. The line is only
// worded when the log would take a failure (level 4, the highest a report line has), so a
// run with the log off costs one look at the threshold per line.
template <class Describe>
void LogReportLine(const wchar_t* writer, Describe&& describe) {
    Debugging::ILog* log = Debugging::GetLog();
    if (!Debugging::LogWants(log, Debugging::LevelError)) return;
    const ReportLine line = describe();
    Debugging::LogMessage(log, line.text, STLHelpers::litestring(writer), line.level);
}

}  // namespace Engine::internal
