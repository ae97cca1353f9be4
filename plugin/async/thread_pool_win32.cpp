#include "async/thread_pool.h"

#include <windows.h>

#include <memory>
#include <system_error>
#include <utility>

namespace orvantis {

namespace {

using Task = std::packaged_task<std::int32_t()>;

void CALLBACK runTask(PTP_CALLBACK_INSTANCE, void* context) {
    // The exception of a task goes into its future; nothing can leave from here.
    const std::unique_ptr<Task> task(static_cast<Task*>(context));
    (*task)();
}

/// This module, without a reference of its own.
HMODULE thisModule() noexcept {
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&runTask), &module);
    return module;
}

}  // namespace

std::future<std::int32_t> runOnThreadPool(std::function<std::int32_t()> work) {
    auto task = std::make_unique<Task>(std::move(work));
    std::future<std::int32_t> result = task->get_future();

    TP_CALLBACK_ENVIRON environment;
    InitializeThreadpoolEnvironment(&environment);
    // The host may unload the plug-in as soon as its last frame is delivered, which can be before the pool's
    // thread has returned from the callback: the pool holds the module for as long.
    SetThreadpoolCallbackLibrary(&environment, thisModule());
    // A decode is long by the pool's measure, and tasks wait for each other's steps.
    SetThreadpoolCallbackRunsLong(&environment);
    const BOOL submitted = TrySubmitThreadpoolCallback(&runTask, task.get(), &environment);
    const DWORD error = submitted ? ERROR_SUCCESS : GetLastError();
    DestroyThreadpoolEnvironment(&environment);
    if (!submitted) {
        throw std::system_error(static_cast<int>(error), std::system_category(),
                                "Could not start a decode task");
    }
    static_cast<void>(task.release());  // the pool's now
    return result;
}

}  // namespace orvantis
