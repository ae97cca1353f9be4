// Locks and thread pool of Windows on the engine.
#include "tests/schedules/system/windows_threads.h"

#include <array>

#include "tests/schedules/scheduler/call_site.h"
#include "tests/schedules/scheduler/engine.h"
#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/scheduler/memory.h"
#include "tests/schedules/seam/diag/mutex.h"
#include "tests/schedules/seam/diag/waiting.h"
#include "tests/schedules/seam/windows.h"

namespace engine = schedules::engine;

struct TP_POOL {
    bool open = false;
    unsigned most = 0;
    unsigned inside = 0;  ///< callbacks that have begun and are not through
};

struct TP_WORK {
    bool open = false;
    PTP_WORK_CALLBACK callback = nullptr;
    void* context = nullptr;
    TP_POOL* pool = nullptr;
    bool holdsModule = false;
    unsigned outstanding = 0;  ///< callbacks submitted and not through
};

struct OrvantisModule {
    bool unloaded = false;
};

namespace {

constexpr unsigned kMostObjects = 16;

struct System {
    std::array<TP_POOL, kMostObjects> pools;
    std::array<TP_WORK, kMostObjects> works;
    unsigned poolCount = 0;
    unsigned workCount = 0;
    unsigned poolThreads = 0;
    OrvantisModule module;
};
System g_system;

template <class Made>
Made& madeIn(void*& storage) {
    // Like the system's, it is ready as zeroes and given up by nobody.
    if (storage == nullptr) {
        const schedules::memory::Outside outside;
        storage = new Made;
    }
    return *static_cast<Made*>(storage);
}

orvantis::Mutex& mutexOf(SRWLOCK* lock) {
    return madeIn<orvantis::Mutex>(lock->Ptr);
}

orvantis::ConditionVariable& conditionOf(CONDITION_VARIABLE* condition) {
    return madeIn<orvantis::ConditionVariable>(condition->Ptr);
}

void requireOpen(bool open, const char* what) {
    if (!open) {
        schedules::found("use of a closed object of the pool", what);
    }
}

/// A thread of the pool has room for a callback.
bool hasThread(const void* object) {
    const auto& pool = *static_cast<const TP_POOL*>(object);
    return pool.inside < pool.most;
}

void runCallback(TP_WORK& work) {
    ++work.pool->inside;
    work.callback(nullptr, work.context, &work);
    // The plug-in's last instruction is done, and the thread is still on its way out of the module.
    engine::operation("leaves plug-in", &g_system.module, engine::Access::kRead,
                      reinterpret_cast<const void*>(&runCallback));
    --work.pool->inside;
    --work.outstanding;
}

}  // namespace

namespace schedules::windows {

void begin(unsigned poolThreads) noexcept {
    g_system.poolCount = g_system.workCount = 0;
    g_system.poolThreads = poolThreads;
    g_system.module.unloaded = false;
    for (TP_WORK& work : g_system.works) {
        work = {};
    }
}

unsigned open() noexcept {
    unsigned count = 0;
    for (unsigned i = 0; i < g_system.poolCount; ++i) {
        count += g_system.pools[i].open;
    }
    for (unsigned i = 0; i < g_system.workCount; ++i) {
        count += g_system.works[i].open;
    }
    return count;
}

ORVANTIS_SEAM void unloadModule() {
    engine::operation("unload", &g_system.module, engine::Access::kWrite, ORVANTIS_SEAM_SITE);
    for (unsigned i = 0; i < g_system.workCount; ++i) {
        const TP_WORK& work = g_system.works[i];
        if (work.outstanding != 0 && !work.holdsModule) {
            found("the module is unloaded while a thread of the pool is inside or on its way", "");
        }
    }
    g_system.module.unloaded = true;
}

}  // namespace schedules::windows

