// Every single allocation that the plug-in makes in a session fails once. There are thousands of them, so
// they are dealt out to several tests; with the log on most are those of its lines, of which only a run that
// takes everything takes more than every fifth.
#include <cstring>
#include <string>

#include "tests/faults/fault_session.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/thorough.h"

namespace {

constexpr std::uint64_t kMostAllocations = 50'000;

/// Allocation number `n` of the plug-in from 1 fails, with `fromThere` all later ones too; 0: none.
void startFailing(std::uint64_t n, bool fromThere) {
    orvantis::test::startCounting();
    orvantis::test::failAllocation(static_cast<std::int64_t>(n) - 1, fromThere);
}

/// How many there were.
std::uint64_t stopFailing() {
    orvantis::test::failAllocation(-1, false);
    return orvantis::test::counted().calls;
}

class AllocationFaults : public SessionFaults, public ::testing::WithParamInterface<std::uint64_t> {
 protected:
    static constexpr std::uint64_t kShares = 8;

    void start(Log log) {
        SessionFaults::start(log);
        const auto entry = plugin().entry();
        const void* address = nullptr;
        static_assert(sizeof(address) == sizeof(entry));
        std::memcpy(&address, &entry, sizeof(address));
        orvantis::test::countOnlyModuleOf(address);
    }
    /// Lets allocation n fail for n = first, first + step, ... up to the end. Returns the number of
    /// allocations.
    std::uint64_t failEach(std::uint64_t first, std::uint64_t step) {
        for (std::uint64_t n = first; n <= kMostAllocations; n += step) {
            std::uint64_t allocations = 0;
            const bool good = survives(
                "allocation " + std::to_string(n), [&](simhost::Host&) { startFailing(n, false); },
                [&](simhost::Host&) { allocations = stopFailing(); });
            if (allocations < n) {
                return allocations;
            }
            if (!good) {
                ADD_FAILURE() << "stopped at allocation " << n;
                return 0;
            }
        }
        ADD_FAILURE() << "no end";
        return 0;
    }
};

TEST_P(AllocationFaults, EachFailsOnceWithTheLogOff) {
    start(Log::kOff);
    const std::uint64_t allocations = failEach(GetParam(), kShares * orvantis::test::sampleStep(3));
    EXPECT_GT(allocations, 100U);
    RecordProperty("allocations", std::to_string(allocations));
}

TEST_P(AllocationFaults, EachFailsOnceWithTheLogOn) {
    start(Log::kOn);
    const std::uint64_t allocations =
        failEach(GetParam(),
                 orvantis::test::takesEverything() ? kShares : kShares * 5 * orvantis::test::sampleStep(5));
    EXPECT_GT(allocations, 500U);
    RecordProperty("allocations", std::to_string(allocations));
}

TEST_P(AllocationFaults, EachFailsAndSoDoAllBehindIt) {
    start(Log::kOff);
    std::uint64_t total = 0;
    // With nothing left the plug-in gets less far, and makes fewer attempts: every number up to those of an
    // undisturbed session is gone through.
    ASSERT_TRUE(survives(
        "nothing", [](simhost::Host&) { startFailing(0, false); },
        [&](simhost::Host&) { total = stopFailing(); }));
    for (std::uint64_t n = GetParam(); n <= total; n += kShares * orvantis::test::sampleStep(5)) {
        ASSERT_TRUE(survives(
            "allocations from " + std::to_string(n), [&](simhost::Host&) { startFailing(n, true); },
            [](simhost::Host&) { static_cast<void>(stopFailing()); }));
    }
}

INSTANTIATE_TEST_SUITE_P(Share, AllocationFaults, ::testing::Range<std::uint64_t>(1, 9));

}  // namespace
