#include "engine/FileDigest.h"

#include <fcntl.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <vector>

namespace Engine {
namespace {

// Large enough that the hash, not the system calls, sets the pace.
constexpr std::size_t kBlock = 1 << 20;

struct ContextFree {
    void operator()(EVP_MD_CTX* context) const { EVP_MD_CTX_free(context); }
};

}  // namespace

bool DigestFile(const std::string& path, FileDigest* digest, std::string* reason) {
    *digest = FileDigest();
    reason->clear();
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        *reason = path + " cannot be opened: " + std::strerror(errno);
        return false;
    }
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    std::unique_ptr<EVP_MD_CTX, ContextFree> context(EVP_MD_CTX_new());
    bool ok = context && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
    std::vector<unsigned char> block(kBlock);
    while (ok) {
        const ssize_t got = ::read(fd, block.data(), block.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) {
            *reason = path + " cannot be read: " + std::strerror(errno);
            ok = false;
        } else if (got == 0) {
            break;
        } else {
            digest->length += static_cast<uint64_t>(got);
            ok = EVP_DigestUpdate(context.get(), block.data(), static_cast<size_t>(got)) == 1;
        }
    }
    ::close(fd);
    unsigned char hash[EVP_MAX_MD_SIZE];
    unsigned int size = 0;
    if (ok && EVP_DigestFinal_ex(context.get(), hash, &size) == 1) {
        static const char kHex[] = "0123456789abcdef";
        for (unsigned int i = 0; i < size; ++i) {
            digest->sha256 += kHex[hash[i] >> 4];
            digest->sha256 += kHex[hash[i] & 15];
        }
        return true;
    }
    if (reason->empty()) *reason = "the SHA-256 of " + path + " could not be computed";
    digest->length = 0;
    return false;
}

}  // namespace Engine
