// What the system's loader says of a library by its name. Implemented by library_search_win32.cpp and
// library_search_posix.cpp. Main thread only.
#pragma once

#include <string>

namespace simhost::tool {

/// Loads the library as a module that imports it would, `folderUtf8`, unless empty, being searched too, and
/// lets it go again. The system's reason when it cannot be loaded, else empty.
std::string whyNotLoadable(const std::string& name, const std::string& folderUtf8);

}  // namespace simhost::tool
