// What the pool's threads take their tasks from: first come, first served. The tasks are linked through
// themselves, so that nothing is allocated and handing one over cannot fail.
#pragma once

#include <cstdint>

namespace orvantis {

/// Work that the pool runs once each time that it is submitted. Owned by who submits it.
class PoolTask {
 public:
    virtual ~PoolTask() = default;
    PoolTask(const PoolTask&) = delete;
    PoolTask& operator=(const PoolTask&) = delete;

    /// On a thread of the pool. May end the life of this object: the pool does not touch it after the call
    /// has begun.
    virtual void run() noexcept = 0;

 protected:
    PoolTask() = default;

 private:
    friend class TaskQueue;
    PoolTask* m_next = nullptr;
};

/// Guarded by its owner. A task is in it at most once at a time.
class TaskQueue {
 public:
    bool isEmpty() const noexcept { return m_first == nullptr; }

    void push(PoolTask& task) noexcept {
        task.m_next = nullptr;
        (m_first == nullptr ? m_first : m_last->m_next) = &task;
        m_last = &task;
    }

    /// The place of the first one among all that ever came, counted from 1; 0 when there is none.
    std::uint64_t firstNumber() const noexcept { return isEmpty() ? 0 : m_taken + 1; }

    /// Null when there is none.
    PoolTask* pop() noexcept {
        PoolTask* const task = m_first;
        if (task != nullptr) {
            m_first = task->m_next;
            ++m_taken;
        }
        return task;
    }

 private:
    PoolTask* m_first = nullptr;
    PoolTask* m_last = nullptr;  ///< meaningful while there is a first
    std::uint64_t m_taken = 0;
};

}  // namespace orvantis
