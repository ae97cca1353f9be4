// Slim reader/writer locks are a pointer each, valid as zeroes and never destroyed.
#include "importer/system_threads.h"

// clang-format off
#include <windows.h>
// clang-format on

namespace orvantis {

namespace {

static_assert(sizeof(SRWLOCK) == sizeof(void*) && sizeof(CONDITION_VARIABLE) == sizeof(void*));

SRWLOCK* lockIn(void*& storage) noexcept {
    return reinterpret_cast<SRWLOCK*>(&storage);
}

CONDITION_VARIABLE* conditionIn(void*& storage) noexcept {
    return reinterpret_cast<CONDITION_VARIABLE*>(&storage);
}

}  // namespace

void SystemLock::lock() noexcept {
    AcquireSRWLockExclusive(lockIn(m_lock));
}

void SystemLock::unlock() noexcept {
    ReleaseSRWLockExclusive(lockIn(m_lock));
}

void SystemLock::wait() noexcept {
    SleepConditionVariableSRW(conditionIn(m_condition), lockIn(m_lock), INFINITE, 0);
}

void SystemLock::wakeAll() noexcept {
    WakeAllConditionVariable(conditionIn(m_condition));
}

std::uintptr_t currentThread() noexcept {
    return GetCurrentThreadId();
}

}  // namespace orvantis
