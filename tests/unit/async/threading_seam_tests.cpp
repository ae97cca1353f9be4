// In every build but that of the schedules (tests/schedules/) the names are the standard types themselves, so
// what ships is what it would be without them.
#include <gtest/gtest.h>

#include <type_traits>

#include "diag/atomic.h"
#include "diag/mutex.h"
#include "diag/waiting.h"

namespace {

TEST(ThreadingSeam, IsTheStandardLibraryInWhatShips) {
    static_assert(std::is_same_v<orvantis::Mutex, std::mutex>);
    static_assert(std::is_same_v<orvantis::ConditionVariable, std::condition_variable>);
    static_assert(std::is_same_v<orvantis::Atomic<bool>, std::atomic<bool>>);
    static_assert(std::is_same_v<orvantis::Atomic<const void*>, std::atomic<const void*>>);
    static_assert(std::is_same_v<orvantis::Promise<int>, std::promise<int>>);
    static_assert(std::is_same_v<orvantis::Future<int>, std::future<int>>);
}

}  // namespace
