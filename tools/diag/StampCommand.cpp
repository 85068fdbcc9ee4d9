// lumetta-diag stamp FILE --version a.b.c.d [--company TEXT] [--product TEXT]
//                         [--description TEXT]
// Gives an ELF executable built by any toolchain the version resource the updater reads,
// replacing one it already carries and keeping its other resources. Nothing is changed
// when anything is wrong: a malformed version, a file that is no ELF executable, a
// read-only file.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <string>
#include <vector>

#include "DiagCommands.h"
#include "foundation/TextConversion.h"
#include "platform/ElfResourceSection.h"
#include "platform/ResImageWriter.h"
#include "platform/ResourceImage.h"
#include "platform/Utf16Text.h"
#include "platform/VersionResourceWriter.h"

namespace {

using Platform::ResourceImage;

struct Options {
    std::string file, version, company, product, description;
};

std::u16string Utf16(const std::string& text) {
    return Platform::Utf16FromWide(STLHelpers::Utf8ToWide(text));
}

int Fail(const std::string& message, int code = 1) {
    std::fprintf(stderr, "lumetta-diag: %s\n", message.c_str());
    return code;
}

int Run(const Options& options) {
    Platform::VersionResourceFields fields;
    if (!Platform::ParseVersionQuad(options.version, fields.version))
        return Fail("\"" + options.version +
                        "\" is not a version: give four numbers from 0 to 65535 separated by "
                        "dots, such as 1.4.0.2",
                    2);
    fields.company = Utf16(options.company);
    fields.product = Utf16(options.product);
    fields.description = Utf16(options.description);
    std::vector<uint8_t> version = Platform::WriteVersionResource(fields);
    if (version.empty()) return Fail("the texts are too long for a version resource", 2);

    // The resources the file carries already stay, all but its version.
    ResourceImage existing;
    const uint32_t error = existing.LoadFile(options.file);
    if (error == Platform::ResourceErrors::BadFormat ||
        (error == 0 && existing.GetFormat() != ResourceImage::Format::Elf))
        return Fail("\"" + options.file + "\" is not an ELF executable or shared library.");
    if (error != 0 && error != Platform::ResourceErrors::NoResourceSection)
        return Fail("the resources of \"" + options.file + "\" cannot be read (error " +
                    std::to_string(error) + "); it was left unchanged.");
    std::vector<Platform::ResourceToWrite> resources;
    for (const Platform::ResourceEntry& entry : existing.Entries()) {
        if (entry.type.IsNumber() && entry.type.Number() == Platform::RT_VERSION) continue;
        const auto data = existing.Data(entry);
        resources.push_back({entry.type, entry.name, entry.language, {data.begin(), data.end()}});
    }
    resources.push_back({Platform::RT_VERSION, uint16_t{1}, Platform::kVersionResourceLanguage,
                         std::move(version)});

    const std::string problem =
        Platform::ReplaceElfResourceSection(options.file, Platform::WriteResImage(resources));
    if (!problem.empty()) return Fail(problem);
    std::printf("%s: version %s\n", options.file.c_str(),
                Platform::FormatVersionQuad(fields.version).c_str());
    return 0;
}

const DiagCommands::Registration registration{
    "stamp", [](CLI::App& app) {
        auto* stamp = app.add_subcommand(
            "stamp", "Give an ELF executable the version resource that the updater reads");
        auto options = std::make_shared<Options>();
        stamp->add_option("FILE", options->file, "The executable to change")->required();
        stamp->add_option("--version", options->version, "Its version, a.b.c.d")->required();
        stamp->add_option("--company", options->company, "CompanyName");
        stamp->add_option("--product", options->product, "ProductName");
        stamp->add_option("--description", options->description, "FileDescription");
        stamp->callback([options]() { DiagCommands::SetExitCode(Run(*options)); });
    }};

}  // namespace
