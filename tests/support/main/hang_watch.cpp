#include "tests/support/main/hang_watch.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "tests/support/main/thread_stacks.h"

namespace orvantis::test {

namespace {

[[noreturn]] void endHanging(std::chrono::seconds limit) {
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    std::fprintf(stderr, "\n[  HANGS   ] %s.%s: the program has not ended after %lld s. Its threads:\n",
                 test != nullptr ? test->test_suite_name() : "no test",
                 test != nullptr ? test->name() : "runs", static_cast<long long>(limit.count()));
    std::fflush(stderr);
    printThreadStacks();
    std::fflush(stderr);
    // Without destructors: what hangs would hang them.
    std::_Exit(EXIT_FAILURE);
}

}  // namespace

HangWatch::HangWatch(std::chrono::seconds limit) {
    if (limit <= std::chrono::seconds::zero()) return;
    prepareThreadStacks();
    m_thread = std::thread([this, limit] {
        std::unique_lock lock(m_mutex);
        if (!m_changed.wait_for(lock, limit, [this] { return m_through; })) endHanging(limit);
    });
}

HangWatch::~HangWatch() {
    if (!m_thread.joinable()) return;
    {
        const std::lock_guard lock(m_mutex);
        m_through = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

}  // namespace orvantis::test
