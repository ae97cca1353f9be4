// The two files that the tool examines, plug-in and codec library, as they lie on disk. Paths are UTF-8. Main
// thread only.
#pragma once

#include <optional>
#include <string>

#include "tool/shared/base/pe_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

inline constexpr const char* kPluginFileName = "ImporterOrvantis.prm";
inline constexpr const char* kCodecFileName = "orvantis_common64.dll";

/// A file on disk, read. `pe` is empty when it is no Windows library or cannot be read.
struct LibraryFile {
    std::string path;
    std::optional<PeFile> pe;
};
LibraryFile readLibrary(const std::string& path);

/// The file version that its resource tells, "1.2.3.0"; "unknown" when there is none.
std::string fileVersion(const std::string& path);

/// The codec library that a plug-in of this process uses: the loaded one, else the first in `folder` (unless
/// empty) and the places of the loader. Empty when there is none.
std::string findCodecLibrary(const std::string& folder);

/// False when a plug-in was not loaded for want of the codec library. `loaderText` is what the loader said.
bool codecIsFound(const std::string& folder, const std::string& loaderText);

/// Why the plug-in cannot be loaded, and what to do.
ToolError unloadablePlugin(const std::string& path, const std::string& loaderText, bool codecFound);

}  // namespace simhost::tool
