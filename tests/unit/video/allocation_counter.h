// Counts what the process asks of operator new while a counter lives; one counter at a time. Linked into the
// test program, it replaces the global operator new.
#pragma once

#include <cstddef>

namespace orvantis::test {

class AllocationCounter {
 public:
    AllocationCounter() noexcept;
    ~AllocationCounter();
    AllocationCounter(const AllocationCounter&) = delete;
    AllocationCounter& operator=(const AllocationCounter&) = delete;

    std::size_t count() const noexcept;

    /// False in a build that cannot count.
    static bool isAvailable() noexcept;
};

}  // namespace orvantis::test
