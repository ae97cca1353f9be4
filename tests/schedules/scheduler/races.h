// The watch over plain memory: two accesses of different threads to one byte, one of them a write, must be
// ordered by what the threads have told each other, in whichever order they came this time. The compiler puts
// a call before every access of the plug-in (-fsanitize=thread without its runtime); the clocks are those of
// the seam's mutexes, atomics and futures. Without that instrumentation nothing is seen here.
#pragma once

#include <cstddef>
#include <cstdint>

#include "tests/schedules/scheduler/vector_clock.h"

namespace schedules::races {

#ifdef ORVANTIS_SCHEDULES_WATCH
inline constexpr bool kWatches = true;
#else
inline constexpr bool kWatches = false;
#endif

/// A new schedule: everything known is forgotten.
void forget() noexcept;
/// From here on accesses are those of `thread`, whose clock is `clock`.
void runs(unsigned thread, const VectorClock& clock) noexcept;
/// Whether accesses count: not while one thread sets up or takes down. Returns whether they did.
bool watch(bool on) noexcept;

/// An access of the running thread. `site` is where in the code. Ends the schedule when it is one to freed
/// memory, or is not ordered after an earlier one that it conflicts with.
void access(const void* at, std::size_t bytes, bool write, const void* site) noexcept;
/// The memory is given back: no access may follow.
void freed(const void* at, std::size_t bytes, const void* site) noexcept;

}  // namespace schedules::races
