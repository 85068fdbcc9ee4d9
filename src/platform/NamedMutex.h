// A named mutex shared with other processes of the same user: a lock file per name, held
// with a shared flock for the life of the object. It marks "someone is at work" for other
// processes; nobody waits on it. The lock goes when the holder closes it or dies.
//
// Names are UTF-8 and follow the rules of include/lumetta/product.h, so a product built
// with that header sees the same object.
//
// Thread safety: one object per thread; IsHeld from any thread.
#pragma once

#include <cstdint>
#include <string>

namespace Platform {

class NamedMutex {
public:
    NamedMutex() = default;
    ~NamedMutex();
    NamedMutex(NamedMutex&& other) noexcept;
    NamedMutex& operator=(NamedMutex&& other) noexcept;
    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;

    // Creates (or opens, when it exists) the mutex and holds it, releasing any mutex this
    // object held before. Returns 0 or a Win32 error number (the object then holds nothing).
    uint32_t Create(const std::string& name);

    bool IsOpen() const { return m_fd >= 0; }

    // Releases the mutex; does nothing when none is held.
    void Close();

    // Whether any holder (in this or another process) keeps the mutex. A mutex that was
    // never created is not held. On an error returns false and sets *error (when given) to
    // the Win32 error number; otherwise *error is 0.
    static bool IsHeld(const std::string& name, uint32_t* error = nullptr);

private:
    int m_fd = -1;
};

// The folder of the lock files ($XDG_RUNTIME_DIR/lumetta, else /tmp/lumetta-UID), created
// with mode 0700 when missing. Returns 0 or a Win32 error number.
uint32_t NamedObjectFolder(std::string& folder);

}  // namespace Platform
