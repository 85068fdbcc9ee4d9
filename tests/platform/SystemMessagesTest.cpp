#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/Environment.h"
#include "platform/SystemMessages.h"

namespace {

TEST(SystemMessages, UnknownNumbersHaveNoTextAndErrnoMapsToTheNearestWin32Error) {
    EXPECT_STREQ(Platform::SystemMessageText(0x80004005u), "Unspecified error\r\n");
    for (uint32_t n : {0u, 7u, 0xFFFFFFFFu}) EXPECT_EQ(Platform::SystemMessageText(n), nullptr);
    const std::pair<int, uint32_t> mapped[] = {
        {0, 0}, {ENOENT, 2}, {EACCES, 5}, {EPERM, 5}, {EINVAL, 87}, {EEXIST, 183}, {EHOSTDOWN, 31}};
    for (const auto& [error, win32] : mapped)
        EXPECT_EQ(Platform::Win32ErrorFromErrno(error), win32) << error;
    errno = ENOTDIR;
    EXPECT_EQ(Platform::LastWin32Error(), 3u);
}

TEST(Environment, RejectsBadNamesAndSurvivesConcurrentWriters) {
    EXPECT_EQ(Platform::SetEnvironment("", "x"), 87u);
    EXPECT_EQ(Platform::SetEnvironment("A=B", "x"), 87u);
    EXPECT_FALSE(Platform::GetEnvironment("A=B").has_value());
    EXPECT_EQ(Platform::UnsetEnvironment("LUMETTA_NEVER_SET_VARIABLE"), 0u);

    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            const std::string name = "LUMETTA_ENV_TEST_" + std::to_string(t);
            for (int i = 0; i < 2000; ++i) {
                const std::string value(static_cast<size_t>(i % 50), static_cast<char>('a' + t));
                ASSERT_EQ(Platform::SetEnvironment(name, value), 0u);
                ASSERT_EQ(Platform::GetEnvironment(name).value_or("?"), value);
            }
            EXPECT_EQ(Platform::UnsetEnvironment(name), 0u);
            EXPECT_FALSE(Platform::GetEnvironment(name).has_value());
        });
    for (auto& t : threads) t.join();
}

}  // namespace
