// Included ahead of every source file of the plug-in that is built without calls of the log, to measure what
// they cost while the log is off: the log's header comes first, then its calls become nothing, arguments and
// all.
#pragma once

#include "diag/log.h"

namespace orvantis {
constexpr void noLogCall() noexcept {}
constexpr bool noLogEnabled() noexcept {
    return false;
}
}  // namespace orvantis

#define logMessage(...) noLogCall()
#define logEnabled() noLogEnabled()
