// soak --sessions and --session: the random sessions as the command line asks for them. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {

struct SessionWords {
    std::uint64_t sessions = 0;            ///< how many; 0: not asked for
    std::uint64_t first = 0;               ///< number of the first
    std::optional<std::uint64_t> session;  ///< this one alone, with its log
    std::uint32_t jobs = 0;                ///< processes at a time; 0: one for each processor, at most 4
    double timeout = 60;
    std::string child;  ///< folder, in the process of a group
    std::string sabotage;

    bool asked() const { return sessions > 0 || session.has_value(); }
};

/// Gives the exit code. `output` is the file for the JSON object; empty for the standard output.
int runSessionWords(const GlobalOptions& global, const SessionWords& words, std::uint64_t seed,
                    const std::string& output);

}  // namespace simhost::tool
