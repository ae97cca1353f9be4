// Frame-rate arithmetic as functions of numbers alone; defined for every input, since a division trap is no
// C++ exception and would end the host.
#pragma once

#include <cstdint>

namespace orvantis {

/// Frames per second = numerator / denominator.
struct FrameRate {
    std::int32_t numerator = 30;
    std::int32_t denominator = 1;
    friend bool operator==(const FrameRate&, const FrameRate&) = default;
};

/// The rate reported to the host for a stream's dwRate and dwScale, before the duration check. Logs "Invalid
/// FPS" when either is 0.
FrameRate sanitiseFrameRate(std::int32_t rate, std::int32_t scale);

/// Scales the rate down when frameCount frames would not fit the host's 31-bit duration; logs it.
FrameRate limitDuration(FrameRate rate, std::int64_t frameCount);

/// Frame index of a time in ticks: time / (denominator * ticksPerSecond / numerator), truncating, low 32
/// bits. 4294967295 where that has no value.
std::uint32_t frameIndexOfTime(std::int64_t frameTime, FrameRate rate, std::int64_t ticksPerSecond) noexcept;

}  // namespace orvantis
