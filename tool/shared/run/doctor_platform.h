// What the doctor asks the operating system. Implemented by doctor_platform_win32.cpp and, for native builds,
// by a twin beside it. Main thread only. All paths are UTF-8.
#pragma once

#include <string>
#include <vector>

namespace simhost::tool {

/// Whether the plug-in writes its log.
enum class LogSetting { kOff, kOn, kUnknown };

/// The plug-in folders that installed hosts have registered, without repetitions.
std::vector<std::string> registeredPluginFolders();
/// Where hosts have their common plug-in folder unless they say otherwise.
std::vector<std::string> usualPluginFolders();
/// Where the loader looks for a library that a plug-in of another program's needs, in its order: not beside
/// the plug-in. The folder of the host itself, which comes first, is not known here.
std::vector<std::string> libraryFolders();
/// The system folder that 32-bit programs see in the place of ours; empty without one.
std::string narrowSystemFolder();
/// The user's own setting.
LogSetting logSetting();

}  // namespace simhost::tool
