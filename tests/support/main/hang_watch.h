// Ends a test program that hangs, with a failure, and shows where its threads stand: the end of a test that
// CTest ends for being late leaves nothing to look at.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace orvantis::test {

class HangWatch {
 public:
    /// From now on the program has this much time, and `idle` of it in which none of its threads works. Zero
    /// or less: as much as it wants.
    HangWatch(std::chrono::seconds limit, std::chrono::seconds idle);
    /// The program is through in time.
    ~HangWatch();
    HangWatch(const HangWatch&) = delete;
    HangWatch& operator=(const HangWatch&) = delete;

 private:
    void watch(std::chrono::seconds limit, std::chrono::seconds idle);

    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_through = false;
    std::thread m_thread;
};

}  // namespace orvantis::test
