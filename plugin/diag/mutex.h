// The plug-in's mutex. It is the standard one; this name is where the exploration of schedules puts its own
// in its place, by a header of the same path that its build finds first (tests/schedules/seam/).
#pragma once

#include <mutex>

namespace orvantis {

/// For std::lock_guard and std::unique_lock.
using Mutex = std::mutex;

}  // namespace orvantis
