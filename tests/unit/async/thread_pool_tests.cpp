// The door to the system's thread pool: never the caller's thread, never deferred, results and exceptions
// through the future.
#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <stdexcept>
#include <thread>
#include <vector>

#include "async/thread_pool.h"

namespace {

using orvantis::runOnThreadPool;

TEST(ThreadPool, WorkRunsOnAnotherThreadAndItsResultComesBack) {
    std::thread::id runner;
    std::future<std::int32_t> result = runOnThreadPool([&runner] {
        runner = std::this_thread::get_id();
        return 28;
    });
    EXPECT_EQ(result.get(), 28);
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST(ThreadPool, WorkStartsWithoutAnybodyWaitingForIt) {
    std::promise<void> started;
    const std::future<std::int32_t> result = runOnThreadPool([&started] {
        started.set_value();
        return 0;
    });
    started.get_future().wait();  // would wait for ever if the work were deferred to result.get()
    result.wait();
}

TEST(ThreadPool, AnExceptionReachesTheOneWhoAsks) {
    std::future<std::int32_t> result =
        runOnThreadPool([]() -> std::int32_t { throw std::runtime_error("broken"); });
    try {
        result.get();
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "broken");
    }
}

// Each is submitted when those before it run: Wine's pool may leave several that come at once to one thread.
TEST(ThreadPool, ATaskGetsAThreadWhileOthersWait) {
    constexpr int kTasks = 8;
    std::promise<void> go;
    const std::shared_future<void> gone = go.get_future().share();
    std::vector<std::future<std::int32_t>> results;
    for (int i = 0; i < kTasks; ++i) {
        std::promise<void> started;
        results.push_back(runOnThreadPool([&started, gone, i] {
            started.set_value();
            gone.wait();
            return i;
        }));
        started.get_future().wait();
    }
    go.set_value();
    for (int i = 0; i < kTasks; ++i) EXPECT_EQ(results[static_cast<std::size_t>(i)].get(), i);
}

TEST(ThreadPool, WhatTheWorkHoldsIsReleased) {
    auto held = std::make_shared<std::promise<void>>();
    std::weak_ptr<std::promise<void>> watched = held;
    runOnThreadPool([held = std::move(held)] { return 0; }).get();
    while (!watched.expired()) std::this_thread::yield();  // a moment after the future became ready
}

}  // namespace
