// What playing a clip took, and how much of the plug-in's work was hidden behind the host's. Pure; any
// thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string>

#include "tool/shared/base/number_text.h"

namespace simhost::tool {

/// Seconds for all frames.
struct PlayTiming {
    double total = 0.0;
    double waiting = 0.0;  ///< of that in calls of the plug-in
    std::size_t frames = 0;

    /// The host's own: whatever is not spent in the plug-in.
    double work() const noexcept { return std::max(0.0, total - waiting); }
    double perSecond() const noexcept { return total > 0.0 ? static_cast<double>(frames) / total : 0.0; }
    double perFrame(double seconds) const noexcept {
        return frames > 0 ? seconds / static_cast<double>(frames) : 0.0;
    }
};

struct Overlap {
    double hidden = 0.0;    ///< share of the reading and decoding that the host did not wait for, 0 to 1
    double possible = 0.0;  ///< share that is not longer than the host's own work, 0 to 1
};

/// Played synchronously the host waits for all reading and decoding, so that is what it takes; what it still
/// waits for when it announces its frames is not hidden.
inline Overlap overlapOf(const PlayTiming& synchronous, const PlayTiming& asynchronous) noexcept {
    if (synchronous.waiting <= 0.0) {
        return {};
    }
    return {std::clamp(1.0 - asynchronous.waiting / synchronous.waiting, 0.0, 1.0),
            std::clamp(synchronous.work() / synchronous.waiting, 0.0, 1.0)};
}

/// True when announcing frames cost more time than it saved, by more than measuring can blur.
inline bool asynchronousIsSlower(const PlayTiming& synchronous, const PlayTiming& asynchronous) noexcept {
    constexpr double kBlur = 1.02;
    return synchronous.total > 0.0 && asynchronous.total > synchronous.total * kBlur;
}

/// The sentence that says so; empty when it is not.
inline std::string slowerText(const PlayTiming& synchronous, const PlayTiming& asynchronous) {
    return asynchronousIsSlower(synchronous, asynchronous)
               ? "asynchronous play was slower: " + decimalText(asynchronous.perSecond(), 1) +
                     " frames/s against " + decimalText(synchronous.perSecond(), 1) +
                     "; with more of the host's own work (--work-us) or larger frames there is more to hide\n"
               : std::string();
}

}  // namespace simhost::tool
