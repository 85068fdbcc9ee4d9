#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "TestHarness.h"
#include "engine/SetupSignature.h"
#include "engine/SignedFile.h"
#include "engine/internal/SignatureDownload.h"
#include "foundation/TextConversion.h"
#include "support/Minisign.h"

namespace {

using TestHarness::Lines;
using TestHarness::ReadFile;
using TestHarness::WriteFile;
using TestSupport::MinisignKey;

// Two fixed key pairs and signatures of one file, made by minisign once for the suite.
class SetupSignatureTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder = std::make_unique<TestHarness::TempFolder>();
        mine = TestSupport::FixedMinisignKey("mine");
        other = TestSupport::FixedMinisignKey("other");
        WriteFile(File("setup"), TestHarness::Pattern(300000));
        WriteFile(File("changed"), TestHarness::Pattern(300000) + "x");
        signed_ = TestSupport::MinisignSign(mine, File("setup"), File("hashed.minisig"),
                                            {"-t", "release 2.0"}) &&
                  TestSupport::MinisignSign(mine, File("setup"), File("legacy.minisig"), {"-l"}) &&
                  TestSupport::MinisignSign(other, File("setup"), File("other.minisig"));
    }
    static void TearDownTestSuite() { folder.reset(); }
    void SetUp() override { ASSERT_TRUE(signed_ && !mine.publicKey.empty()) << "minisign"; }

    static std::string File(const std::string& name) { return folder->File(name); }

    static std::unique_ptr<TestHarness::TempFolder> folder;
    static MinisignKey mine, other;
    static bool signed_;
};

std::unique_ptr<TestHarness::TempFolder> SetupSignatureTest::folder;
MinisignKey SetupSignatureTest::mine, SetupSignatureTest::other;
bool SetupSignatureTest::signed_ = false;

std::string Join(const std::vector<std::string>& lines, const std::string& end = "\n") {
    std::string text;
    for (const auto& line : lines) text += line + end;
    return text;
}

TEST_F(SetupSignatureTest, OnlyTheSignedFileWithTheSigningKeyIsValid) {
    const std::string hashed = ReadFile(File("hashed.minisig"));
    std::vector<std::string> comment = Lines(hashed);
    comment[2] = "trusted comment: release 2.1";

    struct Case {
        const char* what;
        std::string file, signature, key;
        const char* reason;  // nullptr: valid
    } cases[] = {
        {"prehashed", "setup", hashed, mine.publicKey, nullptr},
        {"legacy", "setup", ReadFile(File("legacy.minisig")), mine.publicKey, nullptr},
        {"with CRLF line ends", "setup", Join(Lines(hashed), "\r\n"), mine.publicKey, nullptr},
        {"prehashed, changed file", "changed", hashed, mine.publicKey, "does not match"},
        {"legacy, changed file", "changed", ReadFile(File("legacy.minisig")), mine.publicKey,
         "does not match"},
        {"another key's", "setup", ReadFile(File("other.minisig")), mine.publicKey, "another key"},
        {"changed trusted comment", "setup", Join(comment), mine.publicKey, "trusted comment"},
        {"no key", "setup", hashed, "", "public key is empty"},
        {"signature as key", "setup", hashed, Lines(hashed)[1], "not the base64 line"},
        {"missing file", "absent", hashed, mine.publicKey, "cannot be opened"},
    };
    for (const Case& c : cases) {
        const Engine::SignatureVerdict verdict =
            Engine::VerifySignedFile(STLHelpers::Utf8ToWide(File(c.file)), c.key, c.signature);
        EXPECT_EQ(verdict.valid, c.reason == nullptr) << c.what << ": " << verdict.reason;
        if (c.reason) {
            EXPECT_NE(verdict.reason.find(c.reason), std::string::npos)
                << c.what << ": " << verdict.reason;
        }
    }
    const auto verdict =
        Engine::VerifySignedFile(STLHelpers::Utf8ToWide(File("setup")), mine.publicKey, hashed);
    EXPECT_EQ(verdict.trustedComment, "release 2.0");
    EXPECT_EQ(verdict.keyId, mine.keyId) << "the key id as minisign shows it";

    // A matching key id alone is not enough: the signature of `mine` under the id of `other`.
    Engine::SetupSignature signature;
    Engine::SignaturePublicKey key;
    std::string reason;
    ASSERT_TRUE(Engine::ParseSignature(hashed, &signature, &reason)) << reason;
    ASSERT_TRUE(Engine::ParsePublicKey(other.publicKey, &key, &reason)) << reason;
    signature.keyId = key.keyId;
    Engine::SignatureCheck check(key, signature);
    const std::string content = ReadFile(File("setup"));
    EXPECT_TRUE(check.Add(content.data(), content.size()));
    EXPECT_FALSE(check.Finish(&reason));
    EXPECT_NE(reason.find("does not match"), std::string::npos) << reason;
}

TEST_F(SetupSignatureTest, MalformedSignatureFilesAreRefusedWithAReason) {
    const std::vector<std::string> good = Lines(ReadFile(File("hashed.minisig")));
    auto with = [&](size_t index, const std::string& line) {
        std::vector<std::string> lines = good;
        lines[index] = line;
        return Join(lines);
    };
    const struct {
        const char* what;
        std::string text;
        const char* reason;
    } cases[] = {
        {"empty", "", "empty"},
        {"two lines", Join({good[0], good[1]}), "truncated"},
        {"cut inside the signature", Join(good).substr(0, 80), "truncated"},
        {"no untrusted comment", with(0, "comment: x"), "untrusted comment"},
        {"bad base64", with(1, good[1].substr(0, 50) + "*" + good[1].substr(51)), "base64"},
        {"short signature", with(1, good[1].substr(0, 96)), "base64"},
        {"unknown algorithm", with(1, "AAAA" + good[1].substr(4)), "algorithm"},
        {"no trusted comment", with(2, "untrusted comment: x"), "trusted comment"},
        {"oversized comment", with(2, "trusted comment: " + std::string(9000, 'c')), "longer"},
        {"bad global signature", with(3, good[3].substr(4)), "64 bytes"},
        {"a fifth line", Join(good) + "more\n", "more than four"},
        {"huge body", Join(good) + std::string(70000, '\n'), "larger than"},
    };
    for (const auto& c : cases) {
        Engine::SetupSignature signature;
        std::string reason;
        EXPECT_FALSE(Engine::ParseSignature(c.text, &signature, &reason)) << c.what;
        EXPECT_NE(reason.find(c.reason), std::string::npos) << c.what << ": " << reason;
    }
}

TEST(SignatureUrl, PutsTheExtensionAfterThePathBeforeAnyQuery) {
    const struct {
        const wchar_t* url;
        const wchar_t* signature;
    } cases[] = {
        {L"http://host/setup.exe", L"http://host/setup.exe.minisig"},
        {L"http://user@host:8080/a/setup.exe?x=1.exe#f",
         L"http://host/a/setup.exe.minisig?x=1.exe#f"},
        {L"http://host?q", L"http://host/.minisig?q"},
        {L"no-scheme/setup.exe", L""},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Engine::internal::SignatureUrl(c.url), c.signature)
            << STLHelpers::WideToUtf8(c.url);
}

}  // namespace
