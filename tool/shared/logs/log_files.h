// The plug-in's logs on disk. Paths are UTF-8. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tool/shared/logs/log_calls.h"

namespace simhost::tool {

/// The logs of this user, sorted by name.
std::vector<std::string> logFiles();
/// The one that was begun last, empty when there is none.
std::string newestLog();

/// Reads a log, or its first `mostBytes`, and hands over its calls and lines in order. False when the file
/// cannot be opened.
bool readLog(const std::string& path, std::uint64_t mostBytes, const std::function<void(LogItem)>& take);

}  // namespace simhost::tool
