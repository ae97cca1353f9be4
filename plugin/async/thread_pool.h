// The thread pool of the asynchronous importers: one for all of them in the process, and nobody else's. The
// system's own default pool belongs to everybody in the process, so work that takes long has no business
// there. std::async would start a bare thread for every frame on some runtimes.
//
// Tasks never wait for each other in a thread of the pool, so a full pool makes them later, never stuck.
#pragma once

#include <cstdint>

#include "async/task_queue.h"

namespace orvantis {

/// A share in the pool. The first one makes the pool, the last one gives it back to the system, without
/// waiting for threads that are on their way out; so nothing is left to do when the module is unloaded or the
/// process ends. Shares are made and given up on threads that are not the pool's, and outlive the tasks that
/// were submitted through them.
class ThreadPool {
 public:
    /// More than any number of clips that one machine plays at once needs: each keeps two threads at work.
    static constexpr unsigned kMaxThreads = 128;

    /// Throws std::system_error when the system gives no pool.
    ThreadPool();
    ~ThreadPool();
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    /// Has `task` run once, at once, on a thread of the pool, never on the caller's. If all threads are at
    /// work and there can be no more of them, as soon as one is through. Tasks start in the order in which
    /// they came. The module stays loaded until the pool's thread has left it. Any thread.
    void submit(PoolTask& task) noexcept;
    /// Which of the tasks that were submitted is the next to start, counted from 1 in the order in which they
    /// came; 0 while none waits. Who finds the same one twice knows that it has waited all the time in
    /// between. Any thread.
    std::uint64_t nextToStart() const noexcept;
};

}  // namespace orvantis
