#include "tests/faults/module_allocations.h"

#include <dlfcn.h>
#include <link.h>
#include <malloc.h>
#include <unwind.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <new>

namespace {

struct Range {
    std::uintptr_t first = 0;
    std::uintptr_t last = 0;
    bool holds(std::uintptr_t address) const noexcept { return address >= first && address < last; }
};

Range g_module;
Range g_runtime;  // the C++ library
std::atomic<bool> g_counting = false;
std::atomic<std::uint64_t> g_count = 0;
std::atomic<std::uint64_t> g_failAt = 0;
std::atomic<bool> g_failFromThere = false;
std::atomic<std::int64_t> g_live = 0;

struct Search {
    std::uintptr_t address;
    Range found;
};

int lookAtModule(dl_phdr_info* info, std::size_t /*size*/, void* data) {
    auto* const search = static_cast<Search*>(data);
    Range all{~std::uintptr_t{0}, 0};
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD) continue;
        const std::uintptr_t first = info->dlpi_addr + segment.p_vaddr;
        if (first < all.first) all.first = first;
        if (first + segment.p_memsz > all.last) all.last = first + segment.p_memsz;
    }
    if (!all.holds(search->address)) return 0;
    search->found = all;
    return 1;
}

Range rangeOf(const void* address) {
    Search search{reinterpret_cast<std::uintptr_t>(address), {}};
    dl_iterate_phdr(lookAtModule, &search);
    return search.found;
}

struct Walk {
    bool inRuntime = false;
    bool forModule = false;
};

// The first caller outside the C++ library, behind the frames of this file.
_Unwind_Reason_Code lookAtFrame(_Unwind_Context* context, void* data) {
    auto* const walk = static_cast<Walk*>(data);
    const std::uintptr_t address = _Unwind_GetIP(context);
    if (g_runtime.holds(address)) {
        walk->inRuntime = true;
        return _URC_NO_REASON;
    }
    if (!walk->inRuntime) return _URC_NO_REASON;
    walk->forModule = g_module.holds(address);
    return _URC_END_OF_STACK;
}

bool isForModule(std::uintptr_t caller) {
    if (g_module.holds(caller)) return true;
    if (!g_runtime.holds(caller)) return false;
    Walk walk;
    _Unwind_Backtrace(lookAtFrame, &walk);
    return walk.forModule;
}

bool mustFail(std::uintptr_t caller) {
    if (!g_counting.load(std::memory_order_relaxed) || !isForModule(caller)) return false;
    const std::uint64_t number = ++g_count;
    const std::uint64_t failAt = g_failAt.load();
    return failAt != 0 && (number == failAt || (g_failFromThere.load() && number > failAt));
}

void* allocate(std::size_t bytes, std::uintptr_t caller) noexcept {
    if (mustFail(caller)) return nullptr;
    void* const block = std::malloc(bytes == 0 ? 1 : bytes);
    g_live += static_cast<std::int64_t>(malloc_usable_size(block));
    return block;
}

void giveBack(void* block) noexcept {
    g_live -= static_cast<std::int64_t>(malloc_usable_size(block));
    std::free(block);
}

void* allocateOrThrow(std::size_t bytes, std::uintptr_t caller) {
    void* const block = allocate(bytes, caller);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace

#define ORVANTIS_CALLER reinterpret_cast<std::uintptr_t>(__builtin_return_address(0))

namespace faults {

void watchModule(const void* address) {
    g_module = rangeOf(address);
    // A function that the library itself defines, under its linker's name.
    g_runtime = rangeOf(dlsym(RTLD_DEFAULT, "_ZSt9terminatev"));
}

void startCounting(std::uint64_t failAt, bool fromThere) {
    g_count = 0;
    g_failFromThere = fromThere;
    g_failAt = failAt;
    g_counting = true;
}

std::uint64_t stopCounting() {
    g_counting = false;
    g_failAt = 0;
    return g_count;
}

std::int64_t liveBytes() {
    return g_live;
}

}  // namespace faults

void* operator new(std::size_t bytes) {
    return allocateOrThrow(bytes, ORVANTIS_CALLER);
}
void* operator new[](std::size_t bytes) {
    return allocateOrThrow(bytes, ORVANTIS_CALLER);
}
void* operator new(std::size_t bytes, const std::nothrow_t& /*unused*/) noexcept {
    return allocate(bytes, ORVANTIS_CALLER);
}
void* operator new[](std::size_t bytes, const std::nothrow_t& /*unused*/) noexcept {
    return allocate(bytes, ORVANTIS_CALLER);
}
void operator delete(void* pointer) noexcept {
    giveBack(pointer);
}
void operator delete[](void* pointer) noexcept {
    giveBack(pointer);
}
void operator delete(void* pointer, std::size_t /*unused*/) noexcept {
    giveBack(pointer);
}
void operator delete[](void* pointer, std::size_t /*unused*/) noexcept {
    giveBack(pointer);
}
void operator delete(void* pointer, const std::nothrow_t& /*unused*/) noexcept {
    giveBack(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t& /*unused*/) noexcept {
    giveBack(pointer);
}
