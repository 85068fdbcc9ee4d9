#include "platform/ElfResourceSection.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/ResourceImage.h"
#include "platform/Spawn.h"
#include "platform/internal/FileDescriptor.h"

namespace Platform {
namespace {

constexpr unsigned char kElfMagic[] = {0x7F, 'E', 'L', 'F'};
constexpr uint16_t kElfExecutable = 2;  // ET_EXEC
constexpr uint16_t kElfShared = 3;      // ET_DYN: shared libraries and PIE executables

// A file that is removed when the holder goes, unless it was kept.
class TemporaryFile {
public:
    // Creates "<folder>/.<name>.<purpose>-XXXXXX"; Path() is empty when that failed.
    TemporaryFile(const std::string& folder, const std::string& name, const char* purpose) {
        std::string pattern = folder + "/." + name + "." + purpose + "-XXXXXX";
        const int fd = ::mkostemp(pattern.data(), O_CLOEXEC);
        if (fd < 0) return;
        descriptor = fd;
        path = pattern;
    }
    ~TemporaryFile() {
        if (descriptor >= 0) ::close(descriptor);
        if (!path.empty()) ::unlink(path.c_str());
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const std::string& Path() const { return path; }
    bool Write(std::span<const uint8_t> bytes) {
        for (std::size_t done = 0; done < bytes.size();) {
            const ssize_t n = ::write(descriptor, bytes.data() + done, bytes.size() - done);
            if (n < 0 && errno == EINTR) continue;
            if (n <= 0) return false;
            done += static_cast<std::size_t>(n);
        }
        return ::close(std::exchange(descriptor, -1)) == 0;
    }
    void Keep() { path.clear(); }

private:
    int descriptor = -1;
    std::string path;
};

std::string Quoted(const std::string& path) {
    return "\"" + path + "\"";
}

// The ELF type (ET_xxx) from the file's header, 0 when it is no ELF file.
uint16_t ElfType(int fd) {
    unsigned char header[18] = {};
    if (::pread(fd, header, sizeof header, 0) != static_cast<ssize_t>(sizeof header) ||
        std::memcmp(header, kElfMagic, sizeof kElfMagic) != 0)
        return 0;
    const bool bigEndian = header[5] == 2;
    return bigEndian ? static_cast<uint16_t>(header[16] << 8 | header[17])
                     : static_cast<uint16_t>(header[17] << 8 | header[16]);
}

bool SameResources(const ResourceImage& a, const ResourceImage& b) {
    if (a.Entries().size() != b.Entries().size()) return false;
    for (std::size_t i = 0; i < a.Entries().size(); ++i) {
        const auto x = a.Data(a.Entries()[i]), y = b.Data(b.Entries()[i]);
        if (!std::equal(x.begin(), x.end(), y.begin(), y.end())) return false;
    }
    return true;
}

}  // namespace

std::string ReplaceElfResourceSection(const std::string& path, std::span<const uint8_t> image) {
    const internal::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    struct stat st {};
    if (file.Get() < 0 || ::fstat(file.Get(), &st) != 0)
        return Quoted(path) + " cannot be read: " + std::strerror(errno) + ".";
    if (!S_ISREG(st.st_mode)) return Quoted(path) + " is not a regular file.";
    const uint16_t type = ElfType(file.Get());
    if (type != kElfExecutable && type != kElfShared)
        return Quoted(path) + " is not an ELF executable or shared library.";
    if ((st.st_mode & 0222) == 0 || ::access(path.c_str(), W_OK) != 0)
        return Quoted(path) + " is read-only.";

    // The new copy is made in the same folder, so that the rename replaces the file at once.
    // A link is followed: its target is the file to change.
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (resolved == nullptr)
        return Quoted(path) + " cannot be resolved: " + std::strerror(errno) + ".";
    const std::string target = resolved;
    ::free(resolved);
    const std::size_t slash = target.rfind('/');
    const std::string folder = slash == 0 ? "/" : target.substr(0, slash);
    const std::string name = target.substr(slash + 1);

    TemporaryFile section(folder, name, "rsrc");
    TemporaryFile copy(folder, name, "new");
    if (section.Path().empty() || copy.Path().empty() || !section.Write(image))
        return "No temporary file can be written beside " + Quoted(path) + ": " +
               std::strerror(errno) + ".";

    const std::string objcopy = ResolveExecutable("objcopy");
    if (objcopy.empty()) return "objcopy was not found; it comes with binutils.";
    ProcessHandle process;
    const uint32_t spawnError =
        SpawnProcess({objcopy,
                      {objcopy, "--remove-section=.rsrc", "--add-section=.rsrc=" + section.Path(),
                       "--set-section-flags=.rsrc=contents,readonly", target, copy.Path()},
                      {}},
                     process);
    if (spawnError != 0)
        return "objcopy could not be started (error " + std::to_string(spawnError) + ").";
    if (process.Wait(-1) != ProcessHandle::WaitResult::Ended || process.ExitStatus() != 0)
        return "objcopy could not rewrite " + Quoted(path) + "; it was left unchanged.";

    // The copy must carry exactly the new resources before it may replace the file.
    ResourceImage expected, check;
    if (expected.LoadBytes(image) != 0 || check.LoadFile(copy.Path()) != 0 ||
        check.GetFormat() != ResourceImage::Format::Elf || !SameResources(expected, check))
        return "The rewritten copy of " + Quoted(path) +
               " did not read back; the file was left unchanged.";

    ::chmod(copy.Path().c_str(), st.st_mode & 07777);
    if (::rename(copy.Path().c_str(), target.c_str()) != 0)
        return Quoted(path) + " cannot be replaced: " + std::strerror(errno) + ".";
    copy.Keep();
    return {};
}

}  // namespace Platform
