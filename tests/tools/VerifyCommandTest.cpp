#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/CommandOutput.h"
#include "support/Minisign.h"
#include "support/TestFiles.h"

namespace {

// The checks themselves are the engine's (tested with it); here: the tool's arguments, the
// default signature path, and the exit status and words a release pipeline sees.
TEST(VerifyCommand, ExitsZeroOnlyForAValidSignature) {
    const TestSupport::TempFolder folder{"lumetta-diag-verify"};
    const std::string dir = folder.Path().string();
    const auto key = TestSupport::FixedMinisignKey("mine");
    const auto other = TestSupport::FixedMinisignKey("other");
    ASSERT_TRUE(TestSupport::WriteFile(dir + "/setup.exe", "setup program"));
    ASSERT_TRUE(TestSupport::WriteFile(dir + "/changed.exe", "setup program!"));
    ASSERT_TRUE(TestSupport::MinisignSign(key, dir + "/setup.exe", dir + "/setup.exe.minisig",
                                          {"-t", "build 42"}));
    ASSERT_TRUE(TestSupport::MinisignSign(key, dir + "/setup.exe", dir + "/elsewhere.sig"));

    const struct {
        std::vector<std::string> args;
        int exitCode;
        std::string says;
    } cases[] = {
        {{dir + "/setup.exe", "--public-key", key.publicKey}, 0, "trusted comment: build 42"},
        {{dir + "/setup.exe", "--signature", dir + "/elsewhere.sig", "--public-key", key.publicKey},
         0,
         "valid: signed by key " + key.keyId + "\n"},
        {{dir + "/changed.exe", "--signature", dir + "/setup.exe.minisig", "--public-key",
          key.publicKey},
         1,
         "invalid: the signature does not match the file"},
        {{dir + "/setup.exe", "--public-key", other.publicKey}, 1, "invalid: the signature was "},
        {{dir + "/changed.exe", "--public-key", key.publicKey}, 1, "cannot be read"},
        {{dir + "/setup.exe"}, 106, "--public-key is required"},
    };
    for (const auto& c : cases) {
        std::vector<std::string> argv{LUMETTA_DIAG, "verify"};
        argv.insert(argv.end(), c.args.begin(), c.args.end());
        const TestSupport::CommandOutput run = TestSupport::RunProgram(argv);
        EXPECT_EQ(run.exitCode, c.exitCode) << run.out;
        EXPECT_NE(run.out.find(c.says), std::string::npos) << run.out;
    }
}

}  // namespace
