// See calling_module.h.
#include "tests/support/allocation_meter/calling_module.h"

#include <dlfcn.h>
#include <link.h>
#include <unwind.h>

#include <atomic>
#include <cstdint>

namespace orvantis::test {

namespace {

struct Range {
    std::uintptr_t first = 0;
    std::uintptr_t last = 0;
    bool holds(std::uintptr_t address) const noexcept { return address >= first && address < last; }
};

Range g_module;
Range g_runtime;  // the C++ library
std::atomic<bool> g_watching = false;

struct Search {
    std::uintptr_t address;
    Range found;
};

int lookAtModule(dl_phdr_info* info, std::size_t /*size*/, void* data) {
    auto* const search = static_cast<Search*>(data);
    Range all{~std::uintptr_t{0}, 0};
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& segment = info->dlpi_phdr[i];
        if (segment.p_type != PT_LOAD) {
            continue;
        }
        const std::uintptr_t first = info->dlpi_addr + segment.p_vaddr;
        if (first < all.first) {
            all.first = first;
        }
        if (first + segment.p_memsz > all.last) {
            all.last = first + segment.p_memsz;
        }
    }
    if (!all.holds(search->address)) {
        return 0;
    }
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
    if (!walk->inRuntime) {
        return _URC_NO_REASON;
    }
    walk->forModule = g_module.holds(address);
    return _URC_END_OF_STACK;
}

}  // namespace

void watchModuleOf(const void* address) {
    g_module = rangeOf(address);
    // A function that the library itself defines, under its linker's name.
    g_runtime = rangeOf(dlsym(RTLD_DEFAULT, "_ZSt9terminatev"));
    g_watching = true;
}

bool isForWatchedModule(const void* callerAddress) noexcept {
    if (!g_watching.load(std::memory_order_relaxed)) {
        return true;
    }
    const auto caller = reinterpret_cast<std::uintptr_t>(callerAddress);
    if (g_module.holds(caller)) {
        return true;
    }
    if (!g_runtime.holds(caller)) {
        return false;
    }
    Walk walk;
    _Unwind_Backtrace(lookAtFrame, &walk);
    return walk.forModule;
}

}  // namespace orvantis::test
