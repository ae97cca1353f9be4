// Counts what one loaded module gets from operator new, and lets it fail on cue; this program's own
// allocations and those of other modules are left alone. Native builds, where a module takes operator new
// from the program. Allocations that the C++ library makes for the module count as the module's.
#pragma once

#include <cstdint>

namespace faults {

/// The module that holds this address. Before anything else, and while nothing of it runs.
void watchModule(const void* address);

/// Counting starts here; allocation number `failAt` from 1 throws std::bad_alloc (0: none), with `fromThere`
/// all later ones too.
void startCounting(std::uint64_t failAt, bool fromThere);
/// Ends the failing and answers how many allocations there were. Any thread may allocate meanwhile.
std::uint64_t stopCounting();

/// Bytes that operator new of the whole program has given out and not got back.
std::int64_t liveBytes();

}  // namespace faults
