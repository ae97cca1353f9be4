// The log on the page of a report. Pure function; any thread.
#pragma once

#include <span>
#include <string>

#include "tool/shared/logs/log_calls.h"

namespace simhost::tool {

/// What failed, then every call with its answer and what it means, folded in, failures marked. Long logs are
/// cut, failures and notes kept as long as possible. Empty without a log.
std::string logSection(std::span<const LogItem> items);

}  // namespace simhost::tool
