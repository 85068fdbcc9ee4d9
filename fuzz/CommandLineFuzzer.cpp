// libFuzzer target for the command line: any text as the updater's whole command line,
// split by the CommandLineToArgvW rules and asked for every option the updater knows.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "app/ProductConfiguration.h"
#include "system/CommandLine.h"

namespace {

const wchar_t* const kOptions[] = {
    L"/downloadURL",    L"/componentName", L"/languageName",       L"/isSilent",
    L"/runWithProduct", L"/productName",   L"/productCompanyName", L"/productExecutable",
    L"/productURL",     L"/bundleName",
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The product hands the command line over as a zero-terminated text.
    std::wstring text = Fuzz::Text(data, size);
    text = text.substr(0, text.find(L'\0'));

    const std::vector<std::wstring> arguments = System::SplitArguments(text);
    // Behind a quoted program the rest of a line splits as the arguments alone do: this is
    // how the updater starts a setup program and how the setup reads what it was given.
    const std::wstring program = L"/opt/Lumetta Player/updater";
    const std::vector<std::wstring> line =
        System::CommandLineToArgv(System::BuildCommandLine(program, text));
    if (line.empty() || line.front() != program ||
        std::vector<std::wstring>(line.begin() + 1, line.end()) != arguments)
        Fuzz::Fail("a built command line does not split back into its parts");

    ProductConfiguration configuration(text.c_str());
    if (configuration.GetArgumentCount() !=
        static_cast<int32_t>(configuration.GetArguments().size()))
        Fuzz::Fail("the argument count disagrees with the arguments");
    for (const wchar_t* option : kOptions) {
        const std::wstring value = configuration.GetOptionValue(option);
        if (!value.empty() && !configuration.HasOption(option))
            Fuzz::Fail("an option without a match has a value");
    }
    configuration.IsSilent();
    configuration.IsRunWithProduct();
    configuration.GetComponentName();
    return 0;
}