// NOLINTBEGIN(readability-identifier-naming)
extern "C" {

DWORD GetLastError() {
    return 8;
}

DWORD GetCurrentThreadId() {
    return 100 + engine::currentThread();
}

BOOL GetModuleHandleExW(DWORD /*flags*/, LPCWSTR /*name*/, HMODULE* module) {
    *module = &g_system.module;
    return 1;
}

ORVANTIS_SEAM void AcquireSRWLockExclusive(SRWLOCK* lock) {
    // The place that counts is the caller of the plug-in's lock, which is one for all its users.
    mutexOf(lock).lockFrom(ORVANTIS_SEAM_SITE);
}

ORVANTIS_SEAM void ReleaseSRWLockExclusive(SRWLOCK* lock) {
    mutexOf(lock).unlockFrom(ORVANTIS_SEAM_SITE);
}

ORVANTIS_SEAM BOOL SleepConditionVariableSRW(CONDITION_VARIABLE* condition, SRWLOCK* lock,
                                             DWORD /*milliseconds*/, DWORD /*flags*/) {
    conditionOf(condition).waitFrom(mutexOf(lock), ORVANTIS_SEAM_SITE);
    return 1;
}

ORVANTIS_SEAM void WakeAllConditionVariable(CONDITION_VARIABLE* condition) {
    conditionOf(condition).notifyFrom(false, ORVANTIS_SEAM_SITE);
}

ORVANTIS_SEAM void WakeConditionVariable(CONDITION_VARIABLE* condition) {
    conditionOf(condition).notifyFrom(true, ORVANTIS_SEAM_SITE);
}

PTP_POOL CreateThreadpool(PVOID /*reserved*/) {
    if (g_system.poolCount == kMostObjects) {
        return nullptr;
    }
    TP_POOL& pool = g_system.pools[g_system.poolCount++];
    pool = {true, g_system.poolThreads, 0};
    return &pool;
}

void SetThreadpoolThreadMaximum(PTP_POOL pool, DWORD maximum) {
    requireOpen(pool->open, "SetThreadpoolThreadMaximum");
    if (maximum < pool->most) {
        pool->most = maximum;
    }
}

void CloseThreadpool(PTP_POOL pool) {
    requireOpen(pool->open, "CloseThreadpool");
    pool->open = false;
}

void InitializeThreadpoolEnvironment(TP_CALLBACK_ENVIRON* environment) {
    *environment = {};
}

void SetThreadpoolCallbackPool(TP_CALLBACK_ENVIRON* environment, PTP_POOL pool) {
    environment->pool = pool;
}

void SetThreadpoolCallbackLibrary(TP_CALLBACK_ENVIRON* environment, PVOID module) {
    environment->library = static_cast<HMODULE>(module);
}

void SetThreadpoolCallbackRunsLong(TP_CALLBACK_ENVIRON* /*environment*/) {}

void DestroyThreadpoolEnvironment(TP_CALLBACK_ENVIRON* /*environment*/) {}

PTP_WORK CreateThreadpoolWork(PTP_WORK_CALLBACK callback, PVOID context, TP_CALLBACK_ENVIRON* environment) {
    if (g_system.workCount == kMostObjects) {
        return nullptr;
    }
    TP_WORK& work = g_system.works[g_system.workCount++];
    work = {true, callback, context, environment->pool, environment->library == &g_system.module};
    return &work;
}

ORVANTIS_SEAM void SubmitThreadpoolWork(PTP_WORK work) {
    engine::operation("submit", work, engine::Access::kRead, ORVANTIS_SEAM_SITE);
    requireOpen(work->open, "SubmitThreadpoolWork");
    ++work->outstanding;
    engine::startThread(
        "pool", [work] { runCallback(*work); }, &hasThread, work->pool);
}

ORVANTIS_SEAM void CloseThreadpoolWork(PTP_WORK work) {
    engine::operation("close work", work, engine::Access::kWrite, ORVANTIS_SEAM_SITE);
    requireOpen(work->open, "CloseThreadpoolWork");
    work->open = false;
}

}  // extern "C"
// NOLINTEND(readability-identifier-naming)
