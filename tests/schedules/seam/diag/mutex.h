// In place of plugin/diag/mutex.h where schedules are explored.
#pragma once

#include <cstdint>
#include <mutex>

#include "tests/schedules/scheduler/call_site.h"
#include "tests/schedules/scheduler/vector_clock.h"

namespace orvantis {

class Mutex {
 public:
    constexpr Mutex() noexcept = default;
    Mutex(const Mutex&) = delete;
    Mutex& operator=(const Mutex&) = delete;

    ORVANTIS_SEAM void lock() noexcept { lockFrom(ORVANTIS_SEAM_SITE); }
    ORVANTIS_SEAM void unlock() noexcept { unlockFrom(ORVANTIS_SEAM_SITE); }

    // For what stands on a mutex.

    void lockFrom(const void* site) noexcept;
    void unlockFrom(const void* site) noexcept;
    bool isFree() const noexcept;
    /// Makes it the running thread's own; it must be free.
    void take() noexcept;
    /// Gives it up as part of another operation.
    void giveUp() noexcept;

 private:
    static constexpr int kNobody = -1;

    int m_owner = kNobody;
    std::uint32_t m_schedule = 0;
    unsigned m_number = 0;  ///< among those of the schedule
    schedules::VectorClock m_told;
};

}  // namespace orvantis
