#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <thread>

#include "EngineTestSupport.h"
#include "foundation/TextConversion.h"

namespace EngineTests {
namespace {

using TestHarness::ChildProcess;
using TestHarness::WaitForText;

class ProductTest : public EngineTest {
protected:
    void SetUp() override {
        EngineTest::SetUp();
        // A name of its own per test process, so parallel runs do not meet.
        productName = "Engine Test " + std::to_string(::getpid());
        exeName = "DemoProd" + std::to_string(::getpid());
        installFolder = folder.File("install");
        std::filesystem::create_directory(installFolder);
        std::filesystem::copy_file(LUMETTA_DEMO_PRODUCT, installFolder + "/" + exeName);
        settings = Settings(L"http://127.0.0.1/setup-ok.sh");
        settings.productExecutable = STLHelpers::Utf8ToWide(exeName);
        settings.exitEventName = STLHelpers::Utf8ToWide(productName + "_ExitEvent");
        settings.installPath = [this] { return STLHelpers::Utf8ToWide(installFolder); };
    }

    bool StartProduct(ChildProcess& process, const std::string& marker, bool ignoreExit) {
        std::vector<std::string> argv{installFolder + "/" + exeName, "--name", productName,
                                      "--marker", marker};
        if (ignoreExit) argv.push_back("--ignore-exit-event");
        return process.Start(argv) && WaitForText(marker, "started");
    }

    std::string productName, exeName, installFolder;
    Engine::ProductSettings settings;
};

TEST_F(ProductTest, AProductIsAskedToExitAndEndedWhenItDoesNot) {
    Engine::UpdateEngine engine(settings, SetupPath());
    EXPECT_EQ(engine.FindProductProcessId(), 0u);
    EXPECT_FALSE(engine.IsProductRunning());
    EXPECT_FALSE(engine.CloseRunningProduct(100)) << "nothing to open, nothing to end";

    ChildProcess polite, stubborn;
    const std::string politeMarker = folder.File("polite"),
                      stubbornMarker = folder.File("stubborn");
    ASSERT_TRUE(StartProduct(polite, politeMarker, false));
    // The call that found nothing left no signal behind for a product started after it.
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    ASSERT_TRUE(polite.IsRunning()) << "a stale exit signal ended the next start";
    ASSERT_TRUE(StartProduct(stubborn, stubbornMarker, true));
    const pid_t first = std::min(polite.Pid(), stubborn.Pid());
    EXPECT_EQ(engine.FindProductProcessId(), static_cast<uint32_t>(first));

    // Only the first in process order is asked; ours is started first, so it is the polite one
    // unless identifiers wrapped around.
    if (first == polite.Pid()) {
        EXPECT_TRUE(engine.CloseRunningProduct(10000));
        int status = -1;
        ASSERT_TRUE(polite.Wait(10000, &status));
        EXPECT_EQ(status, 0) << "it exited by itself, not killed";
        EXPECT_TRUE(WaitForText(politeMarker, "exit event"));
        EXPECT_TRUE(stubborn.IsRunning()) << "the second copy is left alone";
    } else {
        polite.Stop();
    }

    EXPECT_EQ(engine.FindProductProcessId(), static_cast<uint32_t>(stubborn.Pid()));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(engine.CloseRunningProduct(500)) << "ended after its time";
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(450));
    int status = -1;
    ASSERT_TRUE(stubborn.Wait(10000, &status));
    EXPECT_EQ(status, 128 + SIGKILL);
    EXPECT_TRUE(WaitForText(stubbornMarker, "exit event")) << "it was asked first";
    EXPECT_FALSE(engine.IsProductRunning());

    // The signal nobody took is gone with the product: a new start keeps running.
    ChildProcess next;
    const std::string nextMarker = folder.File("next");
    ASSERT_TRUE(StartProduct(next, nextMarker, false));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_TRUE(next.IsRunning());
    EXPECT_TRUE(engine.CloseRunningProduct(10000));
    EXPECT_TRUE(next.Wait(10000, nullptr));
}

// A successful launch from the recorded install folder is shown by the end-to-end tests.
TEST_F(ProductTest, WithoutInstallFolderOrProductNothingIsLaunched) {
    Engine::ProductSettings missing = settings;
    missing.installPath = [] { return std::wstring(); };
    missing.productExecutable = L"no-such-product-anywhere";
    Engine::UpdateEngine nowhere(missing, SetupPath());
    EXPECT_FALSE(nowhere.LaunchProduct(false));
}

}  // namespace
}  // namespace EngineTests
