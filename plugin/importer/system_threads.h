// What the registry of calls needs of the system: a lock with a place to wait at, and who the calling thread
// is. Both in their plainest form: the registry lives until the module is unloaded and must leave nothing
// behind then, neither memory nor thread-local slots, and it is passed twice by every call.
#pragma once

#include <cstdint>

#ifndef _WIN32
#include <condition_variable>
#include <mutex>
#endif

namespace orvantis {

/// A lock held for a few instructions, with one condition to wait for. On Windows it takes nothing from the
/// system that would have to be given back. For std::lock_guard and std::unique_lock.
class SystemLock {
 public:
    SystemLock() noexcept = default;
    SystemLock(const SystemLock&) = delete;
    SystemLock& operator=(const SystemLock&) = delete;

    void lock() noexcept;
    void unlock() noexcept;
    /// Held before and after, free meanwhile. Returns after wakeAll(), or for no reason.
    void wait() noexcept;
    void wakeAll() noexcept;

 private:
#ifdef _WIN32
    void* m_lock = nullptr;
    void* m_condition = nullptr;
#else
    std::mutex m_lock;
    std::condition_variable m_condition;
#endif
};

/// Tells the running threads of the process apart.
std::uintptr_t currentThread() noexcept;

}  // namespace orvantis
