#include "tests/schedules/scheduler/memory.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "tests/schedules/scheduler/fibre.h"
#include "tests/schedules/scheduler/races.h"
#include "tests/schedules/scheduler/vector_clock.h"

namespace schedules::memory {

namespace {

constexpr std::size_t kHeapBytes = std::size_t{4} << 20;
constexpr std::size_t kStacksBytes = kMaxThreads * Fibre::kStackBytes;

struct Region {
    std::byte* begin = nullptr;
    std::byte* next = nullptr;
    std::size_t blocks = 0;
    bool active = false;
};
constinit Region g_region;

Region& region() noexcept {
    if (g_region.begin == nullptr) {
        // At one place in every process: what the plug-in makes of addresses is the same when a schedule is
        // run again.
        void* const mapped = mmap(reinterpret_cast<void*>(std::uintptr_t{0x2A0000000000}),
                                  kHeapBytes + kStacksBytes, PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE, -1, 0);
        if (mapped == MAP_FAILED) {
            std::abort();
        }
        g_region.begin = g_region.next = static_cast<std::byte*>(mapped);
    }
    return g_region;
}

}  // namespace

void begin() noexcept {
    region().next = region().begin;
    g_region.blocks = 0;
    g_region.active = true;
}

std::size_t end() noexcept {
    g_region.active = false;
    return g_region.blocks;
}

Outside::Outside() noexcept : m_was(g_region.active), m_watched(races::watch(false)) {
    g_region.active = false;
}

Outside::~Outside() {
    g_region.active = m_was;
    races::watch(m_watched);
}

std::byte* regionBegin() noexcept {
    return region().begin;
}

std::byte* regionEnd() noexcept {
    return region().begin + kHeapBytes + kStacksBytes;
}

std::byte* stackOf(unsigned number) noexcept {
    return region().begin + kHeapBytes + number * Fibre::kStackBytes;
}

std::string placeOf(const void* address) {
    const auto* const at = static_cast<const std::byte*>(address);
    char text[80];
    if (at >= stackOf(0) && at < regionEnd()) {
        const auto offset = static_cast<std::size_t>(at - stackOf(0));
        std::snprintf(text, sizeof text, "the stack of thread %zu, %zu bytes from its end",
                      offset / Fibre::kStackBytes, offset % Fibre::kStackBytes);
    } else if (at >= regionBegin() && at < stackOf(0)) {
        std::snprintf(text, sizeof text, "a block, %p", address);
    } else {
        std::snprintf(text, sizeof text, "a variable, %p", address);
    }
    return text;
}

namespace {

#ifdef ORVANTIS_SCHEDULES_WATCH

constexpr std::size_t kHeader = 16;

void* allocate(std::size_t bytes) noexcept {
    if (!g_region.active) {
        return std::malloc(bytes);
    }
    const std::size_t room = kHeader + ((bytes + 15) & ~std::size_t{15});
    if (room < bytes || room > static_cast<std::size_t>(g_region.begin + kHeapBytes - g_region.next)) {
        std::fputs("schedules: a schedule takes more memory than there is for one\n", stderr);
        std::abort();
    }
    auto* const header = reinterpret_cast<std::size_t*>(g_region.next);
    header[0] = bytes;
    g_region.next += room;
    ++g_region.blocks;
    return header + kHeader / sizeof(std::size_t);
}

void release(void* block, const void* site) noexcept {
    auto* const at = static_cast<std::byte*>(block);
    if (at < g_region.begin || at >= g_region.begin + kHeapBytes || g_region.begin == nullptr) {
        std::free(block);
        return;
    }
    --g_region.blocks;
    races::freed(at, *reinterpret_cast<std::size_t*>(at - kHeader), site);
}

#endif

}  // namespace

}  // namespace schedules::memory

#ifdef ORVANTIS_SCHEDULES_WATCH

void* operator new(std::size_t bytes) {
    void* const block = schedules::memory::allocate(bytes);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return schedules::memory::allocate(bytes);
}
void operator delete(void* block) noexcept {
    if (block != nullptr) {
        schedules::memory::release(block, __builtin_return_address(0));
    }
}
void operator delete(void* block, std::size_t) noexcept {
    if (block != nullptr) {
        schedules::memory::release(block, __builtin_return_address(0));
    }
}

#endif
