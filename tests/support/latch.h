// A one-way gate for threads of a test: waiters pass once it was counted down to zero. Use it in place of
// std::latch, std::semaphore and std::atomic's wait: those of the mingw-w64 C++ runtime lose wake-ups, so a
// test hangs now and then.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <mutex>

namespace orvantis::test {

class Latch {
 public:
    explicit Latch(std::ptrdiff_t count) : m_count(count) {}

    void countDown() {
        const std::lock_guard lock(m_mutex);
        --m_count;
        m_changed.notify_all();
    }

    void wait() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_count <= 0; });
    }

    void arriveAndWait() {
        countDown();
        wait();
    }

 private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::ptrdiff_t m_count;
};

}  // namespace orvantis::test
