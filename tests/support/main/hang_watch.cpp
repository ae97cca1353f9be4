#include "tests/support/main/hang_watch.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/main/thread_stacks.h"

namespace orvantis::test {

namespace {

[[noreturn]] void endHanging(const char* why, std::chrono::seconds limit) {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::fprintf(stderr, "\n[  HANGS   ] %s.%s: %s %lld s. Its threads:\n",
                 test != nullptr ? test->test_suite_name() : "no test",
                 test != nullptr ? test->name() : "runs", why, static_cast<long long>(limit.count()));
    std::fflush(stderr);
    printThreadStacks();
    std::fflush(stderr);
    // Without destructors: what hangs would hang them.
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

HangWatch::HangWatch(std::chrono::seconds limit, std::chrono::seconds idle) {
    if (limit <= std::chrono::seconds::zero()) {
        return;
    }
    prepareThreadStacks();
    m_thread = std::thread([this, limit, idle] { watch(limit, idle); });
}

void HangWatch::watch(std::chrono::seconds limit, std::chrono::seconds idle) {
    using namespace std::chrono_literals;
    const auto begin = std::chrono::steady_clock::now();
    auto worked = begin;
    std::unique_lock lock(m_mutex);
    for (;;) {
        if (m_changed.wait_for(lock, 250ms, [this] { return m_through; })) {
            return;
        }
        const auto now = std::chrono::steady_clock::now();
        // Asked only where it matters: asking allocates, which other tests count.
        if (idle > 0s && anotherThreadWorks()) {
            worked = now;
        }
        if (idle > 0s && now - worked >= idle) {
            endHanging("no thread has worked for", idle);
        }
        if (now - begin >= limit) {
            endHanging("the program has not ended after", limit);
        }
    }
}

HangWatch::~HangWatch() {
    if (!m_thread.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(m_mutex);
        m_through = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

}  // namespace orvantis::test
