#include "system/FileHelpers.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "foundation/ErrorCode.h"
#include "foundation/Reporting.h"
#include "foundation/TextConversion.h"
#include "platform/Environment.h"
#include "platform/SystemMessages.h"
#include "system/GrowingBufferQuery.h"

namespace System {
namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorInsufficientBuffer = 122;
constexpr uint32_t kErrorAlreadyExists = 183;
constexpr uint32_t kMaxPathQuery = 32767;

std::string Narrow(std::wstring_view path) {
    return STLHelpers::WideToUtf8(path);
}

std::wstring Wide(std::string_view path) {
    return STLHelpers::Utf8ToWide(path);
}

// Copies `text` into a caller's buffer the way GetTempPathW and GetLongPathNameW do: the
// length without terminator when it fits, else the size needed with the terminator.
uint32_t CopyOut(const std::wstring& text, wchar_t* buffer, uint32_t size) {
    const auto length = static_cast<uint32_t>(text.size());
    if (length + 1 > size) return length + 1;
    std::copy(text.begin(), text.end(), buffer);
    buffer[length] = L'\0';
    return length;
}

// The target of a symbolic link, however long.
std::string ReadLink(const char* link) {
    std::string target(256, '\0');
    while (true) {
        const ssize_t got = ::readlink(link, target.data(), target.size());
        if (got < 0) return {};
        if (static_cast<size_t>(got) < target.size()) {
            target.resize(static_cast<size_t>(got));
            return target;
        }
        target.resize(target.size() * 2);
    }
}

// GetModuleFileNameW: truncates to the buffer and returns its size, with
// ERROR_INSUFFICIENT_BUFFER, when the path does not fit.
uint32_t ModuleFileName(const void* address, wchar_t* buffer, uint32_t size, uint32_t& error) {
    std::string path;
    if (address != nullptr) {
        Dl_info info{};
        if (dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
            error = 126;  // ERROR_MOD_NOT_FOUND
            return 0;
        }
        // For the executable's own code dladdr reports the name it was started under,
        // which may be relative to a folder we have left; /proc knows better.
        Dl_info exeInfo{};
        const auto* headers = reinterpret_cast<const void*>(getauxval(AT_PHDR));
        const bool inExecutable = headers != nullptr && dladdr(headers, &exeInfo) != 0 &&
                                  exeInfo.dli_fbase == info.dli_fbase;
        if (!inExecutable) {
            char resolved[PATH_MAX];
            path = ::realpath(info.dli_fname, resolved) ? resolved : info.dli_fname;
        }
    }
    if (path.empty()) path = ReadLink("/proc/self/exe");
    if (path.empty()) {
        error = Platform::LastWin32Error();
        return 0;
    }
    const std::wstring wide = Wide(path);
    const auto length = static_cast<uint32_t>(wide.size());
    if (size == 0) {
        error = kErrorInsufficientBuffer;
        return 0;
    }
    if (length >= size) {
        std::copy_n(wide.begin(), size - 1, buffer);
        buffer[size - 1] = L'\0';
        error = kErrorInsufficientBuffer;
        return size;
    }
    std::copy(wide.begin(), wide.end(), buffer);
    buffer[length] = L'\0';
    return length;
}

bool IsFolder(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

uint32_t TempPath(wchar_t* buffer, uint32_t size, uint32_t&) {
    std::string folder = "/tmp/";
    if (auto tmpdir = Platform::GetEnvironment("TMPDIR");
        tmpdir && !tmpdir->empty() && tmpdir->front() == '/' && IsFolder(*tmpdir)) {
        folder = *tmpdir;
        if (folder.back() != '/') folder.push_back('/');
    }
    return CopyOut(Wide(folder), buffer, size);
}

uint32_t LongPathName(const std::wstring& path, wchar_t* buffer, uint32_t size, uint32_t& error) {
    struct stat info {};
    if (path.empty() || ::lstat(Narrow(path).c_str(), &info) != 0) {
        error = path.empty() ? 87 : Platform::LastWin32Error();
        if (error == 0) error = kErrorFileNotFound;
        return 0;
    }
    return CopyOut(path, buffer, size);
}

// Where the extension of the last component starts (its "."), or path.size(). A blank or a
// separator after a "." means that the "." starts no extension.
size_t ExtensionStart(std::wstring_view path) {
    size_t dot = std::wstring_view::npos;
    for (size_t i = 0; i < path.size(); ++i) {
        if (path[i] == L'/' || path[i] == L' ')
            dot = std::wstring_view::npos;
        else if (path[i] == L'.')
            dot = i;
    }
    return dot == std::wstring_view::npos ? path.size() : dot;
}

bool StartsWithNoCase(std::wstring_view text, std::wstring_view word) {
    if (text.size() < word.size()) return false;
    for (size_t i = 0; i < word.size(); ++i) {
        wchar_t c = text[i];
        if (c >= L'a' && c <= L'z') c = c - L'a' + L'A';
        if (c != word[i]) return false;
    }
    return true;
}

}  // namespace

std::wstring GetLocation(std::wstring_view path) {
    if (path.ends_with(L'/')) path.remove_suffix(1);
    const size_t last = path.rfind(L'/');
    if (last == std::wstring_view::npos || last == 1) return {};
    return std::wstring(path.substr(0, last + 1));
}

std::wstring GetFileName(std::wstring_view path) {
    size_t start = 0;
    for (size_t i = 0; i + 1 < path.size(); ++i)
        if (path[i] == L'/') start = i + 1;
    std::wstring name(path.substr(std::min(start, path.size())));
    if (name.ends_with(L'/')) name.pop_back();
    return name;
}

std::wstring RemoveExtension(std::wstring_view path) {
    return std::wstring(path.substr(0, ExtensionStart(path)));
}

bool FileExists(std::wstring_view path) {
    struct stat info {};
    return !path.empty() && ::lstat(Narrow(path).c_str(), &info) == 0;
}

std::wstring Canonicalize(std::wstring_view path) {
    const bool absolute = path.starts_with(L'/');
    const bool trailing = path.size() > 1 && path.ends_with(L'/');
    std::vector<std::wstring_view> parts;
    size_t pos = 0;
    while (pos <= path.size()) {
        size_t next = path.find(L'/', pos);
        if (next == std::wstring_view::npos) next = path.size();
        const auto part = path.substr(pos, next - pos);
        if (part == L"..") {
            if (!parts.empty() && parts.back() != L"..")
                parts.pop_back();
            else if (!absolute)
                parts.push_back(part);
        } else if (!part.empty() && part != L".") {
            parts.push_back(part);
        }
        pos = next + 1;
    }
    std::wstring result = absolute ? L"/" : L"";
    for (size_t i = 0; i < parts.size(); ++i) {
        if (i != 0) result.push_back(L'/');
        result.append(parts[i]);
    }
    if (trailing && !parts.empty()) result.push_back(L'/');
    if (result.empty() && !path.empty()) result = L".";
    if (result.size() >= PATH_MAX) return std::wstring(path);
    return result;
}

std::wstring MakeAbsolute(std::wstring_view path, std::wstring_view base) {
    std::wstring joined;
    if (path.starts_with(L'/')) {
        joined = path;
    } else {
        std::wstring folder(base);
        if (!folder.empty() && !IsFolder(Narrow(folder))) folder = GetLocation(base);
        if (!folder.starts_with(L'/')) {
            char cwd[PATH_MAX];
            if (::getcwd(cwd, sizeof(cwd)) != nullptr) {
                std::wstring current = Wide(cwd);
                if (!current.ends_with(L'/')) current.push_back(L'/');
                folder = current + folder;
            }
        }
        if (!folder.empty() && !folder.ends_with(L'/')) folder.push_back(L'/');
        joined = folder + std::wstring(path);
    }
    return Canonicalize(joined);
}

std::wstring GetLongPath(std::wstring_view path) {
    const std::wstring text(path);
    uint32_t lerr = 0;
    auto result = QueryWithGrowingBuffer(
        260, kMaxPathQuery,
        [&text](wchar_t* buffer, uint32_t size, uint32_t& error) {
            return LongPathName(text, buffer, size, error);
        },
        &lerr);
    if (result) return *result;
    const ErrorCode code = ErrorCode::FromWin32(lerr != 0 ? lerr : kErrorInsufficientBuffer);
    Reporting::ReportGuarded(STLHelpers::litestring_a("((lerr))"), &code);
    return text;
}

std::wstring GetModulePath(const void* addressInModule) {
    auto path = QueryWithGrowingBuffer(
        260, kMaxPathQuery, [addressInModule](wchar_t* buffer, uint32_t size, uint32_t& error) {
            return ModuleFileName(addressInModule, buffer, size, error);
        });
    if (!path || path->empty()) return {};
    return GetLongPath(*path);
}

std::wstring GetModuleFolder() {
    return GetLocation(GetModulePath(nullptr));
}

std::wstring GetTempFolder() {
    auto folder = QueryWithGrowingBuffer(260, kMaxPathQuery, TempPath);
    if (!folder) return {};
    return GetLongPath(*folder);
}

bool CreateFolders(std::wstring_view path) {
    if (FileExists(path)) return true;
    const std::string narrow = Narrow(path);
    const size_t first = narrow.find('/');
    if (first == std::string::npos) return false;
    for (size_t sep = narrow.find('/', first + 1); sep != std::string::npos;
         sep = narrow.find('/', sep + 1))
        (void)::mkdir(narrow.substr(0, sep).c_str(), 0777);
    if (::mkdir(narrow.c_str(), 0777) == 0) return true;
    return Platform::LastWin32Error() == kErrorAlreadyExists;
}

std::wstring MakeUniqueFilePath(std::wstring_view folder, std::wstring_view pattern) {
    std::wstring name(pattern);
    if (name.find(L'!') == std::wstring::npos) name.push_back(L'!');
    std::wstring base(folder);
    if (!base.empty() && !base.ends_with(L'/')) base.push_back(L'/');
    // The name split at its marks; every mark takes the counter.
    std::vector<std::wstring> pieces;
    for (size_t start = 0;;) {
        const size_t mark = name.find(L'!', start);
        pieces.push_back(name.substr(start, mark - start));
        if (mark == std::wstring::npos) break;
        start = mark + 1;
    }

    constexpr uint32_t kLast = 99999999;
    std::wstring candidate;
    for (uint32_t n = 1; n <= kLast; ++n) {
        const std::wstring counter = std::to_wstring(n);
        candidate = base + pieces[0];
        for (size_t i = 1; i < pieces.size(); ++i) candidate += counter + pieces[i];
        if (!FileExists(candidate)) break;
    }
    return candidate;
}

void SanitizeFileName(std::wstring& name, wchar_t replacement) {
    static constexpr std::wstring_view kReserved =
        L"AUX CLOCK$ COM1 COM2 COM3 COM4 COM5 COM6 COM7 COM8 COM9 CON LPT1 LPT2 LPT3 LPT4 "
        L"LPT5 LPT6 LPT7 LPT8 LPT9 NUL PRN";
    static constexpr std::wstring_view kNotAllowed = L"|\\?*<\":>/";
    static constexpr std::wstring_view kTrimmed = L" .\t\r\n";

    size_t pos = 0;
    while (pos < kReserved.size()) {
        size_t end = kReserved.find(L' ', pos);
        if (end == std::wstring_view::npos) end = kReserved.size();
        const auto word = kReserved.substr(pos, end - pos);
        if (StartsWithNoCase(name, word) &&
            (name.size() == word.size() || name[word.size()] == L'.')) {
            name.insert(word.size(), 1, L'~');
            break;
        }
        pos = end + 1;
    }
    for (wchar_t& c : name)
        if (c < 32 || kNotAllowed.find(c) != std::wstring_view::npos) c = replacement;

    const size_t length = name.size();
    const size_t first = name.find_first_not_of(kTrimmed);
    if (first == std::wstring::npos) {
        name.assign(length, replacement);
        return;
    }
    const size_t last = name.find_last_not_of(kTrimmed);
    name = name.substr(first, last - first + 1);
}

bool ReadWholeFile(std::wstring_view path, std::vector<uint8_t>& bytes) {
    bytes.clear();
    // O_NONBLOCK: a FIFO must not stall the caller; regular files ignore it.
    const int fd = ::open(Narrow(path).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0) return false;
    struct stat info {};
    bool ok = true;
    if (::fstat(fd, &info) == 0 && info.st_size > 0) {
        bytes.resize(static_cast<size_t>(info.st_size));
        size_t done = 0;
        while (done < bytes.size()) {
            const ssize_t got = ::read(fd, bytes.data() + done, bytes.size() - done);
            if (got < 0 && errno == EINTR) continue;
            if (got <= 0) {
                ok = got == 0;  // a file that shrank meanwhile keeps what was there
                break;
            }
            done += static_cast<size_t>(got);
        }
        bytes.resize(ok ? done : 0);
    }
    ::close(fd);
    return ok;
}

}  // namespace System
