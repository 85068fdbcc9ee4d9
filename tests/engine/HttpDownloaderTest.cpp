#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>

#include "TestHarness.h"
#include "engine/HttpDownloader.h"
#include "engine/Timeouts.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"

namespace {

using TestHarness::HttpServers;
using TestHarness::Pattern;
using TestHarness::ReadFile;
using TestHarness::TempFolder;

struct Recorder : Engine::IVerboseWritingConsumerCallback {
    bool OnStart(uint32_t total) override {
        ++starts;
        startTotal = total;
        return true;
    }
    bool OnWritten(uint32_t written) override {
        EXPECT_GT(written, lastWritten) << "each block adds bytes";
        ++blocks;
        lastWritten = written;
        return true;
    }
    void OnFinish(bool success) override {
        ++finishes;
        finishedOk = success;
    }
    int starts = 0, blocks = 0, finishes = 0;
    uint32_t startTotal = 12345, lastWritten = 0;
    bool finishedOk = false;
};

struct Outcome {
    bool ok = false;
    bool writerOpen = false;
    Recorder recorder;
    std::string content;
};

class HttpDownloaderTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        root = std::make_unique<TempFolder>();
        TestHarness::WriteFile(root->File("small.bin"), Pattern(100000));
        TestHarness::WriteFile(root->File("big.bin"), Pattern(3 * 1024 * 1024 + 17, 3));
        servers = std::make_unique<HttpServers>(root->Path());
    }
    static void TearDownTestSuite() {
        servers.reset();
        root.reset();
    }
    void SetUp() override { ASSERT_TRUE(servers->Ready()) << servers->Problem(); }
    void TearDown() override {
        Engine::Testing::RestoreDefaultTimeouts();
        Platform::UnsetEnvironment("http_proxy");
        Platform::UnsetEnvironment("no_proxy");
    }

    Outcome Fetch(const std::wstring& url, const std::atomic<bool>* stop = nullptr) {
        Outcome outcome;
        const std::string path = folder.File("Update1.exe");
        {
            Engine::VerboseWritingConsumer writer(STLHelpers::Utf8ToWide(path), &outcome.recorder);
            Engine::HttpDownloader downloader(url, &writer);
            downloader.SetStopFlag(stop);
            outcome.ok = downloader.Download();
            outcome.writerOpen = writer.IsOpen();
        }
        outcome.content = ReadFile(path);
        return outcome;
    }

    static std::unique_ptr<TempFolder> root;
    static std::unique_ptr<HttpServers> servers;
    TempFolder folder;
};

std::unique_ptr<TempFolder> HttpDownloaderTest::root;
std::unique_ptr<HttpServers> HttpDownloaderTest::servers;

TEST_F(HttpDownloaderTest, DownloadsAFileCompletelyWithItsSize) {
    Outcome big = Fetch(L"http://127.0.0.1/big.bin");
    ASSERT_TRUE(big.ok);
    EXPECT_EQ(big.recorder.startTotal, 3u * 1024 * 1024 + 17);
    EXPECT_EQ(big.recorder.lastWritten, 3u * 1024 * 1024 + 17);
    EXPECT_GT(big.recorder.blocks, 1) << "progress once per received block";
    EXPECT_EQ(big.recorder.finishes, 1);
    EXPECT_TRUE(big.recorder.finishedOk);
    EXPECT_TRUE(big.content == Pattern(3 * 1024 * 1024 + 17, 3));

    // Without "://" the URL is taken as HTTP; scheme and port written in it are ignored.
    EXPECT_EQ(Fetch(L"127.0.0.1/small.bin").content, Pattern(100000));
    EXPECT_EQ(Fetch(L"https://127.0.0.1:8443/small.bin").content, Pattern(100000));
}

TEST_F(HttpDownloaderTest, SendsOnePlainGetWithTheAgentAndNoCache) {
    Outcome echo = Fetch(L"http://127.0.0.2/echo/setup.exe?product=x&v=2");
    ASSERT_TRUE(echo.ok);
    const std::string& request = echo.content;
    EXPECT_EQ(request.rfind("GET /echo/setup.exe?product=x&v=2 HTTP/1.1\r\n", 0), 0u) << request;
    EXPECT_NE(request.find("\r\nHost: 127.0.0.2\r\n"), std::string::npos) << request;
    EXPECT_NE(request.find("\r\nUser-Agent: Mozilla/4.0 (MSIE 6.0); dtaglim:128\r\n"),
              std::string::npos);
    EXPECT_NE(request.find("\r\nCache-Control: no-cache\r\n"), std::string::npos);
    EXPECT_NE(request.find("\r\nPragma: no-cache\r\n"), std::string::npos);
    EXPECT_EQ(request.find("Accept:"), std::string::npos);
}

