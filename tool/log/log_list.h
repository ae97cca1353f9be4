// An overview of the user's logs: which host wrote which, when, and how it went. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace simhost::tool {

struct ListedLog {
    std::string path;
    std::string application;
    std::string from;  ///< "2026-11-15 22:10:09"
    std::string to;
    std::uint64_t bytes = 0;
    std::uint64_t failures = 0;
    bool whole = true;  ///< else `failures` are those of its end only
};

/// In the order in which they were begun. Of large logs only beginning and end are read.
std::vector<ListedLog> listLogs();

std::string listText(const std::vector<ListedLog>& logs);
/// {"logs": […]}
std::string listJson(const std::vector<ListedLog>& logs);

}  // namespace simhost::tool
