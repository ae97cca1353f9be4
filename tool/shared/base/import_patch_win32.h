// Puts a function of ours in the place of one that a loaded module imports by name, for that module alone.
#pragma once

namespace simhost::tool {

class ImportPatch {
 public:
    /// `inModule` is any address inside the module. Throws std::runtime_error when it does not import a
    /// function of that name. Call while no other thread runs in the module.
    ImportPatch(const void* inModule, const char* function, const void* replacement);
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;
    /// The module must still be loaded.
    ~ImportPatch();

 private:
    const void** m_place = nullptr;
    const void* m_former = nullptr;
};

}  // namespace simhost::tool
