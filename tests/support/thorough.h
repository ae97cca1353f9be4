// How much of a long row of equal cases a test takes. By itself the first ones and then a part; with
// ORVANTIS_TEST_SAMPLE=1 in the environment, which `./test.sh` sets so that it takes minutes, fewer; with
// ORVANTIS_TEST_SAMPLE=quick, which `./test.sh quick` sets so that it takes seconds, fewer still; with
// ORVANTIS_TEST_EVERYTHING=1, which `./test.sh everything` sets every night, all.
#pragma once

#include <cstdint>

#include "tests/support/environment.h"

namespace orvantis::test {

inline bool takesEverything() {
    return getEnvironment("ORVANTIS_TEST_EVERYTHING") == "1";
}

inline bool takesQuickSample() {
    return !takesEverything() && getEnvironment("ORVANTIS_TEST_SAMPLE") == "quick";
}

inline bool takesSample() {
    return takesQuickSample() || (!takesEverything() && getEnvironment("ORVANTIS_TEST_SAMPLE") == "1");
}

/// How many times as few cases a quick sample takes. A prime, as steps are.
inline constexpr std::uint64_t kQuickTimes = 7;

/// The case that comes behind case n: the next one, but unless everything is taken, behind case `all` the one
/// `step` further.
inline std::uint64_t nextCase(std::uint64_t n, std::uint64_t all, std::uint64_t step) {
    return n < all || takesEverything() ? n + 1 : n + step;
}

/// The same of a row of which only samples are taken: otherwise the next one.
inline std::uint64_t nextSample(std::uint64_t n, std::uint64_t all, std::uint64_t step) {
    if (takesQuickSample()) {
        return n < all / 2 ? n + 1 : n + step * 2;
    }
    return n < all || !takesSample() ? n + 1 : n + step;
}

/// How far it is from one case to the next in a row of which samples take every `step`th. No factor of what
/// the row repeats itself by, so that samples meet all of that.
inline std::uint64_t sampleStep(std::uint64_t step) {
    return takesQuickSample() ? step * kQuickTimes : takesSample() ? step : 1;
}

/// `few` of something, or `many` in a run that takes everything.
inline int howMany(int few, int many) {
    return takesEverything() ? many : few;
}

/// `few` of something in a run that takes samples, or else `many`.
inline int howManyOfSample(int few, int many) {
    return takesQuickSample() ? few / static_cast<int>(kQuickTimes) : takesSample() ? few : many;
}

/// That many operations of something at random, fewer in a quick sample.
inline std::uint64_t howManyAtRandom(std::uint64_t usual) {
    return takesQuickSample() ? usual / kQuickTimes : usual;
}

}  // namespace orvantis::test
