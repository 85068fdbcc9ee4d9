#include <gtest/gtest.h>

#include "engine/internal/UrlParts.h"

namespace {

using Engine::internal::CrackUrl;
using Engine::internal::RequestUrl;
using Engine::internal::UrlParts;

TEST(UrlParts, TakesHostPathAndExtraOnly) {
    UrlParts parts;
    ASSERT_TRUE(
        CrackUrl(L"https://user:pw@downloads.example.com:8443/a/b/setup.exe?x=1&y=2#f", &parts));
    EXPECT_EQ(parts.scheme, L"https");
    EXPECT_EQ(parts.host, L"downloads.example.com");
    EXPECT_EQ(parts.path, L"/a/b/setup.exe");
    EXPECT_EQ(parts.extra, L"?x=1&y=2#f");
    // Scheme, credentials and port go: plain HTTP on port 80.
    EXPECT_EQ(RequestUrl(parts), "http://downloads.example.com:80/a/b/setup.exe?x=1&y=2#f");

    ASSERT_TRUE(CrackUrl(L"http://host", &parts));
    EXPECT_EQ(parts.path, L"");
    EXPECT_EQ(RequestUrl(parts), "http://host:80/");
    ASSERT_TRUE(CrackUrl(L"http://host?q", &parts));
    EXPECT_EQ(RequestUrl(parts), "http://host:80/?q");
    ASSERT_TRUE(CrackUrl(L"http://[::1]:8080/x", &parts));
    EXPECT_EQ(parts.host, L"[::1]");

    // What cannot travel as it is gets encoded.
    ASSERT_TRUE(CrackUrl(L"http://h/my setup\u00e9.exe?a b", &parts));
    EXPECT_EQ(RequestUrl(parts), "http://h:80/my%20setup%C3%A9.exe?a%20b");

    // Refused as the platform's cracker refuses them.
    EXPECT_FALSE(CrackUrl(L"host/path", &parts)) << "no scheme separator";
    EXPECT_FALSE(CrackUrl(L"http:///path", &parts)) << "no host";
    EXPECT_FALSE(CrackUrl(L"http://[::1/path", &parts));
    EXPECT_FALSE(CrackUrl(L"http://" + std::wstring(257, L'h') + L"/", &parts));
    EXPECT_TRUE(CrackUrl(L"http://" + std::wstring(256, L'h') + L"/", &parts));
    EXPECT_FALSE(CrackUrl(L"http://h/" + std::wstring(2048, L'p'), &parts));
    EXPECT_FALSE(CrackUrl(L"http://h/?" + std::wstring(2048, L'q'), &parts));
}

}  // namespace
