#include "tests/unit/avi/counted_memory.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Each block is preceded by its size, in room that keeps the block aligned.
constexpr std::size_t kPrefix = alignof(std::max_align_t) > sizeof(std::size_t) ? alignof(std::max_align_t)
                                                                                : sizeof(std::size_t);

orvantis::test::MemoryCount g_count;
std::int64_t g_failIn = -1;
bool g_failFromThere = false;
std::size_t g_failFromBytes = 0;

bool mustFail(std::size_t bytes) noexcept {
    if (g_failFromBytes != 0 && bytes >= g_failFromBytes) return true;
    if (g_failIn < 0) return false;
    if (g_failIn > 0) {
        --g_failIn;
        return false;
    }
    if (!g_failFromThere) g_failIn = -1;
    return true;
}

void* allocate(std::size_t bytes) noexcept {
    ++g_count.calls;
    if (mustFail(bytes)) return nullptr;
    auto* const block = static_cast<unsigned char*>(std::malloc(bytes + kPrefix));
    if (block == nullptr) return nullptr;
    std::memcpy(block, &bytes, sizeof(bytes));
    g_count.current += bytes;
    if (g_count.current > g_count.peak) g_count.peak = g_count.current;
    return block + kPrefix;
}

void release(void* pointer) noexcept {
    if (pointer == nullptr) return;
    unsigned char* const block = static_cast<unsigned char*>(pointer) - kPrefix;
    std::size_t bytes = 0;
    std::memcpy(&bytes, block, sizeof(bytes));
    g_count.current -= bytes;
    std::free(block);
}

}  // namespace

namespace orvantis::test {

void startCounting() noexcept {
    g_count = MemoryCount{};
    g_failIn = -1;
    g_failFromBytes = 0;
}

MemoryCount counted() noexcept {
    return g_count;
}

void failAllocation(std::int64_t number, bool fromThere) noexcept {
    g_failIn = number;
    g_failFromThere = fromThere;
}

void failAllocationsFrom(std::size_t bytes) noexcept {
    g_failFromBytes = bytes;
}

}  // namespace orvantis::test

void* operator new(std::size_t bytes) {
    void* const block = allocate(bytes);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}
void* operator new[](std::size_t bytes) {
    return operator new(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return allocate(bytes);
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
