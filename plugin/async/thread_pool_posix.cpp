// Native twin of the system thread pool: threads that wait for work, started on demand so that a blocked task
// never keeps another from running, joined when the module is unloaded.
#include "async/thread_pool.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace orvantis {

namespace {

using Task = std::packaged_task<std::int32_t()>;

class Pool {
 public:
    Pool() = default;
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() {
        {
            const std::lock_guard lock(m_mutex);
            m_ending = true;
        }
        m_wake.notify_all();
        for (std::thread& thread : m_threads) thread.join();
    }

    void submit(Task task) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_idle <= m_tasks.size()) m_threads.emplace_back([this] { work(); });
            m_tasks.push_back(std::move(task));
        }
        m_wake.notify_one();
    }

 private:
    void work() {
        std::unique_lock lock(m_mutex);
        for (;;) {
            ++m_idle;
            m_wake.wait(lock, [this] { return m_ending || !m_tasks.empty(); });
            --m_idle;
            if (m_tasks.empty()) return;
            Task task = std::move(m_tasks.front());
            m_tasks.pop_front();
            lock.unlock();
            task();
            task = Task();
            lock.lock();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Task> m_tasks;
    std::size_t m_idle = 0;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

Pool& pool() {
    static Pool instance;
    return instance;
}

}  // namespace

std::future<std::int32_t> runOnThreadPool(std::function<std::int32_t()> work) {
    Task task(std::move(work));
    std::future<std::int32_t> result = task.get_future();
    pool().submit(std::move(task));
    return result;
}

}  // namespace orvantis
