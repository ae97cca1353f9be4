// Finds on disk what the doctor judges: plug-in folders, copies of the plug-in, codec libraries. Loads
// nothing. Paths are UTF-8. Main thread only.
#pragma once

#include <string>
#include <vector>

#include "tool/doctor/doctor_checks.h"

namespace simhost::tool {

/// `folder` and `name` with the system's own separator.
std::string joinedPath(const std::string& folder, const std::string& name);
bool isFile(const std::string& path);

/// Where hosts look for plug-ins: `given`, if there are any, instead of what is registered and usual.
std::vector<PluginFolder> findPluginFolders(const std::vector<std::string>& given);

/// Every file of the plug-in's name in the folders and below, as the host's own search finds it.
std::vector<LibraryFile> findCopies(const std::vector<PluginFolder>& folders);

/// Codec libraries in the folders of the copies.
std::vector<std::string> findCodecsBeside(const std::vector<LibraryFile>& copies);

/// Codec libraries in the places of the loader, in its order. `first`, unless empty, is searched before them.
CodecSearch findCodecs(const std::string& first);

}  // namespace simhost::tool
