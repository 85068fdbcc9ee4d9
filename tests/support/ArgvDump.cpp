// Records how it was started, for the process tests: line 1 the working folder, then one
// line "arg <length> <text>" per argument, then "fd <n>" for every open descriptor above 2,
// then "delayed <length> <first line>" when the log's delayed-data variable is set.
// The file is written to "<LUMETTA_HELPER_OUT>.tmp" and renamed, so a reader never sees it
// half-written.
#include <dirent.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

int main(int argc, char** argv) {
    if (const char* out = std::getenv("LUMETTA_HELPER_OUT"); out != nullptr && *out != '\0') {
        const std::string temporary = std::string(out) + ".tmp";
        FILE* file = std::fopen(temporary.c_str(), "w");
        if (file == nullptr) return 90;
        char cwd[4096] = {};
        if (::getcwd(cwd, sizeof cwd) == nullptr) cwd[0] = '\0';
        std::fprintf(file, "%s\n", cwd);
        for (int i = 0; i < argc; ++i)
            std::fprintf(file, "arg %zu %s\n", std::string(argv[i]).size(), argv[i]);
        // Listed before fopen's own descriptor would be: the directory stream is the only
        // descriptor this program opens besides the output file.
        const int own = ::fileno(file);
        if (DIR* fds = ::opendir("/proc/self/fd")) {
            const int listing = ::dirfd(fds);
            while (const dirent* entry = ::readdir(fds)) {
                const int fd = std::atoi(entry->d_name);
                if (entry->d_name[0] != '.' && fd > 2 && fd != own && fd != listing)
                    std::fprintf(file, "fd %d\n", fd);
            }
            ::closedir(fds);
        }
        if (const char* delayed = std::getenv("Debugging_Log_DelayedData")) {
            const std::string value = delayed;
            std::fprintf(file, "delayed %zu %s\n", value.size(),
                         value.substr(0, value.find('\n')).c_str());
        }
        std::fclose(file);
        std::rename(temporary.c_str(), out);
    }
    if (const char* sleep = std::getenv("LUMETTA_HELPER_SLEEP_MS"))
        std::this_thread::sleep_for(std::chrono::milliseconds(std::atol(sleep)));
    if (const char* code = std::getenv("LUMETTA_HELPER_EXIT")) return std::atoi(code);
    return 0;
}
