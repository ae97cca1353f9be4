#include "simhost/plugin.h"

#include <stdexcept>

namespace simhost {

Plugin::Plugin(const std::string& pathUtf8, const std::string& codecFolderUtf8)
    : m_path(pathUtf8),
      m_library(pathUtf8, codecFolderUtf8),
      m_entry(reinterpret_cast<host::ImportEntryFn>(m_library.find("xImportEntry"))) {
    if (m_entry == nullptr) {
        throw std::runtime_error("'" + pathUtf8 + "' exports no xImportEntry");
    }
}

void Plugin::unload() noexcept {
    if (m_library.loaded()) {
        m_entry = nullptr;
        m_library.unload();
    }
}

}  // namespace simhost
