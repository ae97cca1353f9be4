#include "tool/validate/run/patience.h"

#include <algorithm>

namespace simhost::tool::validate {

void Patience::add(const TimeSlice& slice) noexcept {
    // A processor with so much to spare would have taken the process: what went by is its own doing.
    constexpr double kSpare = 0.1;
    // One that wakes up now and then to find that it has to wait on is to end some day on a busy machine,
    // too.
    constexpr double kLeastShare = 0.1;
    const bool spare = slice.idle > kSpare * slice.clock;
    m_had += spare ? slice.clock : std::clamp(slice.worked, kLeastShare * slice.clock, slice.clock);
    m_still = slice.worked > 0 ? 0 : m_still + slice.clock;
}

double Patience::used() const noexcept {
    return std::max(m_had, m_still);
}

}  // namespace simhost::tool::validate
