// Loading of dynamic libraries for the native builds, in the place of simhost/shared_library_win32.cpp.
#include "simhost/shared_library.h"

#include <dlfcn.h>

#include <stdexcept>
#include <utility>

namespace simhost {

// The native plug-in knows where its libraries are, so the extra folder has no use.
SharedLibrary::SharedLibrary(const std::string& pathUtf8, const std::string& /*extraFolderUtf8*/) {
    // A bare name would be searched on the library path.
    const std::string path = pathUtf8.find('/') == std::string::npos ? "./" + pathUtf8 : pathUtf8;
    m_handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (m_handle == nullptr) {
        const char* reason = dlerror();
        throw std::runtime_error("cannot load '" + pathUtf8 + "': " + (reason == nullptr ? "" : reason));
    }
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
}

SharedLibrary::~SharedLibrary() {
    unload();
}

void* SharedLibrary::find(const char* name) const noexcept {
    return dlsym(m_handle, name);
}

void SharedLibrary::unload() noexcept {
    if (m_handle != nullptr) {
        dlclose(std::exchange(m_handle, nullptr));
    }
}

}  // namespace simhost
