// Everything that the doctor looks at, in its order. Main thread only.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tool/doctor/doctor_checks.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {

struct DoctorQuestion {
    std::vector<std::string> clips;    ///< files
    std::vector<std::string> folders;  ///< where plug-ins are looked for; empty: where hosts look
};

/// Tells the versions, then every check as it is made. What it finds is no failure; ToolErrors are
/// interruptions.
void examine(const GlobalOptions& global, const DoctorQuestion& question,
             const std::function<void(const Versions&)>& tellVersions,
             const std::function<void(const Check&)>& tell);

}  // namespace simhost::tool
