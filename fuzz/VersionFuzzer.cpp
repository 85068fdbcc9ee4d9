// libFuzzer target for version information: any bytes as a whole executable (ELF, PE or
// .res) whose "FileVersion" the product configuration asks for, and as a bare
// VS_VERSIONINFO block.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "FuzzSupport.h"
#include "platform/VersionInfo.h"
#include "system/ModuleVersion.h"

namespace {

void QueryEverything(const Platform::VersionInfo& info) {
    Platform::VersionInfo::Value value;
    info.Query(u"\\", value);
    info.Query(u"\\VarFileInfo\\Translation", value);
    for (uint32_t translation : info.Translations()) {
        const std::wstring path = System::FormatText(L"\\StringFileInfo\\%04X%04X\\FileVersion",
                                                     translation & 0xFFFF, translation >> 16);
        info.Query(std::u16string(path.begin(), path.end()), value);
    }
    Platform::VersionInfo::FixedFileInfo fixed;
    info.GetFixedFileInfo(fixed);
    info.AllStrings();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Platform::VersionInfo block;
    if (block.Parse(std::span<const uint8_t>(data, size)) == 0) QueryEverything(block);

    const auto path = Fuzz::ScratchFolder() / "Product.exe";
    Fuzz::WriteFile(path, Fuzz::Bytes(data, size));
    const System::ModuleVersion version(Fuzz::Wide(path));
    if (!version.GetBuffer().empty()) {
        Platform::VersionInfo info;
        if (info.Parse(version.GetBuffer()) != 0)
            Fuzz::Fail("a version resource that was accepted does not parse again");
        QueryEverything(info);
        version.GetFileVersion();
        version.QueryString(L"ProductVersion");
    }
    const std::wstring dotted = System::GetDottedFileVersion(Fuzz::Wide(path));
    if (dotted.find(L',') != std::wstring::npos) Fuzz::Fail("a comma is left in the version");
    return 0;
}
