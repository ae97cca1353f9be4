// A dynamic library, loaded by path. The two implementations (Windows, POSIX) are the only platform code of
// loading. One owner; not thread-safe.
#pragma once

#include <string>

namespace simhost {

class SharedLibrary {
 public:
    SharedLibrary() = default;
    /// `pathUtf8` as the program sees it (relative to the current folder or absolute). `extraFolderUtf8`,
    /// unless empty, is searched too for the libraries that this one needs. Throws std::runtime_error with
    /// the system's reason.
    explicit SharedLibrary(const std::string& pathUtf8, const std::string& extraFolderUtf8 = {});
    SharedLibrary(SharedLibrary&& other) noexcept;
    SharedLibrary& operator=(SharedLibrary&& other) noexcept;
    ~SharedLibrary();

    /// The exported function of that name, or null.
    void* find(const char* name) const noexcept;
    bool loaded() const noexcept { return m_handle != nullptr; }
    void unload() noexcept;

 private:
    void* m_handle = nullptr;
};

}  // namespace simhost
