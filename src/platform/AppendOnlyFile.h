// A file opened for appending only, shared with other writers: every Append is one write
// at the end of the file, so appends of several threads or processes never interleave
// within one call (the diagnostic log relies on this for whole lines).
//
// Thread safety: Append from any thread at once; Open and Close on one thread while nobody
// appends.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace Platform {

class AppendOnlyFile {
public:
    AppendOnlyFile() = default;
    ~AppendOnlyFile();
    AppendOnlyFile(const AppendOnlyFile&) = delete;
    AppendOnlyFile& operator=(const AppendOnlyFile&) = delete;

    // Opens (creating when missing, never truncating) the file at the UTF-8 `path`. Closes
    // what was open before. Returns 0 or a Win32 error number.
    uint32_t Open(const std::string& path);
    bool IsOpen() const { return m_fd >= 0; }
    void Close();

    // Appends `data`. Returns 0 or a Win32 error number (6 when not open).
    uint32_t Append(std::string_view data) const;

private:
    int m_fd = -1;
};

}  // namespace Platform
