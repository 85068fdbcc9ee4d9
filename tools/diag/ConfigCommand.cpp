// lumetta-diag config [ARGS...]: every value of the product configuration the updater would
// have if it were started with ARGS, one "name: value" line each.
#include <CLI/CLI.hpp>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "DiagCommands.h"
#include "app/ProductConfiguration.h"
#include "foundation/TextConversion.h"
#include "system/FileHelpers.h"

namespace {

void Line(const char* name, const std::wstring& value) {
    std::printf("%s: %s\n", name, STLHelpers::WideToUtf8(value).c_str());
}

void ShowConfiguration(const std::vector<std::string>& args) {
    std::vector<std::wstring> arguments{System::GetModulePath()};
    for (const auto& arg : args) arguments.push_back(STLHelpers::Utf8ToWide(arg));
    ProductConfiguration configuration(std::move(arguments));

    Line("productName", configuration.GetProductName());
    Line("productCompanyName", configuration.GetProductCompanyName());
    Line("productExecutable", configuration.GetProductExecutable());
    Line("productURL", configuration.GetProductURL());
    Line("bundleName", configuration.GetBundleName());
    Line("componentName", configuration.GetComponentName());
    Line("languageName", configuration.GetConfiguredLanguageName());
    Line("isSilent", configuration.IsSilent() ? L"true" : L"false");
    Line("runWithProduct", configuration.IsRunWithProduct() ? L"true" : L"false");
    Line("brandSuffix", configuration.GetBrandSuffix());
    Line("downloadURL", configuration.GetDownloadURL());
    Line("productVersion", configuration.GetProductVersion());
    Line("shortProductVersion", configuration.GetShortProductVersion());
    Line("productNameWithoutSpaces", configuration.GetProductNameWithoutSpaces());
    Line("installPath", configuration.GetInstallPath());
    Line("updateMutexName", configuration.GetUpdateMutexName());
    Line("extrasMutexName", configuration.GetExtrasMutexName());
    Line("exitEventName", configuration.GetExitEventName());
    Line("publicKey", configuration.GetPublicKey());
    const std::pair<const char*, ConfiguredValue> managed[] = {
        {"feedURL", configuration.GetFeedURL()},
        {"installedVersion", configuration.GetInstalledVersion()},
        {"channel", configuration.GetUpdateChannel()},
    };
    for (const auto& [name, setting] : managed) {
        Line(name, setting.value);
        Line((std::string(name) + "From").c_str(), setting.source);
    }
}

const DiagCommands::Registration registration{
    "config", [](CLI::App& app) {
        auto* config = app.add_subcommand(
            "config", "Show the product configuration for the given updater arguments");
        auto args = std::make_shared<std::vector<std::string>>();
        config->add_option("ARGS", *args, "Updater arguments, e.g. /productName \"My Product\"");
        config->callback([args]() { ShowConfiguration(*args); });
    }};

}  // namespace
