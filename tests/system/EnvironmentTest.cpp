#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "foundation/Exceptions.h"
#include "platform/Environment.h"
#include "system/Environment.h"

namespace {

const std::wstring kName = L"LUMETTA_ENV_TEST_" + std::to_wstring(::getpid());

class EnvironmentHelpers : public ::testing::Test {
protected:
    void TearDown() override {
        System::RemoveEnvironmentVariable(kName);
        System::RemoveEnvironmentVariable(System::kDelayedLogDataVariable);
    }
};

TEST_F(EnvironmentHelpers, ReadWriteAndRemove) {
    std::wstring value = L"stale";
    EXPECT_FALSE(System::GetEnvironmentValue(kName, value)) << "missing";
    EXPECT_EQ(value, L"");

    ASSERT_TRUE(System::SetEnvironmentValue(kName, L"Grüße = ☃"));
    EXPECT_TRUE(System::GetEnvironmentValue(kName, value));
    EXPECT_EQ(value, L"Grüße = ☃");
    EXPECT_EQ(Platform::GetEnvironment(std::string(kName.begin(), kName.end())),
              std::string("Grüße = ☃"))
        << "stored as UTF-8";

    ASSERT_TRUE(System::SetEnvironmentValue(kName, L"", true));
    EXPECT_FALSE(System::GetEnvironmentValue(kName, value)) << "an empty value reads as false";
    EXPECT_TRUE(Platform::GetEnvironment(std::string(kName.begin(), kName.end())).has_value());

    ASSERT_TRUE(System::SetEnvironmentValue(kName, L"x"));
    EXPECT_TRUE(System::RemoveEnvironmentVariable(kName));
    EXPECT_TRUE(System::RemoveEnvironmentVariable(kName)) << "removing a missing one succeeds";
    EXPECT_EQ(System::GetEnvironmentString(kName), L"");
}

TEST_F(EnvironmentHelpers, ValuesOverTheLimitReadAsEmptyExceptTheDelayedLogData) {
    std::wstring value;
    // The limit (1024) counts characters, not UTF-8 bytes.
    ASSERT_TRUE(System::SetEnvironmentValue(kName, std::wstring(1024, L'ä')));
    EXPECT_TRUE(System::GetEnvironmentValue(kName, value));
    EXPECT_EQ(value, std::wstring(1024, L'ä'));

    ASSERT_TRUE(System::SetEnvironmentValue(kName, std::wstring(1500, L'a')));
    value = L"stale";
    EXPECT_FALSE(System::GetEnvironmentValue(kName, value));
    EXPECT_EQ(value, L"");

    const std::wstring lines(200000, L'l');
    ASSERT_TRUE(System::SetEnvironmentValue(System::kDelayedLogDataVariable, lines));
    EXPECT_TRUE(System::GetEnvironmentValue(System::kDelayedLogDataVariable, value));
    EXPECT_EQ(value.size(), lines.size());
}

TEST_F(EnvironmentHelpers, BadNamesThrowThroughTheirChecks) {
    std::wstring value;
    try {
        System::GetEnvironmentValue(L"", value);
        FAIL() << "an empty name is an Error-level check";
    } catch (const ErrorHandling::ErrorException& e) {
        EXPECT_STREQ(e.what(), "Code 0x80004005: Unspecified error ((!name.empty()))");
    }
    EXPECT_FALSE(System::GetEnvironmentValue(L"A=B", value)) << "no such variable, no report";
    try {
        System::SetEnvironmentValue(L"A=B", L"x");
        FAIL() << "a name with '=' cannot be set";
    } catch (const ErrorHandling::ErrorException& e) {
        EXPECT_STREQ(e.what(), "Code 87: The parameter is incorrect. ((lerr))");
    }
    EXPECT_THROW(System::SetEnvironmentValue(L"", L"x"), ErrorHandling::ErrorException);
    EXPECT_FALSE(System::RemoveEnvironmentVariable(L""));
    EXPECT_EQ(System::GetEnvironmentString(L""), L"");
}

TEST_F(EnvironmentHelpers, ConcurrentReadersAndWritersStayConsistent) {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([t] {
            const std::wstring mine = kName + L"_" + std::to_wstring(t);
            for (int i = 0; i < 2000; ++i) {
                const std::wstring text = std::to_wstring(i);
                EXPECT_TRUE(System::SetEnvironmentValue(mine, text));
                EXPECT_EQ(System::GetEnvironmentString(mine), text);
                System::SetEnvironmentValue(kName, text);
                const std::wstring shared = System::GetEnvironmentString(kName);
                EXPECT_FALSE(shared.empty());
            }
            System::RemoveEnvironmentVariable(mine);
        });
    }
    for (auto& thread : threads) thread.join();
}

}  // namespace
