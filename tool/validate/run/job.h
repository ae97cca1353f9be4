// What the tool hands to a process of its own that runs checks, and what it gets back: files of JSON, since
// what the plug-in prints goes the ordinary ways. Internal to the validator.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "tool/validate/base/outcome.h"
#include "tool/validate/base/trial.h"
#include "tool/validate/run/plan.h"

namespace simhost::tool::validate {

struct Job {
    TrialSetting setting;  ///< without its function
    std::vector<PlannedCheck> checks;
    std::string results;  ///< file that gets a line for each event
    std::string crash;    ///< file that gets the place of a crash
    std::string dump;     ///< file for the minidump; empty for none
};

std::string jobText(const Job& job);
/// Throws ToolError when the text is no job.
Job parseJob(const std::string& text);

/// One line of the results: a check begins, a phase of it begins or ends, or the check is over.
struct JobEvent {
    enum class Kind { kBegin, kPhase, kEnd } kind = Kind::kBegin;
    std::string phase;   ///< kPhase; empty when it is over
    CheckResult result;  ///< kEnd
};

std::string eventLine(const JobEvent& event);
/// Takes the whole lines out of `text`, and leaves what has not been written to its end.
std::vector<JobEvent> takeEvents(std::string& text);

nlohmann::ordered_json findingJson(const Finding& finding);

/// Runs the checks of a job in this process. The exit code of the process.
int runJob(const std::string& jobFile);

}  // namespace simhost::tool::validate
