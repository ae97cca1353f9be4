// Many sessions in several processes at a time. A session that crashes or hangs ends its process; a new one
// goes on with the session behind it. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tool/shared/run/hosted_run.h"
#include "tool/soak/session_group.h"

namespace simhost::tool {

struct SessionRunOptions {
    SessionWork work;             ///< all sessions
    std::uint32_t jobs = 1;       ///< processes at a time
    double timeout = 60;          ///< seconds for one session
    std::size_t mostWrong = 100;  ///< wrong sessions after which no more are begun
};

/// Tells of each wrong session by `wrong` as it is known, and of sessions that are over by `done`. Throws
/// ToolError, also once the program is to end.
SessionReport runSessions(const GlobalOptions& global, const SessionRunOptions& options,
                          const std::function<void(const WrongSession&)>& wrong,
                          const std::function<void(std::uint64_t)>& done);

}  // namespace simhost::tool
