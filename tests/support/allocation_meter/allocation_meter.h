// What a test program gets from operator new: how often, how much at once, and what becomes of the code when
// it fails. Linked into a program it replaces the operators of that program; natively also those of modules
// that it loads, which take theirs from it. Any thread may allocate; one thread at a time calls these.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvantis::test {

struct AllocationCount {
    std::uint64_t calls = 0;  ///< allocations since startCounting()
    std::size_t current = 0;  ///< bytes handed out since then and not given back
    std::size_t peak = 0;     ///< most of them at any time
};

/// False in a build whose sanitizer has the operators itself: nothing is counted and nothing fails.
bool canCountAllocations() noexcept;

/// Counting starts here, and nothing is to fail: what was handed out before does not count.
void startCounting() noexcept;
AllocationCount counted() noexcept;

/// Allocation number `number` from now on (0 is the next one) throws std::bad_alloc, and all later ones too
/// with `fromThere`. A negative number: none.
void failAllocation(std::int64_t number, bool fromThere) noexcept;
/// Allocations of this many bytes or more throw std::bad_alloc. 0: none.
void failAllocationsFrom(std::size_t bytes) noexcept;

/// From now on only the allocations of the module that holds this address are calls that count or fail, and
/// those that the C++ library makes for it. Native builds only. While nothing of the module runs.
void countOnlyModuleOf(const void* address);

}  // namespace orvantis::test
