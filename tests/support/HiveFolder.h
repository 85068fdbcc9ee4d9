// A private registry for one test: a temporary folder of hive files that
// LUMETTA_REGISTRY_DIR names while the object lives.
#pragma once

#include <filesystem>
#include <string>
#include <system_error>

#include "support/ScopedEnvironment.h"
#include "support/TestFiles.h"

namespace TestSupport {

class HiveFolder {
public:
    HiveFolder() : variable_("LUMETTA_REGISTRY_DIR", folder_.Path().string()) {}

    const std::filesystem::path& Path() const { return folder_.Path(); }
    std::filesystem::path operator/(const std::string& name) const { return folder_ / name; }

    // Writes the hive file `fileName` (e.g. "HKEY_CURRENT_USER.reg"). It is written aside and
    // renamed in, as an editor saves, so that every write is a new file to a reader's cache.
    bool WriteHive(const std::string& fileName, const std::string& text) const {
        const std::filesystem::path aside = folder_ / (fileName + ".new");
        if (!WriteFile(aside, text)) return false;
        std::error_code error;
        std::filesystem::rename(aside, folder_ / fileName, error);
        return !error;
    }

private:
    TempFolder folder_{"lumetta-hives"};
    ScopedEnvironment variable_;
};

}  // namespace TestSupport
