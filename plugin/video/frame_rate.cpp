// Pure arithmetic on numbers that come straight from files and from the host. No division here can trap, no
// conversion is out of range, no sum or product overflows a signed type. Any thread.
#include "video/frame_rate.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "diag/log.h"

namespace orvantis {

namespace {

constexpr FrameRate kDefaultFrameRate{30, 1};
constexpr double kRateTolerance = 0.01;
constexpr std::uint64_t kMaxHostDuration = 2147483647;  // the host keeps a duration in 31 bits
constexpr std::uint32_t kNoFrame = 4294967295;

// A rate of -2147483648 / -1 is the only one whose quotient leaves 32 bits: it wraps.
std::int32_t low32(double wholeNumber) noexcept {
    return static_cast<std::int32_t>(static_cast<std::int64_t>(wholeNumber));
}

// In 64 bits, since the remainder of -2147483648 and -1 traps in 32.
std::int64_t greatestCommonDivisor(std::int64_t a, std::int64_t b) noexcept {
    while (b != 0) {
        const std::int64_t remainder = a % b;
        a = b;
        b = remainder;
    }
    if (a == 0) return 1;
    return a < 0 ? -a : a;
}

FrameRate reduced(FrameRate rate) noexcept {
    const std::int64_t divisor = greatestCommonDivisor(rate.numerator, rate.denominator);
    // A quotient of 32-bit terms and a positive divisor always fits.
    return {static_cast<std::int32_t>(rate.numerator / divisor),
            static_cast<std::int32_t>(rate.denominator / divisor)};
}

constexpr std::uint64_t magnitude(std::int64_t value) noexcept {
    const auto bits = static_cast<std::uint64_t>(value);
    return value < 0 ? 0 - bits : bits;
}

// factor * value / divisor, truncated, saturated at the largest 64-bit number. The product needs up to 95
// bits. `divisor` is not 0.
std::uint64_t multiplyDivide(std::uint32_t factor, std::uint64_t value, std::uint32_t divisor) noexcept {
    constexpr std::uint64_t kLow = 0xFFFFFFFF;
    const std::uint64_t low = factor * (value & kLow);
    const std::uint64_t high = factor * (value >> 32) + (low >> 32);  // the product's bits from 32 on
    // Long division by one 32-bit digit: the remainder of the high part stands ahead of the low digit.
    const std::uint64_t quotientHigh = high / divisor;
    if (quotientHigh > kLow) return std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t quotientLow = (((high % divisor) << 32) | (low & kLow)) / divisor;
    return (quotientHigh << 32) | quotientLow;
}

}  // namespace

FrameRate sanitiseFrameRate(std::int32_t rate, std::int32_t scale) {
    if (rate == 0 || scale == 0) {
        logMessage("Invalid FPS: %d/%d", static_cast<int>(rate), static_cast<int>(scale));
        return kDefaultFrameRate;
    }
    const double exact = static_cast<double>(rate) / static_cast<double>(scale);
    const double rounded = std::round(exact);  // halves away from zero

    FrameRate result{rate, scale};
    if (std::fabs(rounded - exact) < kRateTolerance) {
        result = {low32(rounded), 1};
    } else if (std::fabs((rounded * 1000.0) / 1001.0 - exact) < kRateTolerance) {
        result = {low32(rounded * 1000.0), 1001};
    }
    return reduced(result);
}

FrameRate limitDuration(FrameRate rate, std::int64_t frameCount) {
    // The product wraps at 64 bits, and a negative one counts as huge.
    const std::uint64_t product =
        static_cast<std::uint64_t>(std::int64_t{rate.denominator}) * static_cast<std::uint64_t>(frameCount);
    if (product <= kMaxHostDuration) return rate;

    logMessage("Video duration overflow detected, adjusting FPS");
    // Below 1, so both terms stay inside 32 bits.
    const double factor = static_cast<double>(kMaxHostDuration) / static_cast<double>(product);
    const std::int32_t numerator = std::max(1, low32(rate.numerator * factor));
    const std::int32_t denominator = low32(rate.denominator * factor);
    return {numerator, denominator < 2 ? 1 : denominator};
}

std::uint32_t frameIndexOfTime(std::int64_t frameTime, FrameRate rate, std::int64_t ticksPerSecond) noexcept {
    if (rate.numerator == 0) return kNoFrame;
    // Truncating division commutes with the sign, so the sizes are divided and the sign is put back at the
    // end. A size of ticks per frame beyond 64 bits saturates: every time then lies in frame 0.
    const std::uint64_t ticksPerFrame =
        multiplyDivide(static_cast<std::uint32_t>(magnitude(rate.denominator)), magnitude(ticksPerSecond),
                       static_cast<std::uint32_t>(magnitude(rate.numerator)));
    if (ticksPerFrame == 0) return kNoFrame;
    const std::uint64_t index = magnitude(frameTime) / ticksPerFrame;
    const bool negative =
        (frameTime < 0) != ((rate.denominator < 0) != ((ticksPerSecond < 0) != (rate.numerator < 0)));
    return static_cast<std::uint32_t>(negative ? 0 - index : index);  // the low 32 bits
}

}  // namespace orvantis
