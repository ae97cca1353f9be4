// The native twin, for builds under the sanitizers.
#include <pthread.h>

#include "importer/system_threads.h"

namespace orvantis {

void SystemLock::lock() noexcept {
    m_lock.lock();
}

void SystemLock::unlock() noexcept {
    m_lock.unlock();
}

void SystemLock::wait() noexcept {
    std::unique_lock held(m_lock, std::adopt_lock);
    m_condition.wait(held);
    held.release();
}

void SystemLock::wakeAll() noexcept {
    m_condition.notify_all();
}

std::uintptr_t currentThread() noexcept {
    return static_cast<std::uintptr_t>(pthread_self());
}

}  // namespace orvantis
