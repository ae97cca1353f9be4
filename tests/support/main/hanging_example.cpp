// A test program that hangs, in two threads: check_hang_watch.cmake looks at what it says then. Its other
// test is busy.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>
#include <thread>

namespace {

void waitForEver(std::future<void>& never) {
    never.wait();
}

TEST(HangingExample, WaitsForWhatNeverComes) {
    std::promise<void> promise;
    std::future<void> never = promise.get_future();
    std::thread other([&never] { waitForEver(never); });
    waitForEver(never);
    other.join();
}

TEST(HangingExample, WorksForTwoSeconds) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    std::uint64_t sum = 0;
    while (std::chrono::steady_clock::now() < end) {
        ++sum;
    }
    EXPECT_GT(sum, 0u);
}

}  // namespace
