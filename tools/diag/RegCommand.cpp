// lumetta-diag reg query KEY [--value NAME]: the values of a registry key as the updater
// reads them from the hive files, one per line: name, type, data (a DWORD also in decimal),
// followed by the key's subkeys.
//
// lumetta-diag reg check: every problem of every hive file the updater would read, one per
// line ("FILE:LINE: what is wrong"; a file that cannot be read at all has no line), then a
// count. Exit status 1 when there is a problem.
#include <CLI/CLI.hpp>

#include <cinttypes>
#include <cstdio>
#include <string>

#include "DiagCommands.h"
#include "foundation/TextConversion.h"
#include "platform/RegFileParser.h"
#include "platform/RegistryHive.h"
#include "platform/RegistryKeys.h"
#include "system/RegistryKeyPath.h"

namespace {

std::string TypeName(uint32_t type) {
    switch (type) {
        case 0:
            return "REG_NONE";
        case 1:
            return "REG_SZ";
        case 2:
            return "REG_EXPAND_SZ";
        case 3:
            return "REG_BINARY";
        case 4:
            return "REG_DWORD";
        case 5:
            return "REG_DWORD_BIG_ENDIAN";
        case 6:
            return "REG_LINK";
        case 7:
            return "REG_MULTI_SZ";
        case 8:
            return "REG_RESOURCE_LIST";
        case 9:
            return "REG_FULL_RESOURCE_DESCRIPTOR";
        case 10:
            return "REG_RESOURCE_REQUIREMENTS_LIST";
        case 11:
            return "REG_QWORD";
        default: {
            char text[32];
            std::snprintf(text, sizeof(text), "REG_0x%" PRIX32, type);
            return text;
        }
    }
}

std::string HexBytes(const std::vector<uint8_t>& data) {
    std::string out;
    char byte[3];
    for (uint8_t b : data) {
        std::snprintf(byte, sizeof(byte), "%02X", b);
        out += byte;
    }
    return out;
}

// UTF-16LE code units to UTF-8, keeping embedded zeros as "\0" so that REG_MULTI_SZ lists
// stay readable.
std::string Utf16Text(const std::vector<uint8_t>& data, size_t units) {
    std::wstring text;
    for (size_t i = 0; i < units; ++i) {
        uint32_t unit = data[2 * i] | (uint32_t{data[2 * i + 1]} << 8);
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units) {
            const uint32_t low = data[2 * i + 2] | (uint32_t{data[2 * i + 3]} << 8);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        if (unit == 0)
            text += L"\\0";
        else
            text.push_back(static_cast<wchar_t>(unit));
    }
    return STLHelpers::WideToUtf8(text);
}

std::string DataText(const Platform::RegValue& value) {
    const auto& data = value.data;
    switch (value.type) {
        case Platform::kRegSz:
        case Platform::kRegExpandSz: {
            const bool terminated =
                data.size() % 2 == 0 &&
                (data.empty() || (data[data.size() - 2] == 0 && data.back() == 0));
            if (!terminated) return HexBytes(data) + "  (not read: no terminating zero)";
            return Utf16Text(data, data.empty() ? 0 : data.size() / 2 - 1);
        }
        case Platform::kRegMultiSz: {
            if (data.size() % 2 != 0) return HexBytes(data);
            size_t units = data.size() / 2;
            // The list ends with two zeros; show the entries between them.
            while (units > 0 && data[2 * units - 2] == 0 && data[2 * units - 1] == 0) --units;
            return Utf16Text(data, units);
        }
        case Platform::kRegDword:
            if (data.size() == 4) {
                const uint32_t number = data[0] | (uint32_t{data[1]} << 8) |
                                        (uint32_t{data[2]} << 16) | (uint32_t{data[3]} << 24);
                char text[40];
                std::snprintf(text, sizeof(text), "0x%08" PRIx32 " (%" PRIu32 ")", number, number);
                return text;
            }
            return HexBytes(data) + "  (not read: not 4 bytes)";
        case Platform::kRegQword:
            if (data.size() == 8) {
                uint64_t number = 0;
                for (int i = 7; i >= 0; --i) number = (number << 8) | data[static_cast<size_t>(i)];
                char text[64];
                std::snprintf(text, sizeof(text), "0x%016" PRIx64 " (%" PRIu64 ")", number, number);
                return text;
            }
            return HexBytes(data);
        default:
            return HexBytes(data);
    }
}

void PrintValue(const Platform::RegNamedValue& value) {
    const std::string name = value.name.empty() ? "(Default)" : STLHelpers::WideToUtf8(value.name);
    std::printf("    %s    %s    %s\n", name.c_str(), TypeName(value.value.type).c_str(),
                DataText(value.value).c_str());
}

int Query(const std::string& keyText, const std::string* valueName) {
    const Registry::KeyPath path(STLHelpers::Utf8ToWide(keyText));
    const auto root = Platform::PredefinedRegRoot(path.GetRoot());
    if (!root) {
        std::fprintf(stderr,
                     "lumetta-diag: \"%s\" does not start with a registry root (HKCU, HKLM, "
                     "HKCR, HKCC, HKUS, ... or the full names such as HKEY_CURRENT_USER)\n",
                     keyText.c_str());
        return 1;
    }
    const std::string fullPath = STLHelpers::WideToUtf8(path.GetFullPath());
    const auto values = Platform::ListRegistryValues(*root, path.GetPath());
    if (!values) {
        std::fprintf(stderr, "lumetta-diag: the key %s does not exist (hive file: %s)\n",
                     fullPath.c_str(), Platform::RegistryHivePath(*root).c_str());
        return 1;
    }
    std::printf("%s\n", fullPath.c_str());
    if (valueName != nullptr) {
        const std::wstring wanted = Platform::FoldRegistryName(STLHelpers::Utf8ToWide(*valueName));
        for (const auto& named : *values) {
            if (Platform::FoldRegistryName(named.name) == wanted) {
                PrintValue(named);
                return 0;
            }
        }
        std::fprintf(stderr, "lumetta-diag: the key %s has no value \"%s\"\n", fullPath.c_str(),
                     valueName->c_str());
        return 1;
    }
    for (const auto& value : *values) PrintValue(value);
    if (const auto subkeys = Platform::ListRegistrySubkeys(*root, path.GetPath());
        subkeys && !subkeys->empty()) {
        std::printf("\n");
        for (const auto& subkey : *subkeys)
            std::printf("%s\\%s\n", fullPath.c_str(), STLHelpers::WideToUtf8(subkey).c_str());
    }
    return 0;
}

int Check() {
    using Platform::RegRoot;
    constexpr RegRoot kRoots[] = {
        RegRoot::CurrentUser,     RegRoot::LocalMachine,    RegRoot::ClassesRoot,
        RegRoot::Users,           RegRoot::CurrentConfig,   RegRoot::DynData,
        RegRoot::PerformanceData, RegRoot::PerformanceText, RegRoot::PerformanceNlsText};
    size_t count = 0;
    for (const RegRoot root : kRoots) {
        for (const Platform::RegHiveProblem& problem : Platform::CheckRegistryHive(root)) {
            if (problem.line > 0)
                std::printf("%s:%zu: %s\n", problem.file.c_str(), problem.line,
                            problem.reason.c_str());
            else
                std::printf("%s: %s\n", problem.file.c_str(), problem.reason.c_str());
            ++count;
        }
    }
    if (count == 0)
        std::printf("no problems in the hive files\n");
    else
        std::printf("%zu problem%s in the hive files\n", count, count == 1 ? "" : "s");
    return count == 0 ? 0 : 1;
}

const DiagCommands::Registration registration{
    "reg", [](CLI::App& app) {
        auto* reg = app.add_subcommand("reg", "Registry values as the updater reads them");
        reg->require_subcommand(1);
        auto* query = reg->add_subcommand(
            "query", "Print the values of a key (name, type, data) and its subkeys");
        auto key = std::make_shared<std::string>();
        auto value = std::make_shared<std::string>();
        query->add_option("KEY", *key, "Key path, e.g. HKCU\\Software\\Utility")->required();
        auto* valueOption = query->add_option("--value,-v", *value, "Print only this value");
        query->callback([key, value, valueOption]() {
            DiagCommands::SetExitCode(
                Query(*key, valueOption->count() > 0 ? value.get() : nullptr));
        });
        auto* check = reg->add_subcommand(
            "check", "List every line of the hive files that the updater cannot understand");
        check->callback([] { DiagCommands::SetExitCode(Check()); });
    }};

}  // namespace
