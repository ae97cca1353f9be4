// The seam's mutex, condition and future on the engine.
#include <future>

#include "tests/schedules/scheduler/engine.h"
#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/scheduler/races.h"
#include "tests/schedules/seam/diag/mutex.h"
#include "tests/schedules/seam/diag/waiting.h"

namespace orvantis {

namespace engine = schedules::engine;

bool Mutex::isFree() const noexcept {
    return m_owner == kNobody || m_schedule != engine::schedule();
}

void Mutex::take() noexcept {
    if (m_schedule != engine::schedule()) {
        m_schedule = engine::schedule();
        m_told = {};
        m_number = engine::kNoNumber;
    }
    m_owner = static_cast<int>(engine::currentThread());
    m_number = engine::holds(m_number);
    engine::learn(m_told);
}

void Mutex::giveUp() noexcept {
    if (isFree() || m_owner != static_cast<int>(engine::currentThread())) {
        schedules::found("a mutex is given up by a thread that does not hold it", "");
    }
    engine::holdsNoMore(m_number);
    engine::tell(m_told);
    m_owner = kNobody;
}

void Mutex::lockFrom(const void* site) noexcept {
    engine::operation("lock", this, engine::Access::kWrite, site);
    if (!isFree()) {
        engine::await(
            "a mutex", [](const void* mutex) { return static_cast<const Mutex*>(mutex)->isFree(); }, this);
    }
    take();
}

void Mutex::unlockFrom(const void* site) noexcept {
    // What comes behind is told apart by the next operation: a thread that takes the mutex earlier meets
    // nothing that it would not meet then.
    engine::note("unlock", this, engine::Access::kWrite, site);
    giveUp();
}

void ConditionVariable::renew() noexcept {
    if (m_schedule == engine::schedule()) {
        return;
    }
    m_schedule = engine::schedule();
    m_waiting = m_woken = 0;
}

void ConditionVariable::waitFrom(Mutex& mutex, const void* site) noexcept {
    struct Waiter {
        const ConditionVariable* condition;
        const Mutex* mutex;
        std::uint32_t bit;
    };
    renew();
    engine::operation("wait", this, engine::Access::kWrite, site);
    const Waiter waiter{this, &mutex, 1U << engine::currentThread()};
    m_waiting |= waiter.bit;
    mutex.giveUp();
    engine::await(
        "a condition",
        [](const void* awaited) {
            const auto& self = *static_cast<const Waiter*>(awaited);
            return (self.condition->m_woken & self.bit) != 0 && self.mutex->isFree();
        },
        &waiter);
    m_woken &= ~waiter.bit;
    mutex.take();
}

void ConditionVariable::notifyFrom(bool onlyOne, const void* site) noexcept {
    renew();
    engine::operation(onlyOne ? "notify_one" : "notify_all", this, engine::Access::kWrite, site);
    std::uint32_t woken = m_waiting;
    if (onlyOne && woken != 0) {
        unsigned skip = engine::systemsChoice(static_cast<unsigned>(__builtin_popcount(woken)));
        for (; skip != 0; --skip) {
            woken &= woken - 1;
        }
        woken &= ~(woken - 1);
    }
    m_waiting &= ~woken;
    m_woken |= woken;
}

namespace seam {

Outcome::Outcome() noexcept = default;
Outcome::~Outcome() = default;

void throwNoState() {
    throw std::future_error(std::future_errc::no_state);
}

void Outcome::begin(const char* what, const void* site) {
    engine::operation(what, this, engine::Access::kWrite, site);
    if (ready) {
        throw std::future_error(std::future_errc::promise_already_satisfied);
    }
}

void Outcome::end(const void* promise, std::size_t promiseBytes, const void* site) {
    engine::tell(told);
    ready = true;
    // The call may be inside the promise still when the waiting thread goes on: the promise must live.
    schedules::races::access(promise, promiseBytes, false, site);
}

void Outcome::fail(const std::exception_ptr& reason) noexcept {
    failed = true;
    failure = reason;
}

void Outcome::abandon() noexcept {
    if (ready || owners == 1) {
        return;
    }
    fail(std::make_exception_ptr(std::future_error(std::future_errc::broken_promise)));
    engine::tell(told);
    ready = true;
}

void Outcome::await(const void* site) {
    engine::operation("wait", this, engine::Access::kRead, site);
    if (!ready) {
        engine::await(
            "a result", [](const void* awaited) { return static_cast<const Outcome*>(awaited)->ready; },
            this);
    }
    engine::learn(told);
}

void Outcome::rethrowFailure() const {
    if (failed) {
        std::rethrow_exception(failure);
    }
}

}  // namespace seam

}  // namespace orvantis
