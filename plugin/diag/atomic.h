// The plug-in's atomics by which threads hand things over. They are the standard ones; this name is where the
// exploration of schedules puts its own in their place, by a header of the same path that its build finds
// first (tests/schedules/seam/).
#pragma once

#include <atomic>

namespace orvantis {

template <class T>
using Atomic = std::atomic<T>;

}  // namespace orvantis
