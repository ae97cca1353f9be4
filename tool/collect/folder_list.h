// What lies in the folders that the host and its loader look into. Main thread only.
#pragma once

#include <string>
#include <vector>

namespace simhost::tool {

/// Of each plug-in folder every file below it, with size, time and, for libraries, version; of each folder of
/// the loader whether the codec library lies there.
std::string folderList(const std::vector<std::string>& pluginFolders,
                       const std::vector<std::string>& libraryFolders);

}  // namespace simhost::tool
