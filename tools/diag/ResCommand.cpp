// lumetta-diag res FILE [--string ID] [--language LANGID]: the resources of a .res image,
// an ELF file with a ".rsrc" section or a PE file, one per line (type, name, language,
// size), followed by the strings of its version resource; with --string, only that
// string-table entry.
#include <CLI/CLI.hpp>

#include <cinttypes>
#include <cstdio>
#include <string>

#include "DiagCommands.h"
#include "platform/ResourceImage.h"
#include "platform/StringTable.h"
#include "platform/SystemMessages.h"
#include "platform/Utf16Text.h"
#include "platform/VersionInfo.h"

namespace {

using Platform::ResourceImage;

const char* TypeName(uint16_t type) {
    switch (type) {
        case Platform::RT_CURSOR:
            return "RT_CURSOR";
        case Platform::RT_BITMAP:
            return "RT_BITMAP";
        case Platform::RT_ICON:
            return "RT_ICON";
        case Platform::RT_MENU:
            return "RT_MENU";
        case Platform::RT_DIALOG:
            return "RT_DIALOG";
        case Platform::RT_STRING:
            return "RT_STRING";
        case Platform::RT_FONTDIR:
            return "RT_FONTDIR";
        case Platform::RT_FONT:
            return "RT_FONT";
        case Platform::RT_ACCELERATOR:
            return "RT_ACCELERATOR";
        case Platform::RT_RCDATA:
            return "RT_RCDATA";
        case Platform::RT_MESSAGETABLE:
            return "RT_MESSAGETABLE";
        case Platform::RT_GROUP_CURSOR:
            return "RT_GROUP_CURSOR";
        case Platform::RT_GROUP_ICON:
            return "RT_GROUP_ICON";
        case Platform::RT_VERSION:
            return "RT_VERSION";
        case Platform::RT_MANIFEST:
            return "RT_MANIFEST";
        default:
            return nullptr;
    }
}

std::string Describe(const Platform::ResourceName& type) {
    if (!type.IsNumber()) return "\"" + type.ToUtf8() + "\"";
    const char* name = TypeName(type.Number());
    return name ? std::string(name) : "#" + type.ToUtf8();
}

const char* FormatName(ResourceImage::Format format) {
    switch (format) {
        case ResourceImage::Format::Res:
            return "resource image (.res)";
        case ResourceImage::Format::Elf:
            return "ELF file";
        case ResourceImage::Format::Pe32:
            return "PE32 file";
        case ResourceImage::Format::Pe64:
            return "PE32+ file";
        default:
            return "unknown";
    }
}

// The system's text of `error`, with its "%1" (where it names the file) filled in.
std::string ErrorText(uint32_t error, const std::string& file = "The file") {
    const char* text = Platform::SystemMessageText(error);
    std::string out = text ? text : "Unknown error";
    if (const auto at = out.find("%1"); at != std::string::npos) out.replace(at, 2, file);
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
    return out + " (error " + std::to_string(error) + ")";
}

int PrintString(const ResourceImage& image, uint32_t id, uint16_t language) {
    std::u16string text;
    if (id > 0xFFFF ||
        !Platform::StringTable::Load(image, static_cast<uint16_t>(id), language, text)) {
        std::fprintf(stderr, "lumetta-diag: no string %" PRIu32 " in the string tables\n", id);
        return 1;
    }
    std::printf("%s\n", Platform::Utf8FromUtf16(text).c_str());
    return 0;
}

void PrintVersion(const ResourceImage& image) {
    const Platform::ResourceEntry* entry = image.Find(Platform::RT_VERSION, 1);
    if (!entry) return;
    Platform::VersionInfo info;
    if (const uint32_t error = info.Parse(image.Data(*entry))) {
        std::printf("\nversion resource: unreadable: %s\n", ErrorText(error).c_str());
        return;
    }
    std::printf("\nversion resource:\n");
    Platform::VersionInfo::FixedFileInfo fixed;
    if (info.GetFixedFileInfo(fixed))
        std::printf("  file version %u.%u.%u.%u, product version %u.%u.%u.%u\n",
                    fixed.fileVersionMS >> 16, fixed.fileVersionMS & 0xFFFF,
                    fixed.fileVersionLS >> 16, fixed.fileVersionLS & 0xFFFF,
                    fixed.productVersionMS >> 16, fixed.productVersionMS & 0xFFFF,
                    fixed.productVersionLS >> 16, fixed.productVersionLS & 0xFFFF);
    for (uint32_t translation : info.Translations())
        std::printf("  translation 0x%08" PRIX32 "\n", translation);
    for (const auto& value : info.AllStrings())
        std::printf("  %s %s = %s\n", Platform::Utf8FromUtf16(value.table).c_str(),
                    Platform::Utf8FromUtf16(value.key).c_str(),
                    Platform::Utf8FromUtf16(value.value).c_str());
}

int Run(const std::string& file, const std::string& stringId, uint16_t language) {
    ResourceImage image;
    if (const uint32_t error = image.LoadFile(file)) {
        std::fprintf(stderr, "lumetta-diag: cannot read the resources of %s: %s\n", file.c_str(),
                     ErrorText(error, file).c_str());
        return 1;
    }
    if (!stringId.empty()) {
        char* end = nullptr;
        const unsigned long id = std::strtoul(stringId.c_str(), &end, 0);
        if (*end != '\0' || id > 0xFFFF) {
            std::fprintf(stderr, "lumetta-diag: %s is no string id (0 to 65535)\n",
                         stringId.c_str());
            return 2;
        }
        return PrintString(image, static_cast<uint32_t>(id), language);
    }
    std::printf("%s: %s, %zu resources\n", file.c_str(), FormatName(image.GetFormat()),
                image.Entries().size());
    std::printf("%-22s %-24s %-8s %s\n", "TYPE", "NAME", "LANGUAGE", "SIZE");
    for (const Platform::ResourceEntry& entry : image.Entries()) {
        const std::string name =
            entry.name.IsNumber() ? entry.name.ToUtf8() : "\"" + entry.name.ToUtf8() + "\"";
        std::printf("%-22s %-24s 0x%04X   %zu\n", Describe(entry.type).c_str(), name.c_str(),
                    entry.language, entry.size);
    }
    PrintVersion(image);
    return 0;
}

const DiagCommands::Registration registration{
    "res", [](CLI::App& app) {
        auto* res = app.add_subcommand("res", "Resources of a .res, ELF or PE file");
        auto file = std::make_shared<std::string>();
        auto stringId = std::make_shared<std::string>();
        auto language = std::make_shared<uint16_t>(0);
        res->add_option("FILE", *file, "The file to read")->required();
        res->add_option("--string", *stringId, "Print only this string-table entry");
        res->add_option("--language", *language, "Language of the string (default: neutral)");
        res->callback([file, stringId, language]() {
            DiagCommands::SetExitCode(Run(*file, *stringId, *language));
        });
    }};

}  // namespace
