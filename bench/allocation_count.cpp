#include "bench/allocation_count.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>

namespace {
std::atomic<std::uint64_t> g_count = 0;
}

// The allocator's own entry points, behind ours.
extern "C" {
void* __libc_malloc(std::size_t size);  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)
void* __libc_calloc(std::size_t count,
                    std::size_t size);                // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)
void* __libc_realloc(void* block, std::size_t size);  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)
void* __libc_memalign(std::size_t alignment,
                      std::size_t size);  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)

[[gnu::visibility("default")]] void* malloc(std::size_t size) noexcept {
    g_count.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}
[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) noexcept {
    g_count.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}
[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) noexcept {
    g_count.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(block, size);
}
[[gnu::visibility("default")]] void* memalign(std::size_t alignment, std::size_t size) noexcept {
    g_count.fetch_add(1, std::memory_order_relaxed);
    return __libc_memalign(alignment, size);
}
[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return memalign(alignment, size);
}
}

namespace orvantis::bench {

std::uint64_t allocationCount() noexcept {
    return g_count.load(std::memory_order_relaxed);
}

std::uint64_t heapBytes() noexcept {
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void useFreshMemory() noexcept {
    constexpr int kFreshBytes = 64 * 1024;
    // Setting the threshold also stops it from growing.
    (void)mallopt(M_MMAP_THRESHOLD, kFreshBytes);
    (void)mallopt(M_TRIM_THRESHOLD, kFreshBytes);
}

}  // namespace orvantis::bench
