// Who has heard of what: for each thread of a schedule the last of its steps that happened before this
// moment.
#pragma once

#include <array>
#include <cstdint>

namespace schedules {

/// Threads of one schedule at most, the pool's callbacks included.
inline constexpr unsigned kMaxThreads = 32;

struct VectorClock {
    std::array<std::uint16_t, kMaxThreads> at{};

    void join(const VectorClock& other) noexcept {
        for (unsigned i = 0; i < kMaxThreads; ++i) {
            at[i] = at[i] < other.at[i] ? other.at[i] : at[i];
        }
    }
};

}  // namespace schedules
