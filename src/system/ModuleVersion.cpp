#include "system/ModuleVersion.h"

#include <cerrno>
#include <cstdarg>
#include <cwchar>

#include "foundation/Check.h"
#include "foundation/TextConversion.h"
#include "platform/ResourceImage.h"
#include "platform/Utf16Text.h"

namespace System {
namespace {

constexpr std::size_t kFormatBufferSize = 32768;
// StringCchVPrintfEx's codes: the output did not fit / the format could not be applied.
constexpr HRESULT STRSAFE_E_INSUFFICIENT_BUFFER = static_cast<HRESULT>(0x8007007Au);
constexpr HRESULT STRSAFE_E_INVALID_PARAMETER = static_cast<HRESULT>(0x80070057u);
constexpr uint16_t VS_VERSION_INFO = 1;

// Formats into `buffer`; returns S_OK, STRSAFE_E_INSUFFICIENT_BUFFER (the buffer then
// holds what fitted) or STRSAFE_E_INVALID_PARAMETER.
HRESULT FormatInto(std::vector<wchar_t>& buffer, const wchar_t* format, va_list args) {
    // glibc's vswprintf fails alike for output that does not fit and for a bad format;
    // only the latter sets errno, and only the former leaves the cut text in the buffer.
    errno = 0;
    const int written = std::vswprintf(buffer.data(), buffer.size(), format, args);
    if (written >= 0) return S_OK;
    if (errno != 0) return STRSAFE_E_INVALID_PARAMETER;
    buffer.back() = L'\0';
    return STRSAFE_E_INSUFFICIENT_BUFFER;
}

}  // namespace

ModuleVersion::ModuleVersion(const std::wstring& modulePath) {
    if (modulePath.empty()) {
        const ErrorCode code(E_FAIL);
        Reporting::ReportGuarded(STLHelpers::litestring_a("((!!modulePath))"), &code);
        return;
    }
    Platform::ResourceImage image;
    if (image.LoadFile(STLHelpers::WideToUtf8(modulePath)) != 0) return;
    const Platform::ResourceEntry* entry =
        image.Find(Platform::RT_VERSION, VS_VERSION_INFO, Platform::LANG_NEUTRAL);
    if (!entry) {
        // Not every tool numbers it 1: take the first version resource there is.
        for (const Platform::ResourceEntry& candidate : image.Entries())
            if (candidate.type == Platform::ResourceName(Platform::RT_VERSION)) {
                entry = &candidate;
                break;
            }
    }
    if (!entry) return;
    const auto bytes = image.Data(*entry);
    if (m_info.Parse(bytes) != 0) return;  // an unreadable resource counts as none
    m_verBuf.assign(bytes.begin(), bytes.end());
}

const wchar_t* ModuleVersion::QueryString(const std::wstring& name) const {
    if (CHECK_GUARDED(!m_verBuf.empty()).Failed()) return nullptr;
    const std::vector<uint32_t> translations = m_info.Translations();
    const uint32_t translation = translations.empty() ? kDefaultTranslation : translations.front();
    const std::wstring path =
        FormatText(L"\\StringFileInfo\\%04X%04X\\", translation & 0xFFFFu, translation >> 16) +
        name;
    Platform::VersionInfo::Value value;
    if (!m_info.Query(Platform::Utf16FromWide(path), value)) return nullptr;
    auto& stored = m_strings[path];
    stored = Platform::WideFromUtf16(value.isText ? value.text : std::u16string());
    return stored.c_str();
}

std::wstring ModuleVersion::GetFileVersion() const {
    const wchar_t* version = QueryString(L"FileVersion");
    return version ? std::wstring(version) : std::wstring();
}

std::wstring GetDottedFileVersion(const std::wstring& path) {
    std::wstring version = ModuleVersion(path).GetFileVersion();
    for (wchar_t& c : version)
        if (c == L',') c = L'.';
    return version;
}

std::wstring FormatText(const wchar_t* format, ...) {
    if (!format) format = L"";
    std::vector<wchar_t> buffer(kFormatBufferSize);
    va_list args;
    va_start(args, format);
    const ErrorCode hr(FormatInto(buffer, format, args));
    va_end(args);
    if (hr.Succeeded()) return std::wstring(buffer.data());
    if (hr.Value() == STRSAFE_E_INSUFFICIENT_BUFFER)
        return std::wstring(buffer.data()) + L"... (truncated)";
    CHECK_WARNING(hr);
    return std::wstring(format) + L"... (bad args)";
}

}  // namespace System
