// Hive lines that the registry reader skipped, written to the diagnostic log.
#pragma once

namespace Registry::internal {

// Writes each line skipped by the hive parses since the last call to the log at level 3
// ("WRN"), with its file and line number. Cheap when there are none. Any thread.
void LogHiveProblems();

}  // namespace Registry::internal
