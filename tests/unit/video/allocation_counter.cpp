#include "tests/unit/video/allocation_counter.h"

#include <cstdlib>
#include <new>

namespace {

thread_local bool counting = false;
thread_local std::size_t allocations = 0;

void* allocate(std::size_t size) {
    if (counting) ++allocations;
    if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

}  // namespace

// The array forms and those with std::nothrow come here too.
void* operator new(std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

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

}  // namespace orvantis::test
