#include "tests/schedules/scheduler/races.h"

#include <sys/mman.h>

#include <array>
#include <cstdlib>
#include <utility>

#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/scheduler/memory.h"

// The program's own variables lie between these, as the linker has it.
extern "C" char __data_start;        // NOLINT: the linker's names
extern "C" char _end;                // NOLINT
extern "C" char __executable_start;  // NOLINT

namespace schedules::races {

namespace {

/// One access that is remembered. Zero: none.
struct Slot {
    std::uint32_t site = 0;  ///< from the start of the program
    std::uint16_t clock = 0;
    std::uint8_t bytes = 0;   ///< bit for bit which of the eight
    std::uint8_t thread = 0;  ///< with kWrite
};
constexpr std::uint8_t kWrite = 0x80;

/// Eight bytes of memory: the last accesses to them, forgotten by a new number of the schedule.
struct Granule {
    std::uint32_t schedule = 0;
    std::uint8_t freed = 0;
    std::uint8_t next = 0;
    std::array<Slot, 7> slots;
};
static_assert(sizeof(Granule) == 64);

struct Shadow {
    std::uintptr_t begin = 0;
    std::uintptr_t bytes = 0;
    Granule* granules = nullptr;

    void cover(std::uintptr_t from, std::uintptr_t to) noexcept {
        begin = from & ~std::uintptr_t{7};
        bytes = to - begin;
        void* const mapped = mmap(nullptr, (bytes / 8 + 1) * sizeof(Granule), PROT_READ | PROT_WRITE,
                                  MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapped == MAP_FAILED) {
            std::abort();
        }
        granules = static_cast<Granule*>(mapped);
    }
};

struct State {
    bool watching = false;
    unsigned thread = 0;
    const VectorClock* clock = nullptr;
    std::uint32_t schedule = 0;
    Shadow region;
    Shadow variables;
};
constinit State g_state;

std::uint32_t offsetOf(const void* site) noexcept {
    return static_cast<std::uint32_t>(static_cast<const char*>(site) - &__executable_start);
}

const void* siteAt(std::uint32_t offset) noexcept {
    return &__executable_start + offset;
}

Granule* granuleOf(std::uintptr_t at) noexcept {
    if (const std::uintptr_t in = at - g_state.region.begin; in < g_state.region.bytes) {
        return g_state.region.granules + in / 8;
    }
    if (const std::uintptr_t in = at - g_state.variables.begin; in < g_state.variables.bytes) {
        return g_state.variables.granules + in / 8;
    }
    return nullptr;
}

void check(Granule& granule, std::uintptr_t at, std::uint8_t bytes, bool write, const void* site) noexcept {
    if (granule.schedule != g_state.schedule) {
        granule = {};
        granule.schedule = g_state.schedule;
    }
    if (granule.freed != 0) {
        const Slot& last = granule.slots[0];
        foundAccess("use of freed memory", reinterpret_cast<const void*>(at), {g_state.thread, write, site},
                    {last.thread & ~unsigned{kWrite}, true, siteAt(last.site)});
    }
    const auto thread = static_cast<std::uint8_t>(g_state.thread | (write ? kWrite : 0));
    const std::uint16_t now = g_state.clock->at[g_state.thread];
    Slot* place = nullptr;
    for (Slot& slot : granule.slots) {
        if (slot.bytes == 0) {
            if (place == nullptr) {
                place = &slot;
            }
            break;
        }
        const bool wrote = (slot.thread & kWrite) != 0;
        const unsigned other = slot.thread & ~unsigned{kWrite};
        if (other == g_state.thread) {
            if (slot.bytes == bytes && slot.clock == now && wrote >= write) {
                return;
            }
        } else if ((slot.bytes & bytes) != 0 && (wrote || write) && slot.clock > g_state.clock->at[other]) {
            foundAccess("data race", reinterpret_cast<const void*>(at), {g_state.thread, write, site},
                        {other, wrote, siteAt(slot.site)});
        }
        // What is ordered before this access and no wider says nothing more.
        if ((slot.bytes & ~bytes) == 0 && (write || !wrote) &&
            (other == g_state.thread || (write && slot.clock <= g_state.clock->at[other]))) {
            place = &slot;
        }
    }
    if (place == nullptr) {
        place = &granule.slots[granule.next];
        granule.next = static_cast<std::uint8_t>((granule.next + 1) % granule.slots.size());
    }
    *place = {offsetOf(site), now, bytes, thread};
}

void checkAll(std::uintptr_t at, std::size_t bytes, bool write, const void* site) noexcept {
    while (bytes != 0) {
        const unsigned offset = at & 7;
        const std::size_t here = bytes < 8 - offset ? bytes : 8 - offset;
        if (Granule* const granule = granuleOf(at)) {
            check(*granule, at, static_cast<std::uint8_t>(((1U << here) - 1) << offset), write, site);
        }
        at += here;
        bytes -= here;
    }
}

}  // namespace

void forget() noexcept {
    if (g_state.schedule++ == 0) {
        g_state.region.cover(reinterpret_cast<std::uintptr_t>(memory::regionBegin()),
                             reinterpret_cast<std::uintptr_t>(memory::regionEnd()));
        g_state.variables.cover(reinterpret_cast<std::uintptr_t>(&__data_start),
                                reinterpret_cast<std::uintptr_t>(&_end));
    }
}

void runs(unsigned thread, const VectorClock& clock) noexcept {
    g_state.thread = thread;
    g_state.clock = &clock;
}

bool watch(bool on) noexcept {
    return std::exchange(g_state.watching, on && kWatches);
}

void access(const void* at, std::size_t bytes, bool write, const void* site) noexcept {
    if (g_state.watching) {
        checkAll(reinterpret_cast<std::uintptr_t>(at), bytes, write, site);
    }
}

void freed(const void* at, std::size_t bytes, const void* site) noexcept {
    if (!g_state.watching) {
        return;
    }
    const auto begin = reinterpret_cast<std::uintptr_t>(at);
    checkAll(begin, bytes, true, site);
    for (std::uintptr_t granule = begin; granule < begin + bytes; granule += 8) {
        Granule& gone = *granuleOf(granule);
        gone.freed = 1;
        gone.slots[0] = {offsetOf(site), 0, 0xFF, static_cast<std::uint8_t>(g_state.thread | kWrite)};
    }
}

}  // namespace schedules::races
