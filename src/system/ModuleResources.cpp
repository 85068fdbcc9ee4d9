#include "system/ModuleResources.h"

#include "foundation/TextConversion.h"
#include "platform/StringTable.h"
#include "platform/Utf16Text.h"

namespace System {
namespace {

// The running executable does not change under us (a replaced file stays reachable
// through /proc/self/exe), so its resources are read once.
struct ExecutableResources {
    std::shared_ptr<const Platform::ResourceImage> image;
    uint32_t error = 0;
};

const ExecutableResources& Executable() {
    static const ExecutableResources resources = [] {
        ExecutableResources result;
        auto image = std::make_shared<Platform::ResourceImage>();
        result.error = image->LoadFile("/proc/self/exe");
        if (result.error == 0) result.image = std::move(image);
        return result;
    }();
    return resources;
}

}  // namespace

std::shared_ptr<const Platform::ResourceImage> GetModuleResources(const std::wstring& modulePath,
                                                                  uint32_t* error) {
    if (modulePath.empty()) {
        const ExecutableResources& executable = Executable();
        if (error) *error = executable.error;
        return executable.image;
    }
    auto image = std::make_shared<Platform::ResourceImage>();
    const uint32_t loadError = image->LoadFile(STLHelpers::WideToUtf8(modulePath));
    if (error) *error = loadError;
    if (loadError) return nullptr;
    return image;
}

std::wstring LoadStringResource(uint32_t id, const std::wstring& modulePath, uint16_t language,
                                bool* found) {
    if (found) *found = false;
    if (id > 0xFFFF) return {};
    const auto image = GetModuleResources(modulePath);
    if (!image) return {};
    std::u16string text;
    const bool present =
        Platform::StringTable::Load(*image, static_cast<uint16_t>(id), language, text);
    if (found) *found = present;
    return Platform::WideFromUtf16(text);
}

ModuleResource FindModuleResource(const std::wstring& modulePath,
                                  const Platform::ResourceName& name,
                                  const Platform::ResourceName& type, uint16_t language) {
    ModuleResource result;
    auto image = GetModuleResources(modulePath);
    if (!image) return result;
    const Platform::ResourceEntry* entry = image->Find(type, name, language);
    if (!entry) return result;
    result.data = image->Data(*entry);
    result.entry = entry;
    result.image = std::move(image);
    return result;
}

bool LoadModuleResource(const std::wstring& modulePath, const Platform::ResourceName& name,
                        const Platform::ResourceName& type, std::vector<uint8_t>& data,
                        uint16_t language) {
    data.clear();
    const ModuleResource resource = FindModuleResource(modulePath, name, type, language);
    if (!resource) return false;
    data.assign(resource.data.begin(), resource.data.end());
    return true;
}

}  // namespace System
