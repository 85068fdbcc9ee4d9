// Environment variables changed for one test and put back afterwards, set or unset as they
// were. All access goes through the process-wide environment lock.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Environment.h"

namespace TestSupport {

class ScopedEnvironment {
public:
    // Remembers the variables; their values stay as they are until the test changes them.
    ScopedEnvironment(std::initializer_list<const char*> names) {
        for (const char* name : names) saved_.emplace_back(name, Platform::GetEnvironment(name));
    }
    // Remembers one variable and sets it to `value`.
    ScopedEnvironment(const char* name, const std::string& value) : ScopedEnvironment({name}) {
        Platform::SetEnvironment(name, value);
    }
    ~ScopedEnvironment() {
        for (const auto& [name, value] : saved_) {
            if (value)
                Platform::SetEnvironment(name, *value);
            else
                Platform::UnsetEnvironment(name);
        }
    }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

    // Unsets every remembered variable.
    void UnsetAll() const {
        for (const auto& entry : saved_) Platform::UnsetEnvironment(entry.first);
    }

private:
    std::vector<std::pair<std::string, std::optional<std::string>>> saved_;
};

}  // namespace TestSupport
