#include "platform/SharedLibrary.h"

#include <dlfcn.h>

namespace Platform {

void* LoadSharedLibrary(const char* fileName, uint32_t* win32Error) {
    // RTLD_NOLOAD first: the libraries we look into are normally already mapped.
    void* handle = dlopen(fileName, RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) handle = dlopen(fileName, RTLD_NOW);
    if (win32Error != nullptr) *win32Error = handle ? 0 : 126;
    return handle;
}

void* FindSharedLibraryFunction(void* library, const char* name) {
    return library ? dlsym(library, name) : nullptr;
}

}  // namespace Platform
