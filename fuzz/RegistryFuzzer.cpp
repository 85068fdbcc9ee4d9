// libFuzzer target for the registry: any bytes as a `.reg` hive, parsed directly and then
// read the way the product reads its settings, through the hive file and Registry::Key.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "platform/RegFileParser.h"
#include "platform/RegistryHive.h"
#include "system/RegistryKey.h"
#include "system/RegistryRoots.h"

namespace {

using Platform::RegHive;

// Every key below `path`, depth first, bounded so that a deep hive cannot stall a run.
void CollectKeys(const RegHive& hive, const std::wstring& path, std::vector<std::wstring>& out) {
    if (out.size() >= 64) return;
    out.push_back(path);
    for (const std::wstring& name : hive.Subkeys(path))
        CollectKeys(hive, path.empty() ? name : path + L"\\" + name, out);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    setenv("LUMETTA_REGISTRY_DIR", Fuzz::ScratchFolder().c_str(), 1);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes = Fuzz::Bytes(data, size);
    Platform::RegFileParser::DecodeText(bytes);
    std::vector<Platform::RegParseIssue> issues;
    const RegHive hive =
        Platform::RegFileParser::Parse(bytes, Platform::RegRoot::CurrentUser, &issues);

    std::vector<std::wstring> keys;
    CollectKeys(hive, L"", keys);
    for (const std::wstring& path : keys) {
        const Platform::RegKeyNode* node = hive.FindKey(path);
        if (!node) Fuzz::Fail("a listed subkey cannot be found");
        for (const Platform::RegNamedValue& value : node->values)
            if (!RegHive::FindValue(*node, value.name)) Fuzz::Fail("a listed value is missing");
        Platform::SplitRegistryPath(path);
    }

    // The same bytes as the hive file that Registry::Key reads. The hive store notices a
    // changed file by its identity and time stamps, which a run may reuse within one clock
    // tick: the readers below are exercised, not compared with the parse above.
    Fuzz::WriteFile(Fuzz::ScratchFolder() / "HKEY_CURRENT_USER.reg", bytes);
    for (const std::wstring& path : keys) {
        Registry::Key key(Registry::HKEY_CURRENT_USER, path);
        const Platform::RegKeyNode* node = hive.FindKey(path);
        for (size_t i = 0; node && i < node->values.size() && i < 16; ++i) {
            key.ReadString(node->values[i].name, L"default");
            key.ReadDword(node->values[i].name, 7);
        }
        Platform::ListRegistryValues(Platform::RegRoot::CurrentUser, path);
        Platform::ListRegistrySubkeys(Platform::RegRoot::CurrentUser, path);
    }
    return 0;
}
