// The pool of the asynchronous importers: never the caller's thread, never deferred, first come first served,
// and bounded.
#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <memory>
#include <set>
#include <thread>
#include <vector>

#include "async/thread_pool.h"
#include "tests/support/latch.h"
#include "tests/unit/async/work.h"

namespace {

using orvantis::ThreadPool;
using orvantis::test::Latch;

TEST(ThreadPool, WorkRunsOnAnotherThread) {
    ThreadPool pool;
    std::thread::id runner;
    Latch done(1);
    Work work([&] {
        runner = std::this_thread::get_id();
        done.countDown();
    });
    pool.submit(work);
    done.wait();  // would wait for ever if the work were deferred until somebody asks for it
    EXPECT_NE(runner, std::this_thread::get_id());
}

TEST(ThreadPool, ATaskMayBeSubmittedAgainByItself) {
    ThreadPool pool;
    Latch done(1);
    int runs = 0;
    Work* self = nullptr;
    Work work([&] {
        if (++runs < 1000) {
            pool.submit(*self);
        } else {
            done.countDown();
        }
    });
    self = &work;
    pool.submit(work);
    done.wait();
    EXPECT_EQ(runs, 1000);
}

TEST(ThreadPool, ATaskMayEndItsOwnLife) {
    ThreadPool pool;
    Latch done(1);
    auto work = std::make_unique<std::unique_ptr<Work>>();
    *work = std::make_unique<Work>([&work, &done] {
        Latch& kept = done;
        work.reset();
        kept.countDown();
    });
    Work& task = **work;
    pool.submit(task);
    done.wait();
    EXPECT_EQ(work, nullptr);
}

// All at once, while at most one of the pool's threads is idle.
TEST(ThreadPool, ATaskGetsAThreadWhileOthersWait) {
    constexpr int kTasks = 16;
    ThreadPool pool;
    Latch started(kTasks), go(1), done(kTasks);
    std::deque<Work> works;
    for (int i = 0; i < kTasks; ++i) {
        works.emplace_back([&] {
            started.countDown();
            go.wait();
            done.countDown();
        });
    }
    for (Work& work : works) {
        pool.submit(work);
    }
    started.wait();  // would wait for ever if one of them waited for another
    EXPECT_EQ(pool.nextToStart(), 0U);
    go.countDown();
    done.wait();
}

TEST(ThreadPool, AFullPoolStartsWhatComesInOrderAsSoonAsThreadsAreThrough) {
    constexpr int kMore = 20;
    ASSERT_EQ(ThreadPool::kMaxThreads, 128U) << "as the documents have it";
    ThreadPool pool;
    Latch full(ThreadPool::kMaxThreads), go(1), done(ThreadPool::kMaxThreads + kMore);
    std::deque<Work> holding;
    for (unsigned i = 0; i < ThreadPool::kMaxThreads; ++i) {
        holding.emplace_back([&] {
            full.countDown();
            go.wait();
            done.countDown();
        });
        pool.submit(holding.back());
    }
    full.wait();
    std::atomic<int> begun = 0;
    std::deque<Work> more;
    for (int i = 0; i < kMore; ++i) {
        more.emplace_back([&] {
            ++begun;
            done.countDown();
        });
        pool.submit(more.back());
    }
    EXPECT_NE(pool.nextToStart(), 0U);
    EXPECT_EQ(begun, 0) << "there are more threads than the pool may have";
    go.countDown();
    done.wait();
    EXPECT_EQ(begun, kMore);
}

TEST(ThreadPool, TasksStartInTheOrderInWhichTheyCame) {
    ThreadPool pool;
    // With one thread left over, what starts where can be told.
    Latch full(ThreadPool::kMaxThreads - 1), go(1), done(ThreadPool::kMaxThreads - 1), all(100);
    std::deque<Work> holding;
    for (unsigned i = 0; i + 1 < ThreadPool::kMaxThreads; ++i) {
        holding.emplace_back([&] {
            full.countDown();
            go.wait();
            done.countDown();
        });
        pool.submit(holding.back());
    }
    full.wait();
    std::vector<int> order;
    std::deque<Work> works;
    for (int i = 0; i < 100; ++i) {
        works.emplace_back([&, i] {
            order.push_back(i);
            all.countDown();
        });
    }
    for (Work& work : works) {
        pool.submit(work);
    }
    all.wait();
    go.countDown();
    done.wait();
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
    }
}

TEST(ThreadPool, SharesUseOnePool) {
    Latch full(ThreadPool::kMaxThreads), go(1), done(ThreadPool::kMaxThreads + 1);
    ThreadPool one, other;
    std::deque<Work> holding;
    for (unsigned i = 0; i < ThreadPool::kMaxThreads; ++i) {
        holding.emplace_back([&] {
            full.countDown();
            go.wait();
            done.countDown();
        });
        one.submit(holding.back());
    }
    full.wait();
    Work late([&] { done.countDown(); });
    other.submit(late);
    EXPECT_NE(one.nextToStart(), 0U);
    EXPECT_EQ(one.nextToStart(), other.nextToStart());
    go.countDown();
    done.wait();
}

TEST(ThreadPool, ThereIsANewOneWhenTheLastShareWasGivenUp) {
    for (int i = 0; i < 50; ++i) {
        ThreadPool pool;
        Latch done(8);
        std::deque<Work> works;
        for (int k = 0; k < 8; ++k) {
            works.emplace_back([&] { done.countDown(); });
        }
        for (Work& work : works) {
            pool.submit(work);
        }
        done.wait();
    }
}

TEST(ThreadPool, SharesComeAndGoOnSeveralThreads) {
    std::atomic<int> ran = 0;
    std::vector<std::thread> hosts;
    for (int t = 0; t < 4; ++t) {
        hosts.emplace_back([&] {
            for (int i = 0; i < 100; ++i) {
                ThreadPool pool;
                Latch done(1);
                Work work([&] {
                    ++ran;
                    done.countDown();
                });
                pool.submit(work);
                done.wait();
            }
        });
    }
    for (std::thread& host : hosts) {
        host.join();
    }
    EXPECT_EQ(ran, 400);
}

}  // namespace
