#include "tests/schedules/scheduler/engine.h"

#include <array>
#include <bitset>
#include <cstdio>
#include <cstdlib>

#include "tests/schedules/scheduler/explorer.h"
#include "tests/schedules/scheduler/fibre.h"
#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/scheduler/memory.h"
#include "tests/schedules/scheduler/races.h"
#include "tests/schedules/scheduler/symbols.h"

namespace schedules::engine {

namespace {

constexpr unsigned kMostSites = 512;
constexpr unsigned kMostObjects = 4096;
constexpr std::uint32_t kMostSteps = 20000;

struct Thread {
    enum class State : std::uint8_t { kNone, kReady, kWaiting, kEnded };

    Fibre fibre;
    State state = State::kNone;
    const char* name = "";
    const char* waitsFor = "";
    bool (*isReady)(const void*) = nullptr;
    const void* object = nullptr;
    VectorClock clock;
    std::function<void()> body;
    const char* last = "";   ///< the operation that it did last
    std::uint64_t held = 0;  ///< mutexes, bit for bit
};

/// Who has used an object in this schedule, and where in the code.
struct Object {
    const void* address = nullptr;
    std::uint32_t schedule = 0;
    std::uint32_t threads = 0;
    bool written = false;
    bool shared = false;
    std::uint64_t guards = 0;  ///< mutexes that all have held
    std::bitset<kMostSites> sites;
};

struct Site {
    const void* address = nullptr;
    bool shared = false;
};

struct State {
    std::array<Thread, kMaxThreads> threads;
    unsigned count = 0;
    unsigned current = 0;
    unsigned alive = 0;  ///< threads that have not ended, without thread 0
    bool running = false;
    bool tracing = false;
    bool watched = false;
    bool fibresReady = false;
    std::uint32_t schedule = 0;
    std::uint32_t steps = 0;
    std::uint32_t choices = 0;
    unsigned mutexes = 0;
    std::array<Object, kMostObjects> objects;
    std::array<Site, kMostSites * 2> sites;
    std::array<unsigned, kMostSites * 2> siteNumbers;
    unsigned siteCount = 0;
    std::array<unsigned, kMostSites> siteSlots;
};

State& state() noexcept {
    static State instance;
    return instance;
}

std::size_t hashOf(const void* address) noexcept {
    return static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(address) >> 1) * 0x9E3779B97F4A7C15U >>
                                    40);
}

unsigned siteNumber(const void* address) noexcept {
    State& all = state();
    for (std::size_t i = hashOf(address);; ++i) {
        const std::size_t slot = i % all.sites.size();
        Site& site = all.sites[slot];
        if (site.address == address) {
            return all.siteNumbers[slot];
        }
        if (site.address == nullptr) {
            if (all.siteCount == kMostSites) {
                std::abort();
            }
            site.address = address;
            all.siteSlots[all.siteCount] = static_cast<unsigned>(slot);
            return all.siteNumbers[slot] = all.siteCount++;
        }
    }
}

Site& siteOf(unsigned number) noexcept {
    return state().sites[state().siteSlots[number]];
}

Object& objectAt(const void* address) noexcept {
    State& all = state();
    for (std::size_t i = hashOf(address), probes = 0;; ++i, ++probes) {
        Object& object = all.objects[i % kMostObjects];
        if (object.schedule != all.schedule) {
            object.address = address;
            object.schedule = all.schedule;
            object.threads = 0;
            object.written = false;
            object.shared = false;
            object.guards = ~std::uint64_t{0};
            object.sites.reset();
            return object;
        }
        if (object.address == address) {
            return object;
        }
        if (probes == kMostObjects) {
            std::abort();
        }
    }
}

void makeShared(Site& site) noexcept {
    if (site.shared) {
        return;
    }
    site.shared = true;
    explorer().restart();
}

