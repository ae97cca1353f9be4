#include "bench/allocation_count.h"

#include <malloc.h>
#include <sys/mman.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <system_error>

namespace {
std::atomic<std::uint64_t> g_count = 0;
}

// The allocator's own entry points, behind ours.
extern "C" {
void* __libc_malloc(std::size_t size);                   // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)
void* __libc_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)
void* __libc_realloc(void* block, std::size_t size);     // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT(bugprone-reserved-identifier,cert-dcl37-c)

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
    // Setting the threshold also stops it from growing.
    (void)mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    (void)mallopt(M_TRIM_THRESHOLD, 128 * 1024);
}

void sweepCaches() {
    constexpr std::size_t kBytes = 192 * 1024 * 1024;  // several times the largest cache
    void* const block = mmap(nullptr, kBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (block == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
    std::memset(block, 1, kBytes);
    (void)munmap(block, kBytes);
}

}  // namespace orvantis::bench
