// How failures are told: in words on the error stream, and as an object for programs that asked for JSON.
// Main thread only.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

/// {"kind": "missing-file", "message": "…", "advice": "…", "exitCode": 1}
nlohmann::ordered_json failureJson(const ToolError& error);

/// With `json`, {"error": {…}} goes to the standard output as well. Gives the exit code.
int tellFailure(const ToolError& error, bool json);

}  // namespace simhost::tool
