#include "tests/unit/video/allocation_counter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting = false;
std::atomic<std::size_t> allocations = 0;

}  // namespace

#if ORVANTIS_COUNT_ALLOCATIONS

// The array forms and those with std::nothrow come here too.
void* operator new(std::size_t size) {
    if (counting) ++allocations;
    if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif

namespace orvantis::test {

AllocationCounter::AllocationCounter() noexcept {
    allocations = 0;
    counting = true;
}

AllocationCounter::~AllocationCounter() {
    counting = false;
}

std::size_t AllocationCounter::count() const noexcept {
    return allocations;
}

bool AllocationCounter::isAvailable() noexcept {
    return ORVANTIS_COUNT_ALLOCATIONS != 0;
}

}  // namespace orvantis::test
