#include "async/thread_pool.h"

#include <windows.h>

#include <cstddef>
#include <system_error>

#include "diag/mutex.h"
#include "diag/never_destroyed.h"

namespace orvantis {

namespace {

struct Pool {
    Mutex mutex;  ///< guards everything below
    TaskQueue tasks;
    std::size_t shares = 0;
    PTP_POOL pool = nullptr;
    PTP_WORK work =
        nullptr;  ///< submitted once for each task; whichever callback begins takes the first task
};

Pool& thePool() {
    // A thread of the pool may find that there is nothing left to do while the module is being unloaded.
    static NeverDestroyed<Pool> instance;
    return instance.get();
}

void CALLBACK runNext(PTP_CALLBACK_INSTANCE, void*, PTP_WORK) {
    Pool& pool = thePool();
    PoolTask* task = nullptr;
    {
        const std::lock_guard lock(pool.mutex);
        task = pool.tasks.pop();
        // Asked again on behalf of those left behind: a system that counts a thread as idle until it has
        // taken its work may have meant this one thread for several tasks, and this task can be long.
        if (!pool.tasks.isEmpty()) {
            SubmitThreadpoolWork(pool.work);
        }
    }
    if (task != nullptr) {
        task->run();
    }
}

/// This module, without a reference of its own.
HMODULE thisModule() noexcept {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&runNext), &module);
    return module;
}

[[noreturn]] void refused(DWORD error) {
    throw std::system_error(static_cast<int>(error), std::system_category(),
                            "Could not create the thread pool");
}

void open(Pool& pool) {
    pool.pool = CreateThreadpool(nullptr);
    if (pool.pool == nullptr) {
        refused(GetLastError());
    }
    SetThreadpoolThreadMaximum(pool.pool, ThreadPool::kMaxThreads);

    TP_CALLBACK_ENVIRON environment;
    InitializeThreadpoolEnvironment(&environment);
    SetThreadpoolCallbackPool(&environment, pool.pool);
    // The host may unload the plug-in as soon as its last frame is delivered, which can be before the pool's
    // thread has returned from the callback: the system holds the module for as long.
    SetThreadpoolCallbackLibrary(&environment, thisModule());
    // A decode is long by the pool's measure.
    SetThreadpoolCallbackRunsLong(&environment);
    pool.work = CreateThreadpoolWork(&runNext, nullptr, &environment);
    const DWORD error = pool.work != nullptr ? ERROR_SUCCESS : GetLastError();
    DestroyThreadpoolEnvironment(&environment);
    if (pool.work == nullptr) {
        CloseThreadpool(pool.pool);
        pool.pool = nullptr;
        refused(error);
    }
}

}  // namespace

ThreadPool::ThreadPool() {
    Pool& pool = thePool();
    const std::lock_guard lock(pool.mutex);
    if (pool.shares == 0) {
        open(pool);
    }
    ++pool.shares;
}

ThreadPool::~ThreadPool() {
    Pool& pool = thePool();
    const std::lock_guard lock(pool.mutex);
    if (--pool.shares > 0) {
        return;
    }
    // Neither waits: the system keeps both until the last callback has returned.
    CloseThreadpoolWork(pool.work);
    CloseThreadpool(pool.pool);
    pool.work = nullptr;
    pool.pool = nullptr;
}

void ThreadPool::submit(PoolTask& task) noexcept {
    Pool& pool = thePool();
    // Until the system has the work too: the task may run and end the last share before this thread goes on.
    const std::lock_guard lock(pool.mutex);
    pool.tasks.push(task);
    SubmitThreadpoolWork(pool.work);
}

std::uint64_t ThreadPool::nextToStart() const noexcept {
    Pool& pool = thePool();
    const std::lock_guard lock(pool.mutex);
    return pool.tasks.firstNumber();
}

}  // namespace orvantis
