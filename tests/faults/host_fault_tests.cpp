// Every single call of a session to a service of the host fails once.
#include <string>

#include "tests/faults/fault_session.h"
#include "tests/support/thorough.h"

namespace {

class HostCallFaults : public SessionFaults {
 protected:
    /// Lets call n, or n and all later ones, answer `result`, for every n. Returns how many calls failed.
    std::uint64_t failEach(std::int32_t result, bool fromThenOn) {
        for (std::uint64_t n = 1; n <= kMost; n = orvantis::test::nextSample(n, 16, 7)) {
            simhost::FaultPlan plan;
            plan.nth = n;
            plan.result = result;
            plan.fromThenOn = fromThenOn;
            std::uint64_t struck = 0;
            const bool good = survives(
                "host call " + std::to_string(n), [&](simhost::Host& host) { host.addFault(plan); },
                [&](simhost::Host& host) {
                    struck = host.injectedFaults();
                    host.clearFaults();
                });
            if (struck == 0) {
                return n - 1;
            }
            if (!good) {
                break;
            }
        }
        ADD_FAILURE() << "no end";
        return 0;
    }
};

TEST_F(HostCallFaults, EachFailsOnce) {
    start();
    const std::uint64_t calls = failEach(host::kSuiteFailed, false);
    EXPECT_GT(calls, 100U);
    RecordProperty("calls", std::to_string(calls));
}

TEST_F(HostCallFaults, EachFailsOnceWithAPositiveResult) {
    start(Log::kOff);
    EXPECT_GT(failEach(1, false), 100U);
}

TEST_F(HostCallFaults, EachFailsAndSoDoAllBehindIt) {
    start(Log::kOff);
    // Giving suites, frames and memory back fails too: the simulated host counts those as given back.
    EXPECT_GT(failEach(host::kSuiteOutOfMemory, true), 100U);
}

}  // namespace
