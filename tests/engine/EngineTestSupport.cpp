#include "EngineTestSupport.h"

#include <sys/stat.h>

#include "engine/Timeouts.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"

namespace EngineTests {

std::unique_ptr<TestHarness::TempFolder> EngineTest::root;
std::unique_ptr<TestHarness::HttpServers> EngineTest::servers;

void EngineTest::SetUpTestSuite() {
    root = std::make_unique<TestHarness::TempFolder>();
    // Setup programs as scripts: one records its arguments, one never ends, one works for
    // a second and then leaves a mark.
    TestHarness::WriteFile(
        root->File("setup-ok.sh"),
        "#!/bin/sh\nfor a in \"$@\"; do echo \"$a\"; done > \"$ENGINE_TEST_ARGS\"\nexit 3\n");
    TestHarness::WriteFile(root->File("setup-hang.sh"),
                           "#!/bin/sh\necho $$ > \"$ENGINE_TEST_ARGS\"\nexec sleep 600\n");
    TestHarness::WriteFile(root->File("setup-slow.sh"),
                           "#!/bin/sh\necho $$ > \"$ENGINE_TEST_ARGS\"\nsleep 1\n"
                           "echo done > \"$ENGINE_TEST_ARGS.done\"\n");
    ::chmod(root->Path().c_str(), 0755);
    servers = std::make_unique<TestHarness::HttpServers>(root->Path());
}

void EngineTest::TearDownTestSuite() {
    servers.reset();
    root.reset();
}

void EngineTest::SetUp() {
    ASSERT_TRUE(servers->Ready()) << servers->Problem();
    argumentsFile = folder.File("arguments");
    Platform::SetEnvironment("ENGINE_TEST_ARGS", argumentsFile);
    Platform::SetEnvironment("TMPDIR", folder.Path());
}

void EngineTest::TearDown() {
    Engine::Testing::RestoreDefaultTimeouts();
    Platform::UnsetEnvironment("TMPDIR");
}

Engine::ProductSettings EngineTest::Settings(const std::wstring& url, bool silent) {
    Engine::ProductSettings settings;
    settings.downloadURL = url;
    settings.silent = silent;
    return settings;
}

std::wstring EngineTest::SetupPath() const {
    return STLHelpers::Utf8ToWide(folder.File("Update1.exe"));
}

std::vector<std::string> EngineTest::SetupArguments() const {
    return TestHarness::Lines(TestHarness::ReadFile(argumentsFile));
}

bool EngineTest::RunToEnd(Engine::UpdateEngine& engine, Observer& observer) {
    return engine.AddListener(&observer) && engine.Start() && observer.WaitFor(Engine::Finished);
}

}  // namespace EngineTests
