// The plug-in's logs on disk. Paths are UTF-8. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tool/shared/logs/log_calls.h"

namespace simhost::tool {

/// The logs in a folder, sorted by name; none for an empty path.
std::vector<std::string> logFiles(const std::string& folder);
/// Those of this user.
std::vector<std::string> logFiles();
/// The one that was begun last, empty when there is none.
std::string newestLog();

/// Reads a log, or its first `mostBytes`, and hands over its calls and lines in order. False when the file
/// cannot be opened.
bool readLog(const std::string& path, std::uint64_t mostBytes, const std::function<void(LogItem)>& take);

enum class LogPart {
    kNone,   ///< the file cannot be opened
    kWhole,  ///< it has no more bytes than were asked for
    kEnd,
};
/// The same with the last `mostBytes` of a log, from the beginning of a call on. Line numbers count from
/// there.
LogPart readLogEnd(const std::string& path, std::uint64_t mostBytes,
                   const std::function<void(LogItem)>& take);

}  // namespace simhost::tool
