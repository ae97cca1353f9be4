// Collects what a report tells of a file: from the file itself, and from the plug-in as its host would ask
// it. Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/report/report_page.h"
#include "tool/shared/base/hosted_run.h"

namespace simhost::tool {

/// What the file tells without the plug-in. Throws ToolError when it cannot be read.
Report reportOnFile(const std::string& pathUtf8);

/// What the plug-in tells: description, at most `mostFrames` pictures spread over the clip, sound. Throws
/// ToolError when it refuses the file; what was learned until then stays in `out`.
void addPluginsPart(const HostedRun& hosted, std::uint32_t mostFrames, Report& out);

/// The log of the run among `logs`: the one in which this thread asked about the report's file. Gives its
/// path, empty when there is none.
std::string addLog(const std::vector<std::string>& logs, Report& out);

}  // namespace simhost::tool
