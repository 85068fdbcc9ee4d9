#include "system/ProcessArguments.h"

#include <fstream>
#include <iterator>

#include "foundation/TextConversion.h"

namespace System {

std::vector<std::wstring> GetProcessArguments() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    const std::string content((std::istreambuf_iterator<char>(file)),
                              std::istreambuf_iterator<char>());
    std::vector<std::wstring> arguments;
    // Each argument ends with a NUL.
    size_t start = 0;
    while (start < content.size()) {
        size_t end = content.find('\0', start);
        if (end == std::string::npos) end = content.size();
        arguments.push_back(STLHelpers::Utf8ToWide(content.substr(start, end - start)));
        start = end + 1;
    }
    return arguments;
}

}  // namespace System
