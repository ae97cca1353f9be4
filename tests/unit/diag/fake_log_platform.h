// A system for the log that exists in memory only: it answers as the test says and records what the log asked
// for.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "diag/log_platform.h"

namespace orvantis::test {

struct FakeLogPlatform {
    std::optional<std::uint32_t> switchValue;
    bool hasProfile = true;
    std::size_t foldersThatFit = 2;  ///< how many folder names can be appended to the profile folder
    int takenNumbers = 0;            ///< files with numbers below are somebody's
    int refusedNumbers = 0;          ///< files with numbers below cannot be created
    std::tm time{};                  ///< local
    std::int64_t utc = 0;            ///< seconds
    std::uint32_t thread = 0;
    std::string application;

    std::vector<std::string>
        calls;         ///< in order: "switch", "profile", "append X", "make X", "read N", "create X", ...
    std::string file;  ///< what was written to the log file
    std::function<void()> onWrite;          ///< called with each line, under the log's lock
    std::function<void()> onUnlockedWrite;  ///< called with each line that is written without a lock
    std::string console;                    ///< what was written to the console
};

/// The system in force; the test sets it up.
FakeLogPlatform& fakeLogPlatform();

}  // namespace orvantis::test
