// A task of the thread pool that is a function.
#pragma once

#include <functional>
#include <utility>

#include "async/task_queue.h"

class Work final : public orvantis::PoolTask {
 public:
    explicit Work(std::function<void()> what) : m_what(std::move(what)) {}
    void run() noexcept override { m_what(); }

 private:
    std::function<void()> m_what;
};
