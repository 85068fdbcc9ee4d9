// System::ExclusiveFile: a file created for writing that nobody can slip a link under: the
// setup program is downloaded into one. Creation truncates an existing regular file, never
// follows a symbolic link at the path, refuses anything that is not a regular file (a FIFO
// would block the writer), makes the file readable, writable and executable by its owner
// only (0700), and holds an exclusive advisory lock on it while it is open.
//
// Thread safety: one object from one thread at a time.
#pragma once

#include <cstddef>
#include <string>

#include "foundation/ErrorCode.h"

namespace System {

class ExclusiveFile {
public:
    ExclusiveFile() = default;
    ExclusiveFile(const ExclusiveFile&) = delete;
    ExclusiveFile& operator=(const ExclusiveFile&) = delete;
    ExclusiveFile(ExclusiveFile&& other) noexcept;
    ExclusiveFile& operator=(ExclusiveFile&& other) noexcept;
    ~ExclusiveFile();

    // Closes any file held, then creates `path`. Fails with the Win32 error of the
    // operating system's answer (a link at the path gives 1921, a file of another kind 5).
    ErrorCode Create(const std::wstring& path);

    // Writes all `size` bytes, continuing after short writes. *written receives the bytes
    // actually written, also on failure. Fails when no file is open (6) or a write fails.
    ErrorCode Write(const void* data, std::size_t size, std::size_t* written);

    // Closes the file; closing a closed one does nothing.
    void Close();

    bool IsOpen() const { return m_fd >= 0; }

private:
    int m_fd = -1;
};

}  // namespace System
