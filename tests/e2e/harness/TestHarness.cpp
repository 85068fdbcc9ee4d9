#include "TestHarness.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>

#include "platform/Environment.h"

extern char** environ;

namespace TestHarness {
namespace {

// True inside the namespace made by netns-run.
bool InPrivateNetwork() {
    return Platform::GetEnvironment("LUMETTA_IN_NETNS") == "1";
}

// Whether something accepts TCP connections at host:port.
bool Accepts(const std::string& host, int port) {
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return false;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    ::inet_pton(AF_INET, host.c_str(), &address.sin_addr);
    const bool ok = ::connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0;
    ::close(fd);
    return ok;
}

}  // namespace

ChildProcess::~ChildProcess() {
    Stop();
}

bool ChildProcess::Start(const std::vector<std::string>& argv,
                         const std::vector<std::string>& extraEnv, const std::string& outputFile) {
    std::vector<std::string> env;
    for (char** e = environ; e && *e; ++e) env.emplace_back(*e);
    for (const auto& entry : extraEnv) {
        const std::string name = entry.substr(0, entry.find('=') + 1);
        std::erase_if(env, [&](const std::string& e) { return e.rfind(name, 0) == 0; });
        env.push_back(entry);
    }
    std::vector<char*> args, envp;
    for (const auto& a : argv) args.push_back(const_cast<char*>(a.c_str()));
    args.push_back(nullptr);
    for (const auto& e : env) envp.push_back(const_cast<char*>(e.c_str()));
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    if (!outputFile.empty()) {
        posix_spawn_file_actions_addopen(&actions, 1, outputFile.c_str(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0644);
        posix_spawn_file_actions_adddup2(&actions, 1, 2);
    }
    const int error = ::posix_spawn(&pid, args[0], &actions, nullptr, args.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) pid = -1;
    return error == 0;
}

bool ChildProcess::Wait(int timeoutMs, int* status) {
    if (pid <= 0) return false;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    for (;;) {
        int raw = 0;
        const pid_t done = ::waitpid(pid, &raw, WNOHANG);
        if (done == pid) {
            pid = -1;
            if (status) *status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
            return true;
        }
        if (done < 0 || std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
}

bool ChildProcess::IsRunning() {
    if (pid <= 0) return false;
    int raw = 0;
    const pid_t done = ::waitpid(pid, &raw, WNOHANG);
    if (done == pid) pid = -1;
    return done == 0;
}

void ChildProcess::Stop() {
    if (pid <= 0) return;
    ::kill(pid, SIGTERM);
    if (!Wait(5000, nullptr)) {
        ::kill(pid, SIGKILL);
        Wait(60000, nullptr);
    }
}

HttpServers::HttpServers(const std::string& documentRoot) {
    if (!InPrivateNetwork()) {
        problem = "not inside a private network namespace (run the tests through netns-run)";
        return;
    }
    const std::string conf = work.File("nginx.conf");
    std::ostringstream text;
    // Inside the namespace we are root, mapped to the real user; nginx would hand its
    // folders to "nobody", who does not exist there.
    text << "daemon off;\nmaster_process off;\nworker_processes 1;\nuser root root;\n"
         << "pid " << work.File("nginx.pid") << ";\n"
         << "error_log " << work.File("nginx-error.log") << " warn;\n"
         << "events { worker_connections 256; }\n"
         << "http {\n  log_format requests '$request';\n"
         << "  access_log " << work.File("access.log") << " requests;\n"
         << "  default_type application/octet-stream;\n"
         << "  sendfile on;\n"
         << "  client_body_temp_path " << work.File("body") << ";\n"
         << "  proxy_temp_path " << work.File("proxy") << ";\n"
         << "  fastcgi_temp_path " << work.File("fastcgi") << ";\n"
         << "  uwsgi_temp_path " << work.File("uwsgi") << ";\n"
         << "  scgi_temp_path " << work.File("scgi") << ";\n"
         << "  server {\n    listen " << kFilesHost << ":80;\n    root " << documentRoot
         << ";\n  }\n}\n";
    WriteFile(conf, text.str());
    if (!nginx.Start(
            {LUMETTA_NGINX, "-e", work.File("nginx-error.log"), "-p", work.Path(), "-c", conf}, {},
            work.File("nginx.out"))) {
        problem = "nginx cannot be started";
        return;
    }
    const std::string readyFile = work.File("faults.ready");
    if (!faults.Start({LUMETTA_PYTHON, LUMETTA_FAULT_SERVER, kFaultsHost, "80", readyFile}, {},
                      work.File("faults.out"))) {
        problem = "the fault server cannot be started";
        return;
    }
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (std::chrono::steady_clock::now() < end) {
        if (Accepts(kFilesHost, 80) && Exists(readyFile) && Accepts(kFaultsHost, 80)) {
            ready = true;
            return;
        }
        if (!nginx.IsRunning() || !faults.IsRunning()) break;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    problem = "servers did not come up: " + ReadFile(work.File("nginx-error.log")) +
              ReadFile(work.File("nginx.out")) + ReadFile(work.File("faults.out"));
}

std::string HttpServers::FileRequests() const {
    return ReadFile(work.File("access.log"));
}

HttpServers::~HttpServers() {
    nginx.Stop();
    faults.Stop();
}

std::string Pattern(size_t size, int seed) {
    std::string out(size, '\0');
    for (size_t i = 0; i < size; ++i) out[i] = static_cast<char>((i * 7 + seed) % 251);
    return out;
}

bool Exists(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

bool WaitForText(const std::string& file, const std::string& text) {
    for (int i = 0; i < 3000; ++i) {
        if (ReadFile(file).find(text) != std::string::npos) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

DemoUpdate::DemoUpdate(const std::string& name)
    : product(name + " " + std::to_string(::getpid())), payload(LUMETTA_DEMO_PRODUCT) {
    exe = product;
    std::erase(exe, ' ');
    std::filesystem::copy_file(LUMETTA_DEMO_SETUP, www.File("setup.exe"));
}

bool DemoUpdate::StartOld(ChildProcess& process, const std::vector<std::string>& options) const {
    const std::string program = old.File(exe);
    if (!Exists(program)) std::filesystem::copy_file(LUMETTA_DEMO_PRODUCT, program);
    std::vector<std::string> argv{program, "--marker", work.File("old")};
    argv.insert(argv.end(), options.begin(), options.end());
    return process.Start(argv, Environment()) && WaitForText(work.File("old"), "started");
}

std::vector<std::string> DemoUpdate::Environment(const std::vector<std::string>& extra) const {
    std::vector<std::string> env{"TMPDIR=" + temp.Path(),
                                 "LUMETTA_REGISTRY_DIR=" + registry.Path(),
                                 "XDG_RUNTIME_DIR=" + work.Path(),
                                 "LUMETTA_SCREENSHOT=" + work.File("dialog.png"),
                                 "DEMO_SETUP_LOG=" + work.File("setup-args"),
                                 "DEMO_SETUP_PAYLOAD=" + payload,
                                 "DEMO_SETUP_TARGET=" + work.File("install"),
                                 "DEMO_SETUP_EXE=" + exe,
                                 "DEMO_SETUP_PRODUCT=" + product,
                                 "DEMO_PRODUCT_NAME=" + product,
                                 "DEMO_PRODUCT_MARKER=" + work.File("launched")};
    env.insert(env.end(), extra.begin(), extra.end());
    return env;
}

bool DemoUpdate::Start(ChildProcess& process, const std::string& program,
                       const std::vector<std::string>& args, const std::vector<std::string>& env,
                       const std::string& url, const std::string& outputName) const {
    std::vector<std::string> argv{program};
    argv.insert(argv.end(), args.begin(), args.end());
    argv.insert(argv.end(),
                {"/productName", product, "/productExecutable", exe, "/downloadURL", url});
    return process.Start(argv, Environment(env), work.File(outputName));
}

int DemoUpdate::Diag(const std::string& diag, const std::vector<std::string>& args,
                     const std::vector<std::string>& env, const std::string& url) const {
    std::vector<std::string> withCommand{"update"};
    withCommand.insert(withCommand.end(), args.begin(), args.end());
    ChildProcess process;
    int status = -1;
    const bool ran =
        Start(process, diag, withCommand, env, url, "diag.out") && process.Wait(120000, &status);
    return ran ? status : -1;
}

}  // namespace TestHarness
