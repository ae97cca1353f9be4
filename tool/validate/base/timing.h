// How long work takes that the machine does not disturb. Main thread only.
#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace simhost::tool::validate {

/// Seconds of the quickest of several times: a machine with much else to do makes single ones slow.
template <class Work>
double quickestSeconds(int times, const Work& work) {
    double out = std::numeric_limits<double>::max();
    for (int i = 0; i < times; ++i) {
        const auto begin = std::chrono::steady_clock::now();
        work();
        out = std::min(out, std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
    }
    return out;
}

}  // namespace simhost::tool::validate
