// Arithmetic on numbers that come straight from files and from the host. Defined for every input, as
// video/frame_time.h and video/rate_arithmetic.h say. Any thread.
#include "video/frame_rate.h"

#include "diag/log.h"
#include "video/frame_time.h"
#include "video/rate_arithmetic.h"

namespace orvantis {

namespace {

constexpr FrameRate kDefaultFrameRate{30, 1};

std::int64_t commonDivisor(std::int64_t a, std::int64_t b) noexcept {
    while (b != 0) {
        const std::int64_t rest = remainder(a, b);
        a = b;
        b = rest;
    }
    return usableDivisor(a);
}

}  // namespace

FrameRate sanitiseFrameRate(std::int32_t rate, std::int32_t scale) {
    if (!isRate(rate, scale)) {
        logMessage("Invalid FPS: %d/%d", static_cast<int>(rate), static_cast<int>(scale));
        return kDefaultFrameRate;
    }
    const RateTerms<> terms = plainRate(rate, scale);
    const std::int64_t divisor = commonDivisor(terms.numerator, terms.denominator);
    return {dividedTerm(terms.numerator, divisor), dividedTerm(terms.denominator, divisor)};
}

FrameRate limitDuration(FrameRate rate, std::int64_t frameCount) {
    const std::uint64_t duration = durationOf(rate.denominator, frameCount);
    if (isHostDuration(duration)) {
        return rate;
    }

    logMessage("Video duration overflow detected, adjusting FPS");
    const RateTerms<> scaled = scaledRate(rate.numerator, rate.denominator, duration);
    return {scaled.numerator, scaled.denominator};
}

std::uint32_t frameIndexOfTime(std::int64_t frameTime, FrameRate rate, std::int64_t ticksPerSecond) noexcept {
    return frameIndex(frameTime, rate.numerator, rate.denominator, ticksPerSecond);
}

}  // namespace orvantis
