#include "platform/ResImageWriter.h"

#include "platform/internal/ByteWriter.h"

namespace Platform {
namespace {

using internal::PadTo4;
using internal::PutU16;
using internal::PutU32;

// Resource compilers mark every entry movable, pure and discardable; readers ignore it.
constexpr uint16_t kMemoryFlags = 0x1030;

void PutName(std::vector<uint8_t>& out, const ResourceName& name) {
    if (name.IsNumber()) {
        PutU16(out, 0xFFFF);
        PutU16(out, name.Number());
        return;
    }
    for (char16_t ch : name.Text()) PutU16(out, static_cast<uint16_t>(ch));
    PutU16(out, 0);
}

void PutEntry(std::vector<uint8_t>& out, const ResourceName& type, const ResourceName& name,
              uint16_t language, uint16_t memoryFlags, std::span<const uint8_t> data) {
    const std::size_t start = out.size();
    PutU32(out, static_cast<uint32_t>(data.size()));
    PutU32(out, 0);  // header size, known below
    PutName(out, type);
    PutName(out, name);
    PadTo4(out);
    PutU32(out, 0);  // data version
    PutU16(out, memoryFlags);
    PutU16(out, language);
    PutU32(out, 0);  // version
    PutU32(out, 0);  // characteristics
    const auto headerSize = static_cast<uint32_t>(out.size() - start);
    for (int i = 0; i < 4; ++i) out[start + 4 + i] = static_cast<uint8_t>(headerSize >> (8 * i));
    out.insert(out.end(), data.begin(), data.end());
    PadTo4(out);
}

}  // namespace

std::vector<uint8_t> WriteResImage(std::span<const ResourceToWrite> resources) {
    std::vector<uint8_t> out;
    PutEntry(out, ResourceName(uint16_t{0}), ResourceName(uint16_t{0}), 0, 0, {});
    for (const ResourceToWrite& resource : resources)
        PutEntry(out, resource.type, resource.name, resource.language, kMemoryFlags, resource.data);
    return out;
}

}  // namespace Platform
