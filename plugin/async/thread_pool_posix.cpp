// Native twin of the system's thread pool: as many threads at most, started one at a time while tasks wait
// and all others are at work, and joined when the last share goes or the module is unloaded.
#include "async/thread_pool.h"

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace orvantis {

namespace {

class Pool {
 public:
    Pool() { m_threads.reserve(ThreadPool::kMaxThreads); }
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() { end(); }

    void open() {
        const std::lock_guard life(m_lifeMutex);
        if (m_shares == 0) {
            const std::lock_guard lock(m_mutex);
            m_ending = false;
            // The one that a task can count on.
            startThread();
        }
        ++m_shares;
    }

    void close() {
        const std::lock_guard life(m_lifeMutex);
        if (--m_shares == 0) {
            end();
        }
    }

    void submit(PoolTask& task) noexcept {
        const std::lock_guard lock(m_mutex);
        m_tasks.push(task);
        callThread();
    }

    std::uint64_t nextToStart() const noexcept {
        const std::lock_guard lock(m_mutex);
        return m_tasks.firstNumber();
    }

 private:
    /// A thread without work. Who came last is called first, as by the system: its processor still has what
    /// it worked on.
    struct Idle {
        Idle* before;
        std::condition_variable wake;
        bool called = false;
    };

    void end() {
        {
            const std::lock_guard lock(m_mutex);
            m_ending = true;
            while (m_idle != nullptr) {
                callThread();
            }
        }
        // No thread comes any more, so the list stands still.
        for (std::thread& thread : m_threads) {
            thread.join();
        }
        m_threads.clear();
    }

    void startThread() {
        ++m_starting;
        try {
            m_threads.emplace_back([this] { work(); });
        } catch (...) {
            --m_starting;
            throw;
        }
    }

    void callThread() noexcept {
        if (m_idle != nullptr) {
            Idle& last = *std::exchange(m_idle, m_idle->before);
            last.called = true;
            last.wake.notify_one();
            return;
        }
        if (m_ending || m_starting > 0 || m_threads.size() == ThreadPool::kMaxThreads) {
            return;
        }
        try {
            startThread();
        } catch (const std::exception&) {
            // Neither a thread nor memory for one is to be had. Those that there are have to do.
        }
    }

    void work() {
        std::unique_lock lock(m_mutex);
        --m_starting;
        for (;;) {
            PoolTask* const task = m_tasks.pop();
            if (task == nullptr) {
                if (m_ending) {
                    return;
                }
                Idle self{m_idle, {}, false};
                m_idle = &self;
                self.wake.wait(lock, [&self] { return self.called; });
                continue;
            }
            if (!m_tasks.isEmpty()) {
                callThread();
            }
            lock.unlock();
            task->run();
            lock.lock();
        }
    }

    std::mutex m_lifeMutex;  ///< guards m_shares; held while the threads are being joined
    std::size_t m_shares = 0;

    mutable std::mutex m_mutex;  ///< guards everything below
    TaskQueue m_tasks;
    Idle* m_idle = nullptr;  ///< who came last
    std::size_t m_starting = 0;
    bool m_ending = false;
    std::vector<std::thread> m_threads;
};

Pool& thePool() {
    static Pool instance;
    return instance;
}

}  // namespace

ThreadPool::ThreadPool() {
    thePool().open();
}

ThreadPool::~ThreadPool() {
    thePool().close();
}

void ThreadPool::submit(PoolTask& task) noexcept {
    thePool().submit(task);
}

std::uint64_t ThreadPool::nextToStart() const noexcept {
    return thePool().nextToStart();
}

}  // namespace orvantis
