#include "allocation_count.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<std::uint64_t> allocations = 0;
}  // namespace

namespace orvantis::audio_test {

std::uint64_t allocationCount() noexcept {
    return allocations.load();
}

}  // namespace orvantis::audio_test

// The array and nothrow forms of the library come down to these.
void* operator new(std::size_t size) {
    ++allocations;
    if (void* const block = std::malloc(size == 0 ? 1 : size)) return block;
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
