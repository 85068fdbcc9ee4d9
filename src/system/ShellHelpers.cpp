#include "system/ShellHelpers.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "foundation/Check.h"
#include "foundation/ErrorCode.h"
#include "foundation/Reporting.h"
#include "foundation/TextConversion.h"
#include "platform/SystemMessages.h"
#include "system/CommandLine.h"
#include "system/internal/ShellProcess.h"
#include "system/internal/Trash.h"

namespace System {
namespace {

constexpr uint32_t kErrorFileNotFound = 2;
constexpr uint32_t kErrorInvalidParameter = 87;

std::vector<std::string> SplitList(std::wstring_view list) {
    std::vector<std::string> paths;
    size_t start = 0;
    while (start < list.size()) {
        size_t end = list.find(L'\0', start);
        if (end == std::wstring_view::npos) end = list.size();
        if (end > start) paths.push_back(STLHelpers::WideToUtf8(list.substr(start, end - start)));
        start = end + 1;
    }
    return paths;
}

uint32_t ErrorOf(const std::error_code& error) {
    if (!error) return 0;
    if (error.category() == std::generic_category() || error.category() == std::system_category())
        return Platform::Win32ErrorFromErrno(error.value());
    return 31;  // ERROR_GEN_FAILURE
}

bool Exists(const std::string& path) {
    struct stat info {};
    return ::lstat(path.c_str(), &info) == 0;
}

uint32_t DeleteOne(const std::string& path, bool allowUndo) {
    if (!Exists(path)) return kErrorFileNotFound;
    if (allowUndo) return internal::MoveToTrash(path);
    std::error_code error;
    // remove_all does not follow links, so a link inside a folder never leads outside it.
    std::filesystem::remove_all(path, error);
    return ErrorOf(error);
}

// The destination of one source: inside `to` when it is a folder, else `to` itself.
std::filesystem::path Destination(const std::string& source, const std::string& to) {
    std::error_code error;
    if (std::filesystem::is_directory(to, error))
        return std::filesystem::path(to) / std::filesystem::path(source).filename();
    return to;
}

uint32_t MoveOne(const std::string& source, const std::string& to) {
    if (!Exists(source)) return kErrorFileNotFound;
    const auto target = Destination(source, to);
    if (::rename(source.c_str(), target.c_str()) != 0) return Platform::LastWin32Error();
    return 0;
}

uint32_t CopyOne(const std::string& source, const std::string& to) {
    if (!Exists(source)) return kErrorFileNotFound;
    std::error_code error;
    std::filesystem::copy(source, Destination(source, to),
                          std::filesystem::copy_options::recursive |
                              std::filesystem::copy_options::copy_symlinks |
                              std::filesystem::copy_options::overwrite_existing,
                          error);
    return ErrorOf(error);
}

bool IsExecutableFile(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
           ::access(path.c_str(), X_OK) == 0;
}

// Whether `target` begins with a URI scheme ("mailto:", "https:", ...): letters, digits,
// '+', '-' and '.' after a first letter, then ':'. Such a text is an address for the
// desktop's handler even when a file of that name lies in the current folder.
bool IsAddress(const std::string& target) {
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    if (target.empty() || !isLetter(target[0])) return false;
    for (std::size_t i = 1; i < target.size(); ++i) {
        const char c = target[i];
        if (c == ':') return true;
        if (!isLetter(c) && !(c >= '0' && c <= '9') && c != '+' && c != '-' && c != '.')
            return false;
    }
    return false;
}

// Hands `target` to xdg-open; true when it reports success.
bool XdgOpen(const std::string& target) {
    int status = -1;
    const uint32_t error = internal::RunAndWait({"xdg-open", target}, status);
    return error == 0 && status == 0;
}

}  // namespace

bool ShellFileOperation(uint32_t function, std::wstring_view from, std::wstring_view to,
                        bool allowUndo) {
    const std::vector<std::string> sources = SplitList(from);
    const std::string target = STLHelpers::WideToUtf8(to);
    uint32_t shRes = 0;
    if (sources.empty()) {
        shRes = kErrorInvalidParameter;
    } else {
        for (const auto& source : sources) {
            switch (function) {
                case FO_DELETE:
                    shRes = DeleteOne(source, allowUndo);
                    break;
                case FO_MOVE:
                case FO_RENAME:
                    shRes = target.empty() ? kErrorInvalidParameter : MoveOne(source, target);
                    break;
                case FO_COPY:
                    shRes = target.empty() ? kErrorInvalidParameter : CopyOne(source, target);
                    break;
                default:
                    shRes = kErrorInvalidParameter;
                    break;
            }
            if (shRes != 0) break;
        }
    }
    if (shRes != 0) {
        const ErrorCode code = ErrorCode::FromWin32(shRes);
        Reporting::ReportGuarded(STLHelpers::litestring_a("((shRes))"), &code);
        return false;
    }
    return true;
}

bool DeleteWithShell(std::wstring_view path, bool allowUndo) {
    return ShellFileOperation(FO_DELETE, path, L"", allowUndo);
}

bool ShellOpen(std::wstring_view file, std::wstring_view parameters, int /*showCommand*/) {
    if (file.empty()) return false;
    const std::string target = STLHelpers::WideToUtf8(file);
    if (!IsAddress(target) && IsExecutableFile(target)) {
        std::vector<std::string> argv{target};
        for (const auto& argument : SplitArguments(parameters))
            argv.push_back(STLHelpers::WideToUtf8(argument));
        return internal::StartDetached(argv) == 0;
    }
    return XdgOpen(target);
}

bool OpenUrl(std::wstring_view url) {
    if (auto code = CHECK_GUARDED(!url.empty()); code.Failed()) return code.FailureAs<bool>();
    const bool opened = XdgOpen(STLHelpers::WideToUtf8(url));
    if (!opened) {
        const ErrorCode code(E_FAIL);
        Reporting::ReportGuarded(STLHelpers::litestring_a("((res > 32))"), &code);
    }
    return opened;
}

}  // namespace System