/// True when the place is one where threads may change.
bool noteUse(const void* address, Access access, const void* siteAddress) noexcept {
    State& all = state();
    const unsigned site = siteNumber(siteAddress);
    Object& object = objectAt(address);
    object.threads |= 1U << all.current;
    object.written = object.written || access == Access::kWrite;
    object.guards &= all.threads[all.current].held;
    if (object.shared) {
        makeShared(siteOf(site));
    } else {
        object.sites.set(site);
        object.shared = object.written && object.guards == 0 && (object.threads & (object.threads - 1)) != 0;
        for (unsigned i = 0; object.shared && i < all.siteCount; ++i) {
            if (object.sites.test(i)) {
                makeShared(siteOf(i));
            }
        }
    }
    return siteOf(site).shared;
}

void traceStep(const char* what, const void* object, const void* site) {
    const memory::Outside outside;
    State& all = state();
    std::printf("%5u  %-12s %-18s %12p  %s\n", explorer().decision() + 1, all.threads[all.current].name, what,
                object, site != nullptr ? codePlace(site).c_str() : "");
}

[[noreturn]] void deadlock() {
    const memory::Outside outside;
    State& all = state();
    std::string text;
    for (unsigned i = 1; i < all.count; ++i) {
        const Thread& thread = all.threads[i];
        if (thread.state == Thread::State::kEnded) {
            continue;
        }
        text += std::string("\n    '") + thread.name + "' waits for " + thread.waitsFor + ", after " +
                thread.last;
    }
    found("deadlock, nobody can go on", text);
}

void become(unsigned thread) noexcept {
    State& all = state();
    all.current = thread;
    all.threads[thread].state = Thread::State::kReady;
    races::runs(thread, all.threads[thread].clock);
}

/// Decides who takes the next step.
void decide(bool currentCanGoOn) {
    State& all = state();
    std::array<unsigned, kMaxThreads> options;
    unsigned count = 0;
    if (currentCanGoOn) {
        options[count++] = all.current;
    }
    const void* startable = nullptr;
    for (unsigned i = 0; i < all.count; ++i) {
        Thread& thread = all.threads[i];
        if (i == all.current && currentCanGoOn) {
            continue;
        }
        if (thread.state == Thread::State::kReady) {
            options[count++] = i;
        } else if (thread.state == Thread::State::kWaiting && thread.isReady(thread.object)) {
            // Of several that a pool could begin with it makes no difference which is the first.
            const bool begins = thread.waitsFor[0] == '*';
            if (begins && startable == thread.object) {
                continue;
            }
            if (begins) {
                startable = thread.object;
            }
            options[count++] = i;
        }
    }
    if (count == 0) {
        deadlock();
    }
    if (count > 1) {
        ++all.choices;
    }
    const unsigned chosen = options[explorer().choose(count, currentCanGoOn)];
    if (chosen == all.current) {
        become(chosen);
        return;
    }
    Fibre& from = all.threads[all.current].fibre;
    become(chosen);
    from.switchTo(all.threads[chosen].fibre);
}

void threadBody() {
    State& all = state();
    const unsigned me = all.current;
    Thread& thread = all.threads[me];
    try {
        thread.body();
    } catch (...) {
        found("an exception leaves a thread", thread.name);
    }
    if (all.tracing) {
        traceStep("ends", nullptr, nullptr);
    }
    thread.state = Thread::State::kEnded;
    --all.alive;
    all.threads[0].clock.join(thread.clock);
    decide(false);
}

unsigned add(const char* name, std::function<void()> body) {
    State& all = state();
    if (all.count == kMaxThreads) {
        found("the scenario needs more threads than a schedule has", "");
    }
    const unsigned number = all.count++;
    Thread& thread = all.threads[number];
    thread.state = Thread::State::kReady;
    thread.name = name;
    thread.last = "nothing";
    thread.held = 0;
    thread.body = std::move(body);
    thread.clock = all.threads[all.current].clock;
    thread.clock.at[number] = 1;
    ++all.threads[all.current].clock.at[all.current];
    ++all.alive;
    return number;
}

}  // namespace

