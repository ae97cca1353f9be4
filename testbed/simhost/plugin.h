// The plug-in under examination: a loaded module, or an entry point that is linked into the program. One
// owner.
#pragma once

#include <string>

#include "host/entry_points.h"
#include "simhost/shared_library.h"

namespace simhost {

class Plugin {
 public:
    /// Loads the module and finds its entry point xImportEntry. `codecFolderUtf8`, unless empty, is searched
    /// too for the libraries that it imports. Throws std::runtime_error that says what failed and why.
    explicit Plugin(const std::string& pathUtf8, const std::string& codecFolderUtf8 = {});
    /// An entry point of this program.
    explicit Plugin(host::ImportEntryFn linkedEntry) noexcept : m_entry(linkedEntry) {}

    /// Null after unload.
    host::ImportEntryFn entry() const noexcept { return m_entry; }
    const std::string& path() const noexcept { return m_path; }
    /// Unloads the module; does nothing for a linked entry point. The destructor does the same.
    void unload() noexcept;

 private:
    std::string m_path;
    SharedLibrary m_library;
    host::ImportEntryFn m_entry = nullptr;
};

}  // namespace simhost
