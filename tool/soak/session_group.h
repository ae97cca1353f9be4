// The sessions of one process: played one after the other, each told of before it begins, so that whoever
// started the process knows which one it died in. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/shared/run/hosted_run.h"
#include "tool/soak/session_play.h"

namespace simhost::tool {

struct SessionWork {
    std::uint64_t seed = 1;
    std::uint64_t first = 0;  ///< number
    std::uint64_t count = 1;  ///<
    /// For the tests of this command: "block:3,crash:7" is a crash in session 7; see SessionStage::play.
    std::string sabotage;
};

struct WrongSession {
    std::uint64_t number = 0;
    std::string what;  ///< one line
};

/// What a group of sessions came to.
struct SessionReport {
    SessionCounts counts;
    std::vector<WrongSession> wrong;
    double seconds = 0;  ///< of work, all processes together
};

// Files in the folder of a group.
inline constexpr const char* kGroupAt = "at";          ///< number of the session under way
inline constexpr const char* kGroupReport = "report";  ///< JSON, once all are over
inline constexpr const char* kGroupWrong = "wrong";    ///< a line of JSON for each wrong one so far
inline constexpr const char* kGroupCrash = "crash";    ///< where it crashed

/// In the process of a group: plays all and writes the report. Throws ToolError.
void playGroup(const GlobalOptions& global, const SessionWork& work, const std::string& folderUtf8);

/// In this process, one session, `work.first`: its log. True when nothing was wrong. Throws ToolError.
bool playOne(const GlobalOptions& global, const SessionWork& work, std::string& log);

}  // namespace simhost::tool
