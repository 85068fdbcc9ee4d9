#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <utility>

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

// Concurrent use is shown through the system's environment helpers, which sit on these.
TEST(Environment, RejectsBadNames) {
    EXPECT_EQ(Platform::SetEnvironment("", "x"), 87u);
    EXPECT_EQ(Platform::SetEnvironment("A=B", "x"), 87u);
    EXPECT_FALSE(Platform::GetEnvironment("A=B").has_value());
    EXPECT_EQ(Platform::UnsetEnvironment("LUMETTA_NEVER_SET_VARIABLE"), 0u);
}

}  // namespace
