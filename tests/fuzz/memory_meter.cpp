#include "tests/fuzz/memory_meter.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> g_current = 0;
std::atomic<std::size_t> g_peak = 0;
std::atomic<std::size_t> g_base = 0;

void* allocate(std::size_t bytes) noexcept {
    void* const block = std::malloc(bytes == 0 ? 1 : bytes);
    if (block == nullptr) return nullptr;
    const std::size_t size = malloc_usable_size(block);
    const std::size_t now = g_current.fetch_add(size) + size;
    std::size_t peak = g_peak.load();
    while (now > peak && !g_peak.compare_exchange_weak(peak, now)) {
    }
    return block;
}

void* allocateOrThrow(std::size_t bytes) {
    void* const block = allocate(bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void release(void* block) noexcept {
    if (block == nullptr) return;
    g_current -= malloc_usable_size(block);
    std::free(block);
}

}  // namespace

namespace fuzz {

void startMeter() noexcept {
    g_base = g_current.load();
    g_peak = g_base.load();
}

std::size_t peakBytes() noexcept {
    return g_peak - g_base;
}

}  // namespace fuzz

void* operator new(std::size_t bytes) {
    return allocateOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
    return allocateOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t& /*unused*/) noexcept {
    return allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t& /*unused*/) noexcept {
    return allocate(bytes);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t /*unused*/) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t /*unused*/) noexcept {
    release(block);
}
void operator delete(void* block, const std::nothrow_t& /*unused*/) noexcept {
    release(block);
}
void operator delete[](void* block, const std::nothrow_t& /*unused*/) noexcept {
    release(block);
}
