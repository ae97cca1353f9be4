// What a validation is to do: the options, and the checks that they choose. Pure functions; any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "tool/validate/base/check.h"

namespace simhost::tool::validate {

inline constexpr std::uint32_t kMostRepeats = 1000000;
inline constexpr std::uint32_t kMostJobs = 64;
inline constexpr double kLeastTimeout = 0.1;  // seconds
inline constexpr double kMostTimeout = 86400;

struct ValidateOptions {
    std::string plugin = {};
    std::vector<std::string> clips = {};
    int level = 5;
    std::uint64_t seed = 1;
    std::uint32_t repeat = 1;
    bool randomise = false;              ///< the checks in another order for each seed
    std::vector<std::string> only = {};  ///< ids or groups; whatever their level
    std::vector<std::string> skip = {};  ///< ids or groups
    std::uint32_t jobs = 0;  ///< processes at a time; 0: as many as there are processors, at most 4
    double timeout = 60;     ///< seconds for one check
    std::string json = {};
    std::string junit = {};
    std::string html = {};
    std::string dumps = {};  ///< folder for minidumps; empty for none
};

/// One run of one check.
struct PlannedCheck {
    std::string id;
    std::uint64_t seed = 1;
};

/// The checks to run, in order. Throws ToolError (kUsage) for a word of --only or --skip that names no check,
/// with the name that is nearest.
std::vector<PlannedCheck> plannedChecks(const ValidateOptions& options, const std::vector<Check>& checks);

/// Takes over what the text of a configuration file says: a JSON object with the long names of the options,
/// "level": 7, "skip": ["cost"], "clips": […]. Only names that `given` does not hold: the command line wins.
/// Values have the limits of the command line. `folder` is what relative paths of clips count from. Throws
/// ToolError (kUsage).
void applyConfiguration(ValidateOptions& options, const std::string& text, const std::string& folder,
                        const std::vector<std::string>& given);

}  // namespace simhost::tool::validate
