#include "tests/support/allocation_meter/allocation_meter.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

#include "tests/support/allocation_meter/calling_module.h"

#if defined(__GNUC__)
#define ORVANTIS_CALLER __builtin_return_address(0)
#else
#define ORVANTIS_CALLER nullptr
#endif

namespace {

// Each block is preceded by its size, in room that keeps the block aligned.
constexpr std::size_t kPrefix = alignof(std::max_align_t) > sizeof(std::size_t) ? alignof(std::max_align_t)
                                                                                : sizeof(std::size_t);

std::atomic<std::uint64_t> g_calls = 0;
// Bytes of all blocks, of all modules; what they were when counting started; the most since then.
std::atomic<std::size_t> g_current = 0;
std::atomic<std::size_t> g_base = 0;
std::atomic<std::size_t> g_peak = 0;
// The call that fails, counted from 0; none when negative.
std::atomic<std::int64_t> g_failAt = -1;
std::atomic<bool> g_failFromThere = false;
std::atomic<std::size_t> g_failFromBytes = 0;

bool mustFail(std::size_t bytes, const void* caller) noexcept {
    if (!orvantis::test::isForWatchedModule(caller)) {
        return false;
    }
    const auto number = static_cast<std::int64_t>(g_calls.fetch_add(1));
    const std::size_t fromBytes = g_failFromBytes.load();
    if (fromBytes != 0 && bytes >= fromBytes) {
        return true;
    }
    const std::int64_t failAt = g_failAt.load();
    return failAt >= 0 && (number == failAt || (number > failAt && g_failFromThere.load()));
}

void* allocate(std::size_t bytes, const void* caller) noexcept {
    if (mustFail(bytes, caller)) {
        return nullptr;
    }
    auto* const block = static_cast<unsigned char*>(std::malloc(bytes + kPrefix));
    if (block == nullptr) {
        return nullptr;
    }
    std::memcpy(block, &bytes, sizeof(bytes));
    const std::size_t now = g_current.fetch_add(bytes) + bytes;
    std::size_t peak = g_peak.load();
    while (now > peak && !g_peak.compare_exchange_weak(peak, now)) {
    }
    return block + kPrefix;
}

void* allocateOrThrow(std::size_t bytes, const void* caller) {
    void* const block = allocate(bytes, caller);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void release(void* pointer) noexcept {
    if (pointer == nullptr) {
        return;
    }
    unsigned char* const block = static_cast<unsigned char*>(pointer) - kPrefix;
    std::size_t bytes = 0;
    std::memcpy(&bytes, block, sizeof(bytes));
    g_current -= bytes;
    std::free(block);
}

}  // namespace

namespace orvantis::test {

bool canCountAllocations() noexcept {
    return ORVANTIS_COUNT_ALLOCATIONS != 0;
}

void startCounting() noexcept {
    g_failAt = -1;
    g_failFromBytes = 0;
    g_calls = 0;
    g_base = g_current.load();
    g_peak = g_base.load();
}

AllocationCount counted() noexcept {
    const std::size_t base = g_base;
    const std::size_t current = g_current;
    return {g_calls, current > base ? current - base : 0, g_peak - base};
}

void failAllocation(std::int64_t number, bool fromThere) noexcept {
    g_failFromThere = fromThere;
    g_failAt = number < 0 ? -1 : static_cast<std::int64_t>(g_calls.load()) + number;
}

void failAllocationsFrom(std::size_t bytes) noexcept {
    g_failFromBytes = bytes;
}

void countOnlyModuleOf(const void* address) {
    watchModuleOf(address);
}

}  // namespace orvantis::test

#if ORVANTIS_COUNT_ALLOCATIONS

void* operator new(std::size_t bytes) {
    return allocateOrThrow(bytes, ORVANTIS_CALLER);
}
void* operator new[](std::size_t bytes) {
    return allocateOrThrow(bytes, ORVANTIS_CALLER);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes, ORVANTIS_CALLER);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes, ORVANTIS_CALLER);
}
void operator delete(void* pointer) noexcept {
    release(pointer);
}
void operator delete[](void* pointer) noexcept {
    release(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    release(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    release(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    release(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    release(pointer);
}

#endif
