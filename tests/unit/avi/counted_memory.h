// Counts what this program's operator new hands out, and lets it fail on cue. One thread only.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvantis::test {

struct MemoryCount {
    std::size_t current = 0;  ///< bytes handed out now
    std::size_t peak = 0;     ///< most at any time since startCounting()
    std::uint64_t calls = 0;  ///< allocations since then
};

/// Counting starts here: what was handed out before does not count.
void startCounting() noexcept;
MemoryCount counted() noexcept;

/// Allocation number `number` from now on (0 is the next one) throws std::bad_alloc, and all later ones too
/// with `fromThere`. A negative number: none.
void failAllocation(std::int64_t number, bool fromThere) noexcept;
/// Allocations of this many bytes or more throw std::bad_alloc. 0: none.
void failAllocationsFrom(std::size_t bytes) noexcept;

}  // namespace orvantis::test
