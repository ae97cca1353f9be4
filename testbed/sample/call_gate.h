// Lets calls that read a clip in side by side, and one that opens or closes it in alone; for std::shared_lock
// and std::unique_lock. std::shared_mutex would do the same, but where its parts are made on first use and
// never given back, as in the runtime of mingw-w64, each clip would leave some of them in the host.
#pragma once

#include <atomic>
#include <cstdint>

namespace sample {

class CallGate {
 public:
    void lock_shared() {
        std::int32_t now = m_inside.load();
        while (now < 0 || !m_inside.compare_exchange_weak(now, now + 1)) {
            if (now < 0) {
                m_inside.wait(now);
                now = m_inside.load();
            }
        }
    }
    void unlock_shared() {
        m_inside.fetch_sub(1);
        m_inside.notify_all();
    }
    void lock() {
        std::int32_t nobody = 0;
        while (!m_inside.compare_exchange_weak(nobody, -1)) {
            if (nobody != 0) {
                m_inside.wait(nobody);
            }
            nobody = 0;
        }
    }
    void unlock() {
        m_inside.store(0);
        m_inside.notify_all();
    }

 private:
    std::atomic<std::int32_t> m_inside{0};  // calls that read, or -1 for the one that is alone
};

}  // namespace sample
