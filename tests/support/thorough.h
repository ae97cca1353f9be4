// How much of a long row of cases a test takes. `./test.sh` takes the first ones and then a part, so that it
// stays quick; with ORVANTIS_TEST_EVERYTHING=1 in the environment it takes all.
#pragma once

#include <cstdint>

#include "tests/support/environment.h"

namespace orvantis::test {

inline bool takesEverything() {
    return getEnvironment("ORVANTIS_TEST_EVERYTHING") == "1";
}

/// The case that comes behind case n: the next one, but in a quick run behind case `all` the one `step`
/// further.
inline std::uint64_t nextCase(std::uint64_t n, std::uint64_t all, std::uint64_t step) {
    return n < all || takesEverything() ? n + 1 : n + step;
}

/// `few` of something, or `many` in a run that takes everything.
inline int howMany(int few, int many) {
    return takesEverything() ? many : few;
}

}  // namespace orvantis::test
