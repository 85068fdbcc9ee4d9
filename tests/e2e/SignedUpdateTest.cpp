#include <gtest/gtest.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "TestHarness.h"
#include "support/Minisign.h"

namespace {

using TestHarness::Exists;
using TestHarness::ReadFile;
using TestHarness::TempFolder;

enum class Signature { Mine, MineThenChanged, Other, None, Huge };
enum class KeyAt { Nowhere, CommandLine, Registry, CommandLineAndRegistry };

// The setup's signature is made by minisign and served beside it.
TEST(SignedUpdate, OnlyASetupSignedByTheConfiguredKeyRuns) {
    TempFolder www;
    const auto mine = TestSupport::FixedMinisignKey("mine");
    const auto other = TestSupport::FixedMinisignKey("other");
    ASSERT_FALSE(mine.publicKey.empty() || other.publicKey.empty()) << "minisign";
    TestHarness::HttpServers servers(www.Path());
    ASSERT_TRUE(servers.Ready()) << servers.Problem();

    const std::string setup = www.File("setup.exe");
    const std::string signature = setup + ".minisig";

    const struct {
        const char* what;
        Signature signedBy;
        KeyAt keyAt;
        bool installs;
        const char* logSays;  // nullptr: nothing about signatures
    } cases[] = {
        {"good signature, key on the command line", Signature::Mine, KeyAt::CommandLine, true,
         "is signed by key EE7336E7F2B60 ("},
        {"good signature, key in the registry", Signature::Mine, KeyAt::Registry, true,
         "is signed by key"},
        {"the command line's key before the registry's", Signature::Mine,
         KeyAt::CommandLineAndRegistry, true, "is signed by key"},
        {"setup changed after signing", Signature::MineThenChanged, KeyAt::CommandLine, false,
         "does not match the file"},
        // nginx's 404 page arrives instead.
        {"no signature", Signature::None, KeyAt::CommandLine, false,
         "does not begin with an untrusted comment"},
        {"another key's signature", Signature::Other, KeyAt::Registry, false,
         "made with another key"},
        {"a huge signature file", Signature::Huge, KeyAt::CommandLine, false,
         "larger than 65536 bytes"},
        {"no key: unchecked", Signature::None, KeyAt::Nowhere, true, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const TestHarness::DemoUpdate d("Signed Product");
        std::filesystem::remove(signature);
        std::filesystem::copy_file(LUMETTA_DEMO_SETUP, setup,
                                   std::filesystem::copy_options::overwrite_existing);
        if (c.signedBy == Signature::Huge) {
            TestHarness::WriteFile(signature, TestHarness::Pattern(1 << 20));
        } else if (c.signedBy != Signature::None) {
            ASSERT_TRUE(TestSupport::MinisignSign(c.signedBy == Signature::Other ? other : mine,
                                                  setup, signature));
        }
        if (c.signedBy == Signature::MineThenChanged) std::ofstream(setup, std::ios::app) << "x";
        if (c.keyAt == KeyAt::Registry || c.keyAt == KeyAt::CommandLineAndRegistry) {
            const std::string key = c.keyAt == KeyAt::Registry ? mine.publicKey : other.publicKey;
            TestHarness::WriteFile(d.registry.File("HKEY_LOCAL_MACHINE.reg"),
                                   "Windows Registry Editor Version 5.00\n\n"
                                   "[HKEY_LOCAL_MACHINE\\Software\\" +
                                       d.product + "]\n\"UpdatePublicKey\"=\"" + key + "\"\n");
        }
        std::vector<std::string> args;
        if (c.keyAt == KeyAt::CommandLine || c.keyAt == KeyAt::CommandLineAndRegistry)
            args = {"/publicKey", mine.publicKey};
        const std::string requestsBefore = servers.FileRequests();
        const int status =
            d.Diag(LUMETTA_DIAG, args, {"Debugging_Log_Path=" + d.work.File("log.txt")});
        const std::string output = ReadFile(d.work.File("diag.out"));
        const std::string log = ReadFile(d.work.File("log.txt"));
        const std::string requests = servers.FileRequests().substr(requestsBefore.size());

        EXPECT_EQ(status, c.installs ? 0 : 1) << output;
        EXPECT_EQ(Exists(d.work.File("setup-args")), c.installs) << "the setup ran";
        EXPECT_FALSE(Exists(d.temp.File("Update1.exe"))) << "no setup file is left";
        EXPECT_EQ(requests.find(".minisig") != std::string::npos, c.keyAt != KeyAt::Nowhere)
            << requests;
        if (!c.logSays) {
            EXPECT_EQ(log.find("Setup"), std::string::npos) << log;
        } else {
            EXPECT_NE(log.find(c.logSays), std::string::npos) << log;
        }
        if (!c.installs) {
            EXPECT_NE(output.find("state 4 Finished\nresult failed"), std::string::npos) << output;
            EXPECT_EQ(output.find("state 3"), std::string::npos) << "not Installing\n" << output;
            EXPECT_NE(log.find(" ERR "), std::string::npos) << log;
            EXPECT_NE(log.find("is not run: "), std::string::npos) << log;
        }
    }
}

}  // namespace
