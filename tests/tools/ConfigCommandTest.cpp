#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "support/CommandOutput.h"
#include "support/HiveFolder.h"

namespace {

// The values themselves are the configuration's (tested with it); here: that the tool passes
// its arguments through, reads the registry and prints every value as "name: value".
TEST(ConfigCommand, PrintsEveryValueForTheGivenArguments) {
    const TestSupport::HiveFolder registry;
    ASSERT_TRUE(registry.WriteHive("HKEY_LOCAL_MACHINE.reg",
                                   "Windows Registry Editor Version 5.00\n\n"
                                   "[HKEY_LOCAL_MACHINE\\Software\\My Product]\n"
                                   "\"InstallPath\"=\"/opt/my product/\"\n"
                                   "\"UpdatePublicKey\"=\"RWQf6LRCGA9i53ml\"\n"));
    const TestSupport::CommandOutput run = TestSupport::RunProgram(
        {LUMETTA_DIAG, "config", "/PRODUCTNAME", "My Product", "/isSilent", "0", "/runWithProduct",
         "/downloadURL", "http://example.test/Setup/URLBrandSuffix/.exe"});
    EXPECT_EQ(run.exitCode, 0) << run.out;
    std::map<std::string, std::string> values;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) {
        const size_t colon = line.find(": ");
        if (colon != std::string::npos) values[line.substr(0, colon)] = line.substr(colon + 2);
    }
    EXPECT_EQ(values.size(), 25u) << run.out;
    EXPECT_EQ(values["productName"], "My Product");
    EXPECT_EQ(values["productNameWithoutSpaces"], "MyProduct");
    EXPECT_EQ(values["productExecutable"], "LumettaPlayer.exe") << "not given: compiled in";
    EXPECT_EQ(values["componentName"], "Automatic Update");
    EXPECT_EQ(values["isSilent"], "false");
    EXPECT_EQ(values["runWithProduct"], "true");
    EXPECT_EQ(values["brandSuffix"], "_");
    EXPECT_EQ(values["downloadURL"], "http://example.test/Setup_.exe");
    EXPECT_EQ(values["installPath"], "/opt/my product/");
    EXPECT_EQ(values["exitEventName"], "My Product_ExitEvent");
    EXPECT_EQ(values["publicKey"], "RWQf6LRCGA9i53ml");
}

}  // namespace
