// The log on the page of a report. Pure function; any thread.
#pragma once

#include <span>
#include <string>

#include "simhost/tool/log_calls.h"

namespace simhost::tool {

/// Every call with its answer and what it means, failures marked; folded in unless there is one. Long logs
/// are cut, failures and notes kept as long as possible. Empty without a log.
std::string logSection(std::span<const LogItem> items);

}  // namespace simhost::tool
