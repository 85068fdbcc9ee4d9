#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TestHarness.h"
#include "engine/HttpDownloader.h"
#include "engine/Timeouts.h"
#include "engine/VerboseWritingConsumer.h"
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
    Engine::UpdateReport report;
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
            downloader.SetReport(&outcome.report);
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
    for (const char* header :
         {"\r\nHost: 127.0.0.2\r\n", "\r\nUser-Agent: Mozilla/4.0 (MSIE 6.0); dtaglim:128\r\n",
          "\r\nCache-Control: no-cache\r\n", "\r\nPragma: no-cache\r\n"})
        EXPECT_NE(request.find(header), std::string::npos) << header << request;
    EXPECT_EQ(request.find("Accept:"), std::string::npos);
}

// Every answer of the fault server: the status is not examined, sizes that are missing or 0
// are unknown, redirects are followed (only the final answer is announced and written), and
// a transfer that breaks fails and leaves what it received. The report tells how each
// transfer ended and which answers came (the redirects first).
TEST_F(HttpDownloaderTest, EachServerAnswerEndsAsTheCallerCanObserve) {
    using End = Engine::TransferEnd;
    constexpr uint32_t kAny = ~0u;
    struct Case {
        const wchar_t* url;
        bool ok;
        int starts;
        uint32_t total;  // kAny: not examined
        End end;
        std::vector<int> statuses;
        std::string content;  // the whole file, or its beginning when `prefixOnly`
        bool prefixOnly = false;
    };
    const std::vector<int> loop(11, 302);
    const std::string chunks = Pattern(1000, 0) + Pattern(1000, 1) + Pattern(1000, 2);
    const std::string notFound = "<html><body>Not Found</body></html>";
    const std::string echo = "GET /echo-redirected HTTP/1.1\r\n";
    const std::string small = Pattern(100000);
    const Case cases[] = {
        {L"http://127.0.0.2/nolength", true, 1, 0, End::Complete, {200}, Pattern(5000)},
        {L"http://127.0.0.2/zerolength", true, 1, 0, End::Complete, {200}, ""},
        {L"http://127.0.0.2/empty", true, 1, 0, End::Complete, {200}, ""},
        {L"http://127.0.0.2/chunked", true, 1, 0, End::Complete, {200}, chunks},
        {L"http://127.0.0.2/missing", true, 1, kAny, End::Complete, {404}, notFound},
        {L"http://127.0.0.2/redirect?small.bin", true, 1, 100000, End::Complete, {302, 200}, small},
        {L"http://127.0.0.2/relative", true, 1, kAny, End::Complete, {301, 200}, echo, true},
        {L"http://127.0.0.2/loop", false, 0, kAny, End::TooManyRedirects, loop, ""},
        {L"http://127.0.0.2/tohttps", false, 0, kAny, End::Refused, {302}, ""},  // nothing on 443
        {L"http://127.0.0.2/cut", false, 1, 100000, End::Cut, {200}, Pattern(30000)},
        {L"http://127.0.0.3/small.bin", false, 0, kAny, End::Refused, {}, ""},
        {L"http:///nohost", false, 0, kAny, End::BadAddress, {}, ""},
        {L"http://updates.invalid/small.bin", false, 0, kAny, End::NameNotResolved, {}, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(STLHelpers::WideToUtf8(c.url));
        const Outcome outcome = Fetch(c.url);
        EXPECT_EQ(outcome.ok, c.ok);
        EXPECT_EQ(outcome.recorder.starts, c.starts);
        if (c.total != kAny) {
            EXPECT_EQ(outcome.recorder.startTotal, c.total);
        }
        if (c.content.empty()) {
            EXPECT_EQ(outcome.recorder.blocks, 0);
        }
        EXPECT_EQ(c.prefixOnly ? outcome.content.substr(0, c.content.size()) : outcome.content,
                  c.content);
        EXPECT_EQ(outcome.recorder.finishes, 1);
        EXPECT_EQ(outcome.recorder.finishedOk, c.ok);
        EXPECT_FALSE(outcome.writerOpen) << "the file is closed, complete or not";
        EXPECT_EQ(outcome.report.transfer, c.end);
        std::vector<int> statuses;
        for (const auto& response : outcome.report.responses) statuses.push_back(response.status);
        EXPECT_EQ(statuses, c.statuses);
        EXPECT_EQ(outcome.report.bytesReceived, outcome.content.size());
    }
}

TEST_F(HttpDownloaderTest, ASilentServerFailsTheDownloadAfterTheReceiveTimeout) {
    Engine::Testing::SetTimeouts(0, 1500, 0);
    const auto start = std::chrono::steady_clock::now();
    Outcome stalled = Fetch(L"http://127.0.0.2/stall");
    EXPECT_FALSE(stalled.ok);
    EXPECT_EQ(stalled.content, Pattern(10000));
    EXPECT_EQ(stalled.report.transfer, Engine::TransferEnd::ReceiveTimeout);
    EXPECT_EQ(stalled.report.timeoutMs, 1500u);

    Outcome silent = Fetch(L"http://127.0.0.2/silent");
    EXPECT_FALSE(silent.ok);
    EXPECT_EQ(silent.recorder.starts, 0);
    EXPECT_EQ(silent.report.transfer, Engine::TransferEnd::ReceiveTimeout);
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
    EXPECT_EQ(stalled.report.transfer, Engine::TransferEnd::Cancelled);
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
