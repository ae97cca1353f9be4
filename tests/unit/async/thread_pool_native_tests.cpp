// The native twin of the system's thread pool calls, as that does, the thread that came to rest last.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <map>
#include <thread>

#include "async/thread_pool.h"
#include "tests/support/latch.h"
#include "tests/unit/async/work.h"

namespace {

using orvantis::ThreadPool;
using orvantis::test::Latch;

TEST(NativeThreadPool, CallsTheThreadThatCameToRestLast) {
    constexpr int kThreads = 16, kTasks = 320;
    ThreadPool pool;
    Latch started(kThreads), go(1), done(kThreads);
    std::deque<Work> holding;
    for (int i = 0; i < kThreads; ++i) {
        holding.emplace_back([&] {
            started.countDown();
            go.wait();
            done.countDown();
        });
        pool.submit(holding.back());
    }
    started.wait();
    go.countDown();
    done.wait();
    std::map<std::thread::id, int> ran;
    for (int i = 0; i < kTasks; ++i) {
        Latch through(1);
        Work one([&] {
            ++ran[std::this_thread::get_id()];
            through.countDown();
        });
        pool.submit(one);
        through.wait();
    }
    // A thread that is not at rest yet when the next task comes leaves it to another. In turn, each would
    // run 20.
    const auto most = std::max_element(ran.begin(), ran.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    EXPECT_GE(most->second, kTasks / 5);
}

}  // namespace
