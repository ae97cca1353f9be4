// The doctor's look at one clip: opened through the plug-in as the host does it. Main thread only.
#pragma once

#include <string>
#include <vector>

#include "tool/doctor/doctor_checks.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {

/// Description, the first and the middle frame, a second of every sound, and what is odd about the file.
std::vector<Check> checkClip(const HostedRun& hosted, const std::string& clipUtf8);

}  // namespace simhost::tool
