// Compares the frame-rate arithmetic with the same rules in 128-bit integers, for every number that a file or
// a host can come up with.
#include <cstdlib>
#include <limits>
#include <numeric>

#include "tests/fuzz/fuzz_target.h"
#include "video/frame_rate.h"

namespace {

using orvantis::FrameRate;
__extension__ using Wide = __int128;

constexpr std::int64_t kMaxHostDuration = 2147483647;

Wide magnitude(Wide value) {
    return value < 0 ? -value : value;
}

// |a - b| compared with 0.01 as exact fractions a = an / ad, b = bn / bd: -1 below, 1 above, 0 too near for
// doubles to be told apart.
int distanceFromTolerance(Wide an, Wide ad, Wide bn, Wide bd) {
    // |an * bd - bn * ad| * 100 against |ad * bd|
    const Wide difference = magnitude(an * bd - bn * ad) * 100;
    const Wide scale = magnitude(ad * bd);
    const Wide gap = difference - scale;
    // Doubles of the size of |a| carry an error of about |a| / 2^52, so that much on either side is theirs.
    const Wide doubt = (magnitude(an * bd) * 100 >> 48) + 1;
    if (magnitude(gap) <= doubt) {
        return 0;
    }
    return gap < 0 ? -1 : 1;
}

void checkSanitised(std::int32_t rate, std::int32_t scale) {
    const FrameRate result = orvantis::sanitiseFrameRate(rate, scale);
    if (rate == 0 || scale == 0) {
        FUZZ_CHECK((result == FrameRate{30, 1}));
        return;
    }
    FUZZ_CHECK(result.denominator != 0);
    FUZZ_CHECK(std::gcd(std::int64_t{result.numerator}, std::int64_t{result.denominator}) <= 1);
    // To the nearest whole number, halves away from zero.
    const Wide top = magnitude(rate);
    const Wide bottom = magnitude(scale);
    const Wide size = (2 * top + bottom) / (2 * bottom);
    const Wide rounded = (rate < 0) != (scale < 0) ? -size : size;
    if (size > std::numeric_limits<std::int32_t>::max() / 1000) {
        return;  // beyond 32 bits: wraps as it does
    }
    const int whole = distanceFromTolerance(rate, scale, rounded, 1);
    const int drop = distanceFromTolerance(rate, scale, rounded * 1000, 1001);
    if (whole == 0 || drop == 0) {
        return;
    }
    Wide numerator = rate;
    Wide denominator = scale;
    if (whole < 0) {
        numerator = rounded;
        denominator = 1;
    } else if (drop < 0) {
        numerator = rounded * 1000;
        denominator = 1001;
    }
    FUZZ_CHECK(numerator * result.denominator == denominator * result.numerator);
}

void checkLimited(FrameRate rate, std::int64_t frames) {
    const FrameRate result = orvantis::limitDuration(rate, frames);
    if (rate.denominator <= 0 || frames < 0) {
        return;  // wraps, and cannot come from a list of chunks
    }
    const Wide duration = Wide{rate.denominator} * frames;
    if (duration > std::numeric_limits<std::int64_t>::max()) {
        return;
    }
    if (duration <= kMaxHostDuration) {
        FUZZ_CHECK(result == rate);
        return;
    }
    FUZZ_CHECK(result.numerator >= 1 && result.denominator >= 1);
    FUZZ_CHECK(result.denominator <= rate.denominator);
    // It fits now, as far as whole numbers and doubles go, unless there are more frames than it could.
    FUZZ_CHECK(result.denominator == 1 ||
               Wide{result.denominator} * frames <= kMaxHostDuration + Wide{frames});
}

void checkIndex(std::int64_t time, FrameRate rate, std::int64_t ticks) {
    std::uint32_t expected = std::numeric_limits<std::uint32_t>::max();
    if (rate.numerator != 0) {
        const Wide ticksPerFrame = Wide{rate.denominator} * ticks / rate.numerator;
        if (ticksPerFrame != 0) {
            expected = static_cast<std::uint32_t>(Wide{time} / ticksPerFrame);
        }
    }
    FUZZ_CHECK(orvantis::frameIndexOfTime(time, rate, ticks) == expected);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Numbers numbers(data, size);
    const auto rate = numbers.take<std::int32_t>();
    const auto scale = numbers.take<std::int32_t>();
    const auto time = numbers.take<std::int64_t>();
    const auto ticks = numbers.take<std::int64_t>();
    const auto frames = numbers.take<std::int64_t>();
    checkSanitised(rate, scale);
    checkLimited({rate, scale}, frames);
    checkLimited(orvantis::sanitiseFrameRate(rate, scale), frames);
    checkIndex(time, {rate, scale}, ticks);
    // As in use: the rate that a clip of that many frames is described with, and the host's own ticks.
    const FrameRate used = orvantis::limitDuration(orvantis::sanitiseFrameRate(rate, scale), frames);
    checkIndex(time, used, ticks);
    checkIndex(time, used, 254016000000);
    return 0;
}
