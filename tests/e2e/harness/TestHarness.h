// Fixtures shared by the engine and end-to-end tests: temporary folders, child processes,
// and the two HTTP servers on loopback port 80 (nginx for ordinary files on 127.0.0.1,
// the scriptable fault server on 127.0.0.2). The servers need the private network
// namespace that netns-run provides.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/TestFiles.h"

namespace TestHarness {

using TestSupport::ReadFile;
using TestSupport::WriteFile;

// A fresh folder under the temporary folder, removed with everything in it at the end;
// named by narrow strings, as the programs started here take them.
class TempFolder {
public:
    const std::string& Path() const { return path; }
    std::string File(const std::string& name) const { return path + "/" + name; }

private:
    TestSupport::TempFolder folder;
    std::string path = folder.Path().string();
};

// A program started with its argument vector; ended (SIGTERM, then SIGKILL after 5 s) and
// reaped by the destructor unless it has been waited for.
class ChildProcess {
public:
    ChildProcess() = default;
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    // Starts the program; environment entries "NAME=VALUE" are added to the current ones.
    // stdout and stderr go to `outputFile` when one is given.
    bool Start(const std::vector<std::string>& argv, const std::vector<std::string>& extraEnv = {},
               const std::string& outputFile = {});
    // Waits up to timeoutMs; true with the exit status (128 + signal for a signal).
    bool Wait(int timeoutMs, int* status);
    bool IsRunning();
    void Stop();
    pid_t Pid() const { return pid; }

private:
    pid_t pid = -1;
};

class HttpServers {
public:
    static constexpr const char* kFilesHost = "127.0.0.1";
    static constexpr const char* kFaultsHost = "127.0.0.2";

    // Serves documentRoot with nginx and starts the fault server; Ready() tells whether
    // both accept connections (waiting up to 20 s).
    explicit HttpServers(const std::string& documentRoot);
    ~HttpServers();
    bool Ready() const { return ready; }
    // The request lines nginx has answered so far ("GET /setup.exe HTTP/1.1"), one a line.
    std::string FileRequests() const;
    const std::string& Problem() const { return problem; }

private:
    TempFolder work;
    ChildProcess nginx;
    ChildProcess faults;
    bool ready = false;
    std::string problem;
};

// Deterministic content: byte i is (i * 7 + seed) % 251, as the fault server makes it.
std::string Pattern(size_t size, int seed = 0);

bool Exists(const std::string& path);  // also a dangling link

// The lines of `text`, without their line feeds.
std::vector<std::string> Lines(const std::string& text);

// Waits (up to 30 s) until `file` contains `text`.
bool WaitForText(const std::string& file, const std::string& text);

// One whole update of the demo product by the demo setup in www/setup.exe (for the caller
// to serve): the setup installs `payload` as work/install/<exe>, logs its arguments to
// work/setup-args and records the product in the test registry; the product it installs
// marks work/launched.
struct DemoUpdate {
    // The product is "<name> <pid>", its file "<name without blanks><pid>".
    explicit DemoUpdate(const std::string& name);

    std::vector<std::string> Environment(const std::vector<std::string>& extra = {}) const;
    // The old demo product, running from old/<exe> and marking work/old.
    bool StartOld(ChildProcess& process, const std::vector<std::string>& options = {}) const;
    // Starts `program` with `args`, the product's options and the environment, output to
    // work/<outputName>; an updater gets its runtime folder and the screenshot work/dialog.png.
    bool Start(ChildProcess& process, const std::string& program,
               const std::vector<std::string>& args, const std::vector<std::string>& env = {},
               const std::string& url = "127.0.0.1/setup.exe",
               const std::string& outputName = "updater.out") const;
    // Runs `lumetta-diag update` to its end (120 s at most), output to work/diag.out: its exit
    // status, or -1.
    int Diag(const std::string& diag, const std::vector<std::string>& args,
             const std::vector<std::string>& env = {},
             const std::string& url = "127.0.0.1/setup.exe") const;

    TempFolder www, old, temp, registry, work;
    std::string product, exe, payload;
};

}  // namespace TestHarness
