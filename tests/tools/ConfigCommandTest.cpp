#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/HiveFolder.h"

namespace {

std::string Quoted(const std::string& text) {
    std::string out = "'";
    for (char ch : text) out += ch == '\'' ? std::string("'\\''") : std::string(1, ch);
    return out + "'";
}

// lumetta-diag config against a registry folder of our own, so that neither the user's
// nor the machine's registry files can change the answers.
class ConfigCommand : public ::testing::Test {
protected:
    void Hive(const std::string& root, const std::string& text) {
        ASSERT_TRUE(
            registry.WriteHive(root + ".reg", "Windows Registry Editor Version 5.00\n\n" + text));
    }

    // Every "name: value" line of the output; the exit code under "exit".
    std::map<std::string, std::string> Config(const std::vector<std::string>& args) {
        std::string command = Quoted(LUMETTA_DIAG) + " config";
        for (const auto& arg : args) command += " " + Quoted(arg);
        const TestSupport::CommandOutput run = TestSupport::RunCommand(command + " 2>&1");
        std::map<std::string, std::string> values;
        std::istringstream lines(run.out);
        for (std::string line; std::getline(lines, line);) {
            const size_t colon = line.find(": ");
            if (colon != std::string::npos) values[line.substr(0, colon)] = line.substr(colon + 2);
        }
        values["exit"] = std::to_string(run.exitCode);
        return values;
    }

    TestSupport::HiveFolder registry;
};

TEST_F(ConfigCommand, WithoutArgumentsShowsTheCompiledInProduct) {
    auto values = Config({});
    EXPECT_EQ(values["exit"], "0");
    EXPECT_EQ(values.size(), 19u) << "every value and the exit code";
    EXPECT_EQ(values["productName"], "Lumetta Player");
    EXPECT_EQ(values["productExecutable"], "LumettaPlayer.exe");
    EXPECT_EQ(values["bundleName"], "Lumetta Pack");
    EXPECT_EQ(values["componentName"], "Automatic Update");
    EXPECT_EQ(values["isSilent"], "true");
    EXPECT_EQ(values["runWithProduct"], "false");
    // No "SetupNameSuffix" in the registry: the token becomes a lone "_".
    EXPECT_EQ(values["brandSuffix"], "_");
    EXPECT_EQ(values["downloadURL"],
              "http://download.lumetta-player.com/setup/LumettaPlayerSetup_.exe");
    EXPECT_EQ(values["productNameWithoutSpaces"], "LumettaPlayer");
    EXPECT_EQ(values["installPath"], "");
    EXPECT_EQ(values["updateMutexName"], "Lumetta Player_UpdateMutex");
    EXPECT_EQ(values["extrasMutexName"], "Lumetta Player_ExtrasMutex");
    EXPECT_EQ(values["exitEventName"], "Lumetta Player_ExitEvent");
}

TEST_F(ConfigCommand, ArgumentsAndRegistryValuesChangeTheConfiguration) {
    Hive("HKEY_CURRENT_USER",
         "[HKEY_CURRENT_USER\\Software\\My Product]\n\"SetupNameSuffix\"=\"KAPRI\"\n\n"
         "[HKEY_CURRENT_USER\\Software\\My Pack\\My Product]\n"
         "\"DownloadURL\"=\"registry.test/get/URLBrandSuffix/.bin\"\n");
    Hive("HKEY_LOCAL_MACHINE",
         "[HKEY_LOCAL_MACHINE\\Software\\My Product]\n\"InstallPath\"=\"/opt/my product/\"\n");

    // Option names are matched without regard to case.
    auto values = Config({"/PRODUCTNAME", "My Product", "/bundleName", "My Pack", "/isSilent", "0",
                          "/runWithProduct", "/componentName", "Extras", "/downloadURL",
                          "http://example.test/Setup/URLBrandSuffix/.exe"});
    EXPECT_EQ(values["exit"], "0");
    EXPECT_EQ(values["productName"], "My Product");
    EXPECT_EQ(values["productNameWithoutSpaces"], "MyProduct");
    EXPECT_EQ(values["updateMutexName"], "My Product_UpdateMutex");
    EXPECT_EQ(values["extrasMutexName"], "My Product_ExtrasMutex");
    EXPECT_EQ(values["exitEventName"], "My Product_ExitEvent");
    EXPECT_EQ(values["componentName"], "Extras");
    EXPECT_EQ(values["isSilent"], "false");
    EXPECT_EQ(values["runWithProduct"], "true");
    EXPECT_EQ(values["brandSuffix"], "_01");
    EXPECT_EQ(values["downloadURL"], "http://example.test/Setup_01.exe") << "the option wins";
    EXPECT_EQ(values["installPath"], "/opt/my product/");
    EXPECT_EQ(values["productExecutable"], "LumettaPlayer.exe") << "not given: compiled in";

    // Without the option the product's registry value is used, token replaced as well.
    values = Config({"/productName", "My Product", "/bundleName", "My Pack", "/isSilent"});
    EXPECT_EQ(values["downloadURL"], "registry.test/get_01.bin");
    EXPECT_EQ(values["isSilent"], "true") << "an option without its value is ignored";
}

}  // namespace
