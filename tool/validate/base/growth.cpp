#include "tool/validate/base/growth.h"

#include "tool/shared/base/number_text.h"
#include "tool/shared/base/process_usage.h"

namespace simhost::tool::validate {

void checkGrowth(Trial& trial, const Host& host, const std::string& clip, const std::string& call, int rounds,
                 const std::function<void()>& work) {
    constexpr double kMostBytes = 256;
    constexpr double kMostHandles = 0.125;
    for (int i = 0; i < rounds / 10 + 2; ++i) {
        work();
    }
    const std::size_t broken = host.violations().size();
    const ProcessUsage before = processUsage();
    for (int i = 0; i < rounds; ++i) {
        work();
    }
    const ProcessUsage after = processUsage();
    if (host.violations().size() != broken) {
        return;
    }
    const double bytes =
        (static_cast<double>(after.heapBytes) - static_cast<double>(before.heapBytes)) / rounds;
    const double handles =
        (static_cast<double>(after.handles) - static_cast<double>(before.handles)) / rounds;
    const std::string times = call + ", " + std::to_string(rounds) + " times";
    if (bytes > kMostBytes) {
        trial.fail({.call = times,
                    .clip = clip,
                    .seen = decimalText(bytes, 0) + " bytes more on the heap each time"});
    }
    if (handles > kMostHandles) {
        trial.fail(
            {.call = times, .clip = clip, .seen = decimalText(handles, 2) + " handles more each time"});
    }
}

}  // namespace simhost::tool::validate
