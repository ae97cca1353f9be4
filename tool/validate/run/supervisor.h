// Runs checks in processes of their own, several checks in each, and keeps what becomes of them. A check that
// crashes or hangs ends its process; a new one goes on with the check behind it. Main thread only.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tool/validate/base/outcome.h"
#include "tool/validate/base/trial.h"
#include "tool/validate/run/plan.h"

namespace simhost::tool::validate {

struct SupervisorOptions {
    std::uint32_t jobs = 1;  ///< processes at a time
    double timeout = 60;     ///< seconds for one check
    std::string folder;      ///< for its files: exists, and is removed by the caller
    std::string dumps;       ///< folder for minidumps; empty for none
};

/// The results in the order of the plan. `done` is told of each as it comes. Throws ToolError, also once the
/// program is to end.
std::vector<CheckResult> superviseChecks(const TrialSetting& setting, const std::vector<PlannedCheck>& plan,
                                         const SupervisorOptions& options,
                                         const std::function<void(const CheckResult&)>& done);

}  // namespace simhost::tool::validate