TEST_F(HttpDownloaderTest, UnknownSizesStillDownloadToTheEnd) {
    Outcome noLength = Fetch(L"http://127.0.0.2/nolength");
    EXPECT_TRUE(noLength.ok);
    EXPECT_EQ(noLength.recorder.startTotal, 0u) << "unknown size";
    EXPECT_EQ(noLength.content, Pattern(5000));

    Outcome zero = Fetch(L"http://127.0.0.2/zerolength");
    EXPECT_TRUE(zero.ok);
    EXPECT_EQ(zero.recorder.startTotal, 0u);
    EXPECT_EQ(zero.recorder.blocks, 0);
    EXPECT_EQ(zero.content, "");
    EXPECT_TRUE(zero.recorder.finishedOk);

    Outcome empty = Fetch(L"http://127.0.0.2/empty");
    EXPECT_TRUE(empty.ok);
    EXPECT_EQ(empty.recorder.starts, 1);
    EXPECT_EQ(empty.content, "");

    Outcome chunked = Fetch(L"http://127.0.0.2/chunked");
    EXPECT_TRUE(chunked.ok);
    EXPECT_EQ(chunked.recorder.startTotal, 0u);
    EXPECT_EQ(chunked.content, Pattern(1000, 0) + Pattern(1000, 1) + Pattern(1000, 2));
}

TEST_F(HttpDownloaderTest, TheStatusIsNotExaminedAndRedirectsAreFollowed) {
    Outcome missing = Fetch(L"http://127.0.0.2/missing");
    EXPECT_TRUE(missing.ok) << "an error page is a body like any other";
    EXPECT_EQ(missing.content, "<html><body>Not Found</body></html>");

    Outcome redirected = Fetch(L"http://127.0.0.2/redirect?small.bin");
    EXPECT_TRUE(redirected.ok);
    EXPECT_EQ(redirected.recorder.starts, 1) << "only the final answer is announced";
    EXPECT_EQ(redirected.content, Pattern(100000)) << "the redirect's own body is skipped";

    Outcome relative = Fetch(L"http://127.0.0.2/relative");
    EXPECT_TRUE(relative.ok);
    EXPECT_EQ(relative.content.rfind("GET /echo-redirected HTTP/1.1\r\n", 0), 0u);

    Outcome loop = Fetch(L"http://127.0.0.2/loop");
    EXPECT_FALSE(loop.ok) << "too many redirects";
    EXPECT_EQ(loop.recorder.starts, 0);
    EXPECT_EQ(loop.recorder.finishes, 1);
    EXPECT_FALSE(loop.recorder.finishedOk);

    EXPECT_FALSE(Fetch(L"http://127.0.0.2/tohttps").ok) << "nothing answers on 443";
}

TEST_F(HttpDownloaderTest, BrokenTransfersFailAndLeaveThePartialFile) {
    Outcome cut = Fetch(L"http://127.0.0.2/cut");
    EXPECT_FALSE(cut.ok);
    EXPECT_EQ(cut.recorder.startTotal, 100000u);
    EXPECT_EQ(cut.content, Pattern(30000));
    EXPECT_EQ(cut.recorder.finishes, 1);
    EXPECT_FALSE(cut.recorder.finishedOk);
    EXPECT_FALSE(cut.writerOpen);

    Outcome refused = Fetch(L"http://127.0.0.3/small.bin");
    EXPECT_FALSE(refused.ok);
    EXPECT_EQ(refused.recorder.starts, 0);
    EXPECT_EQ(refused.recorder.finishes, 1);
    EXPECT_FALSE(refused.writerOpen);

    // A URL without a host cannot be connected to: the file is closed as incomplete.
    Outcome unusable = Fetch(L"http:///nohost");
    EXPECT_FALSE(unusable.ok);
    EXPECT_EQ(unusable.recorder.starts, 0);
    EXPECT_EQ(unusable.recorder.finishes, 1);
    EXPECT_FALSE(unusable.recorder.finishedOk);
    EXPECT_FALSE(unusable.writerOpen);
}

TEST_F(HttpDownloaderTest, ASilentServerFailsTheDownloadAfterTheReceiveTimeout) {
    Engine::Testing::SetTimeouts(0, 1500, 0);
    const auto start = std::chrono::steady_clock::now();
    Outcome stalled = Fetch(L"http://127.0.0.2/stall");
    EXPECT_FALSE(stalled.ok);
    EXPECT_EQ(stalled.content, Pattern(10000));

    Outcome silent = Fetch(L"http://127.0.0.2/silent");
    EXPECT_FALSE(silent.ok);
    EXPECT_EQ(silent.recorder.starts, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(60));
}

TEST_F(HttpDownloaderTest, AStopRequestEndsAWaitingTransfer) {
    std::atomic<bool> stop{false};
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        stop = true;
    });
    const auto start = std::chrono::steady_clock::now();
    Outcome stalled = Fetch(L"http://127.0.0.2/stall", &stop);
    stopper.join();
    EXPECT_FALSE(stalled.ok);
    // Far below the 30 s receive limit still in force.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(HttpDownloaderTest, UsesTheProxyNamedInTheEnvironment) {
    Platform::SetEnvironment("http_proxy", "http://127.0.0.2:80");
    Outcome proxied = Fetch(L"http://updates.invalid/echo/setup.exe?q=1");
    ASSERT_TRUE(proxied.ok);
    EXPECT_EQ(proxied.content.rfind("GET http://updates.invalid/echo/setup.exe?q=1 HTTP/1.1", 0),
              0u)
        << proxied.content;

    Platform::SetEnvironment("no_proxy", "127.0.0.1");
    EXPECT_EQ(Fetch(L"http://127.0.0.1/small.bin").content, Pattern(100000))
        << "hosts in no_proxy are fetched directly";
}

}  // namespace
