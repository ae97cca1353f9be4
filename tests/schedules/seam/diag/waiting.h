// In place of plugin/diag/waiting.h where schedules are explored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <mutex>

#include "diag/mutex.h"
#include "tests/schedules/scheduler/call_site.h"
#include "tests/schedules/scheduler/vector_clock.h"

namespace orvantis {

class ConditionVariable {
 public:
    ConditionVariable() noexcept = default;
    ConditionVariable(const ConditionVariable&) = delete;
    ConditionVariable& operator=(const ConditionVariable&) = delete;

    ORVANTIS_SEAM void wait(std::unique_lock<Mutex>& lock) { waitFrom(*lock.mutex(), ORVANTIS_SEAM_SITE); }
    template <class Predicate>
    void wait(std::unique_lock<Mutex>& lock, Predicate predicate) {
        while (!predicate()) {
            wait(lock);
        }
    }
    ORVANTIS_SEAM void notify_one() noexcept { notifyFrom(true, ORVANTIS_SEAM_SITE); }
    ORVANTIS_SEAM void notify_all() noexcept { notifyFrom(false, ORVANTIS_SEAM_SITE); }

    void waitFrom(Mutex& mutex, const void* site) noexcept;
    void notifyFrom(bool onlyOne, const void* site) noexcept;

 private:
    void renew() noexcept;

    std::uint32_t m_schedule = 0;
    std::uint32_t m_waiting = 0;  ///< threads, bit for bit
    std::uint32_t m_woken = 0;
};

namespace seam {

/// What promise and future share, but for the value.
struct Outcome {
    bool ready = false;
    bool failed = false;
    std::exception_ptr failure;
    schedules::VectorClock told;
    unsigned owners = 1;

    Outcome() noexcept;
    ~Outcome();
    Outcome(const Outcome&) = delete;
    Outcome& operator=(const Outcome&) = delete;

    /// The steps of a promise: refuses when there is a result already; makes the result ready.
    void begin(const char* what, const void* site);
    void end(const void* promise, std::size_t promiseBytes, const void* site);
    void fail(const std::exception_ptr& reason) noexcept;
    /// The promise is gone without a result.
    void abandon() noexcept;
    /// The future's.
    void await(const void* site);
    void rethrowFailure() const;
};

[[noreturn]] void throwNoState();

template <class T>
struct OutcomeOf : Outcome {
    T value{};
};

/// One of the owners of an outcome.
template <class T>
class Share {
 public:
    ORVANTIS_SEAM explicit Share(OutcomeOf<T>* outcome) noexcept : m_outcome(outcome) {}
    ORVANTIS_SEAM Share(Share&& other) noexcept : m_outcome(other.m_outcome) { other.m_outcome = nullptr; }
    ORVANTIS_SEAM ~Share() {
        if (m_outcome != nullptr && --m_outcome->owners == 0) {
            delete m_outcome;
        }
    }
    Share(const Share&) = delete;
    Share& operator=(const Share&) = delete;

    ORVANTIS_SEAM bool isEmpty() const noexcept { return m_outcome == nullptr; }
    ORVANTIS_SEAM OutcomeOf<T>& get() const {
        if (m_outcome == nullptr) {
            throwNoState();
        }
        return *m_outcome;
    }

 private:
    OutcomeOf<T>* m_outcome;
};

}  // namespace seam

template <class T>
class Future {
 public:
    ORVANTIS_SEAM explicit Future(seam::OutcomeOf<T>* outcome) noexcept : m_share(outcome) {}

    ORVANTIS_SEAM bool valid() const noexcept { return !m_share.isEmpty(); }
    ORVANTIS_SEAM void wait() const { m_share.get().await(ORVANTIS_SEAM_SITE); }
    ORVANTIS_SEAM T get() {
        m_share.get().await(ORVANTIS_SEAM_SITE);
        const seam::Share<T> share(static_cast<seam::Share<T>&&>(m_share));
        share.get().rethrowFailure();
        return share.get().value;
    }

 private:
    seam::Share<T> m_share;
};

template <class T>
class Promise {
 public:
    ORVANTIS_SEAM Promise() : m_share(new seam::OutcomeOf<T>) {}
    Promise(Promise&&) noexcept = default;
    ORVANTIS_SEAM ~Promise() {
        if (!m_share.isEmpty()) {
            m_share.get().abandon();
        }
    }

    ORVANTIS_SEAM Future<T> get_future() {
        ++m_share.get().owners;
        return Future<T>(&m_share.get());
    }
    ORVANTIS_SEAM void set_value(T value) {
        m_share.get().begin("set_value", ORVANTIS_SEAM_SITE);
        m_share.get().value = value;
        m_share.get().end(this, sizeof *this, ORVANTIS_SEAM_SITE);
    }
    ORVANTIS_SEAM void set_exception(const std::exception_ptr& failure) {
        m_share.get().begin("set_exception", ORVANTIS_SEAM_SITE);
        m_share.get().fail(failure);
        m_share.get().end(this, sizeof *this, ORVANTIS_SEAM_SITE);
    }

 private:
    seam::Share<T> m_share;
};

}  // namespace orvantis