void begin(bool watched) noexcept {
    State& all = state();
    all.watched = watched;
    if (!all.fibresReady) {
        for (unsigned i = 1; i < kMaxThreads; ++i) {
            all.threads[i].fibre.prepare(memory::stackOf(i), &threadBody);
        }
        all.fibresReady = true;
    }
    ++all.schedule;
    all.steps = 0;
    all.choices = 0;
    all.mutexes = 0;
    all.count = 1;
    all.alive = 0;
    all.threads[0].name = "main";
    all.threads[0].held = 0;
    all.threads[0].clock = {};
    all.threads[0].clock.at[0] = 1;
    races::forget();
    become(0);
}

void addThread(const char* name, std::function<void()> body) {
    add(name, std::move(body));
}

void run() {
    State& all = state();
    all.running = true;
    races::watch(all.watched);
    await(
        "all threads", [](const void*) { return state().alive == 0; }, nullptr);
    races::watch(false);
    all.running = false;
    for (unsigned i = 1; i < all.count; ++i) {
        all.threads[i].body = nullptr;
    }
    Account& to = account();
    if (all.choices > to.mostSteps) {
        to.mostSteps = all.choices;
    }
}

void trace(bool on) noexcept {
    state().tracing = on;
}

void endTrace() noexcept {
    state().tracing = false;
}

bool running() noexcept {
    return state().running;
}

std::uint32_t schedule() noexcept {
    return state().schedule;
}

unsigned currentThread() noexcept {
    return state().current;
}

const char* threadName(unsigned thread) noexcept {
    return state().threads[thread].name;
}

void note(const char* what, const void* object, Access access, const void* site) {
    State& all = state();
    if (!all.running) {
        return;
    }
    races::access(object, 1, false, site);
    noteUse(object, access, site);
    if (all.tracing) {
        traceStep(what, object, site);
    }
    all.threads[all.current].last = what;
}

void operation(const char* what, const void* object, Access access, const void* site) {
    State& all = state();
    if (!all.running) {
        return;
    }
    if (++all.steps > kMostSteps) {
        found("the schedule does not end", what);
    }
    const bool shared = noteUse(object, access, site);
    if (shared) {
        decide(true);
    } else {
        explorer().pass();
    }
    // The use is noted once more where others came first: it is the one that counts.
    races::access(object, 1, false, site);
    if (all.tracing) {
        traceStep(what, object, site);
    }
    all.threads[all.current].last = what;
}

void await(const char* what, bool (*ready)(const void* object), const void* object) {
    State& all = state();
    if (!all.running) {
        if (!ready(object)) {
            found("one thread waits for itself", what);
        }
        return;
    }
    Thread& thread = all.threads[all.current];
    thread.waitsFor = what;
    thread.isReady = ready;
    thread.object = object;
    thread.state = Thread::State::kWaiting;
    if (all.tracing && all.current != 0 && !ready(object)) {
        traceStep("  waits for", object, nullptr);
    }
    decide(false);
}

unsigned systemsChoice(unsigned count) {
    return state().running ? explorer().choose(count, false) : 0;
}

unsigned holds(unsigned mutexNumber) noexcept {
    State& all = state();
    if (mutexNumber == kNoNumber) {
        mutexNumber = all.mutexes++;
    }
    // Beyond these a mutex guards nothing as far as is known here, which only makes more places to change.
    if (mutexNumber < 64) {
        all.threads[all.current].held |= std::uint64_t{1} << mutexNumber;
    }
    return mutexNumber;
}

void holdsNoMore(unsigned mutexNumber) noexcept {
    State& all = state();
    if (mutexNumber < 64) {
        all.threads[all.current].held &= ~(std::uint64_t{1} << mutexNumber);
    }
}

void tell(VectorClock& told) noexcept {
    State& all = state();
    VectorClock& own = all.threads[all.current].clock;
    told.join(own);
    ++own.at[all.current];
}

void learn(const VectorClock& told) noexcept {
    State& all = state();
    all.threads[all.current].clock.join(told);
}

void startThread(const char* name, std::function<void()> body, bool (*mayStart)(const void* object),
                 const void* object) {
    Thread& thread = state().threads[add(name, std::move(body))];
    thread.state = Thread::State::kWaiting;
    thread.waitsFor = "*a thread of the pool";
    thread.isReady = mayStart;
    thread.object = object;
}

}  // namespace schedules::engine
