#include "system/internal/HiveProblemLog.h"

#include "foundation/Log.h"
#include "foundation/TextConversion.h"
#include "platform/RegistryHive.h"

namespace Registry::internal {

void LogHiveProblems() {
    // Taken whatever the log's level, so that they do not pile up while it is off.
    const std::vector<Platform::RegHiveProblem> problems = Platform::TakeRegistryHiveProblems();
    for (const Platform::RegHiveProblem& problem : problems) {
        Debugging::LogMessageIf(Debugging::GetLog(), L"Registry:internal:LogHiveProblems@1",
                                Debugging::LevelWarning, [&] {
                                    return STLHelpers::Utf8ToWide(problem.file) + L" line " +
                                           std::to_wstring(problem.line) + L" skipped: " +
                                           STLHelpers::Utf8ToWide(problem.reason);
                                });
    }
}

}  // namespace Registry::internal
