// A file or folder that must not outlive the tool's work with it: gone when the work fails, and when Ctrl-C
// ends the process.
#pragma once

#include <string>

namespace simhost::tool {

class TemporaryPath {
 public:
    /// Takes charge of what is, or will be, at this UTF-8 path.
    explicit TemporaryPath(std::string pathUtf8);
    TemporaryPath(const TemporaryPath&) = delete;
    TemporaryPath& operator=(const TemporaryPath&) = delete;
    /// Removes it with all that it holds, unless keep() was called. What cannot be removed stays.
    ~TemporaryPath();

    const std::string& path() const noexcept { return m_path; }
    /// It is no longer temporary.
    void keep() noexcept;

 private:
    std::string m_path;
    bool m_kept = false;
};

/// A name for something temporary that no other process uses, "importer_host-4711-1" with this suffix. Any
/// thread.
std::string temporaryName(const std::string& suffix);

/// A fresh folder in the system's temporary folder; its UTF-8 path. Folders that killed runs have left there
/// a day or longer ago are removed. Throws ToolError.
std::string makeTemporaryFolder();

/// Removes everything that is temporary now. For the thread that ends the process.
void removeTemporaryPaths() noexcept;

}  // namespace simhost::tool
