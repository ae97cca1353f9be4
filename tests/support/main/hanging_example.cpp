// A test program that hangs, in two threads: check_hang_watch.cmake looks at what it says then.
#include <gtest/gtest.h>

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

}  // namespace
