// The doctor's operating system for native builds, in the place of
// tool/shared/run/doctor_platform_win32.cpp. No host is installed here; the loader's path is the variable of
// this system.
#include "tool/shared/run/doctor_platform.h"

#include <algorithm>
#include <cstdlib>

namespace simhost::tool {

std::vector<std::string> registeredPluginFolders() {
    return {};
}

std::vector<std::string> usualPluginFolders() {
    return {};
}

std::vector<std::string> libraryFolders() {
    const char* variable = std::getenv("LD_LIBRARY_PATH");
    const std::string path = variable == nullptr ? "" : variable;
    std::vector<std::string> out;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find(':', at), path.size());
        out.push_back(path.substr(at, end - at));
        at = end + 1;
    }
    return out;
}

std::string narrowSystemFolder() {
    return {};
}

LogSetting logSetting() {
    return std::getenv("ORVANTIS_TEST_LOG_SWITCH") != nullptr ? LogSetting::kOn : LogSetting::kOff;
}

}  // namespace simhost::tool
