// In place of plugin/diag/atomic.h where schedules are explored. Values are those of one order of all
// operations; what a thread learns of others by them follows the memory order that it asks for, so that one
// which is too weak shows as a race.
#pragma once

#include <atomic>

#include "tests/schedules/scheduler/call_site.h"
#include "tests/schedules/scheduler/engine.h"

namespace orvantis {

template <class T>
class Atomic {
 public:
    constexpr Atomic() noexcept = default;
    constexpr Atomic(T value) noexcept : m_value(value) {}  // NOLINT: as the standard's
    Atomic(const Atomic&) = delete;
    Atomic& operator=(const Atomic&) = delete;

    ORVANTIS_SEAM T load(std::memory_order order = std::memory_order_seq_cst) const noexcept {
        return loadFrom(order, ORVANTIS_SEAM_SITE);
    }
    ORVANTIS_SEAM operator T() const noexcept {  // NOLINT: as the standard's
        return loadFrom(std::memory_order_seq_cst, ORVANTIS_SEAM_SITE);
    }
    ORVANTIS_SEAM void store(T value, std::memory_order order = std::memory_order_seq_cst) noexcept {
        storeFrom(value, order, ORVANTIS_SEAM_SITE);
    }
    ORVANTIS_SEAM T operator=(T value) noexcept {  // NOLINT: as the standard's
        storeFrom(value, std::memory_order_seq_cst, ORVANTIS_SEAM_SITE);
        return value;
    }
    ORVANTIS_SEAM T exchange(T value, std::memory_order order = std::memory_order_seq_cst) noexcept {
        before("exchange", Access::kWrite, ORVANTIS_SEAM_SITE);
        learn(order);
        tell(order, true);
        const T former = m_value;
        m_value = value;
        return former;
    }
    ORVANTIS_SEAM bool compare_exchange_strong(T& expected, T desired,
                                               std::memory_order order = std::memory_order_seq_cst) noexcept {
        return compareFrom(expected, desired, order, ORVANTIS_SEAM_SITE);
    }
    /// Fails for no reason never.
    ORVANTIS_SEAM bool compare_exchange_weak(T& expected, T desired,
                                             std::memory_order order = std::memory_order_seq_cst) noexcept {
        return compareFrom(expected, desired, order, ORVANTIS_SEAM_SITE);
    }

 private:
    using Access = schedules::engine::Access;

    ORVANTIS_SEAM void before(const char* what, Access access, const void* site) const noexcept {
        if (m_schedule != schedules::engine::schedule()) {
            m_schedule = schedules::engine::schedule();
            m_told = {};
        }
        schedules::engine::operation(what, this, access, site);
    }
    ORVANTIS_SEAM void learn(std::memory_order order) const noexcept {
        if (order != std::memory_order_relaxed && order != std::memory_order_release) {
            schedules::engine::learn(m_told);
        }
    }
    /// A store that is no release takes from later readers what was told before it; an exchange hands it on.
    ORVANTIS_SEAM void tell(std::memory_order order, bool handsOn) noexcept {
        if (!handsOn) {
            m_told = {};
        }
        if (order != std::memory_order_relaxed && order != std::memory_order_acquire) {
            schedules::engine::tell(m_told);
        }
    }
    ORVANTIS_SEAM T loadFrom(std::memory_order order, const void* site) const noexcept {
        before("load", Access::kRead, site);
        learn(order);
        return m_value;
    }
    ORVANTIS_SEAM void storeFrom(T value, std::memory_order order, const void* site) noexcept {
        before("store", Access::kWrite, site);
        tell(order, false);
        m_value = value;
    }
    ORVANTIS_SEAM bool compareFrom(T& expected, T desired, std::memory_order order,
                                   const void* site) noexcept {
        before("compare", Access::kWrite, site);
        learn(order);
        if (m_value != expected) {
            expected = m_value;
            return false;
        }
        tell(order, true);
        m_value = desired;
        return true;
    }

    T m_value{};
    mutable std::uint32_t m_schedule = 0;
    mutable schedules::VectorClock m_told;
};

}  // namespace orvantis
