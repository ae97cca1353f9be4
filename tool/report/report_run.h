// Makes the report on one file, with the log of the run. Main thread only.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tool/report/report_page.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/run/hosted_run.h"

namespace simhost::tool {

struct ReportWish {
    std::optional<std::uint32_t> frames;  ///< shown; unset: as many as a page has room for
    bool log = true;                      ///< of the run
};

struct MadeReport {
    Report report;
    int result = kSuccess;  ///< exit code
    std::optional<ToolError>
        failure;  ///< why the plug-in refuses the file; it has been told on the error stream
};

/// Throws ToolError when the file cannot be read or the plug-in cannot be loaded.
MadeReport makeReport(const std::string& file, const GlobalOptions& global, const ReportWish& wish);

}  // namespace simhost::tool
