// Many host threads on one asynchronous importer at random, with services failing now and then. The seed is
// printed and can be set, so that a failure can be run again: ORVANTIS_STRESS_SEED, and
// ORVANTIS_STRESS_OPERATIONS for longer runs.
#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/async_fixture.h"

namespace {

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

struct Tally {
    std::atomic<std::uint64_t> operations{0}, delivered{0}, failed{0}, wrong{0}, refused{0};
};

/// One host thread. `mayFail`: faults are being injected, so that errors are answers too.
void hostThread(simhost::Host& host, const simhost::AsyncClip& async, std::uint64_t seed,
                std::uint64_t operations, bool mayFail, Tally& tally) {
    std::mt19937_64 random(seed);
    const std::uint32_t formats[] = {host::PrPixelFormat_BGRA_4444_8u, host::PrPixelFormat_ARGB_4444_8u,
                                     host::PrPixelFormat_BGRX_4444_8u, host::PrPixelFormat_XRGB_4444_8u};
    for (std::uint64_t i = 0; i < operations; ++i) {
        ++tally.operations;
        const auto index = static_cast<std::uint32_t>(random() % (kClipFrames + 2));
        const host::PrTime time = simhost::firstTickOfFrame(index, 25, 1, host.ticksPerSecond());
        const auto wanted = anySize(formats[random() % 4]);
        if (mayFail && random() % 64 == 0) {
            constexpr simhost::Service kServices[] = {
                simhost::Service::kCreatePPix, simhost::Service::kGetPixels, simhost::Service::kGetRowBytes};
            simhost::FaultPlan fault;
            fault.service = kServices[random() % 3];
            fault.nth = 1 + random() % 3;
            host.addFault(fault);
        }
        const std::uint64_t what = random() % 100;
        if (what < 50) {
            if (async.initiate(time, wanted) != host::aiNoError) ++tally.wrong;
        } else if (what < 98) {
            const simhost::FrameAnswer answer = async.getFrame(time, wanted);
            if (index >= kClipFrames) {
                if (answer.result != host::aiUnknownError || answer.frame) ++tally.wrong;
                ++tally.refused;
            } else if (answer.result == host::aiNoError) {
                if (!answer.frame || !showsFrame(*answer.frame, index)) ++tally.wrong;
                ++tally.delivered;
            } else {
                if (!mayFail || answer.result != host::aiUnknownError || answer.frame) ++tally.wrong;
                ++tally.failed;
            }
        } else if (async.flush() != host::aiNoError) {
            ++tally.wrong;
        }
    }
}

class AsyncStress : public AsyncTest {
 protected:
    void run(bool mayFail) {
        const std::uint64_t seed = numberFrom("ORVANTIS_STRESS_SEED", std::random_device{}());
        const std::uint64_t operations = numberFrom("ORVANTIS_STRESS_OPERATIONS", 20'000);
        RecordProperty("seed", std::to_string(seed));
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        ASSERT_NO_FATAL_FAILURE(openClip());

        constexpr std::uint64_t kRounds =
            10;  // each with an importer of its own, closed while calls may still run
        constexpr std::uint64_t kThreads = 4;
        Tally tally;
        for (std::uint64_t round = 0; round < kRounds; ++round) {
            host().clearTrace();
            auto async = std::make_unique<simhost::AsyncClip>(clip());
            ASSERT_EQ(async->creation().result, host::imNoErr);
            std::vector<std::thread> threads;
            for (std::uint64_t t = 0; t < kThreads; ++t) {
                threads.emplace_back(hostThread, std::ref(host()), std::cref(*async),
                                     seed + round * kThreads + t, operations / kRounds / kThreads, mayFail,
                                     std::ref(tally));
            }
            for (std::thread& thread : threads) thread.join();
            host().clearFaults();
        }
        EXPECT_EQ(tally.wrong.load(), 0u);
        EXPECT_GE(tally.operations.load(), operations / kRounds / kThreads * kThreads * kRounds);
        EXPECT_GT(tally.delivered.load(), 0u);
        EXPECT_GT(tally.refused.load(), 0u);
        if (mayFail) {
            EXPECT_GT(tally.failed.load(), 0u) << "no fault reached a frame";
        }
    }
};

TEST_F(AsyncStress, EveryDeliveredFrameIsRightAndNothingLeaks) {
    run(false);
}

TEST_F(AsyncStress, FaultsOfTheHostCostFramesButNothingElse) {
    run(true);
}

TEST_F(AsyncStress, ClosingUnderRunningCallsNeverHurts) {
    const std::uint64_t seed = numberFrom("ORVANTIS_STRESS_SEED", std::random_device{}());
    std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
    openClip();
    constexpr int kRounds = 150;
    for (int round = 0; round < kRounds; ++round) {
        simhost::AsyncClip async(clip());
        ASSERT_EQ(async.creation().result, host::imNoErr);
        std::atomic<int> ready{0};
        std::atomic<std::uint64_t> wrong{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 3; ++t) {
            threads.emplace_back([&, t] {
                std::mt19937_64 random(seed + static_cast<std::uint64_t>(round * 3 + t));
                ++ready;
                for (int i = 0; i < 20; ++i) {
                    const auto index = static_cast<std::uint32_t>(random() % kClipFrames);
                    const auto wanted = anySize(host::PrPixelFormat_BGRA_4444_8u);
                    const simhost::FrameAnswer answer = async.getFrame(timeOf(index), wanted);
                    // Delivered and right, or turned away because the importer is closed.
                    const bool right =
                        answer.result == host::aiNoError && answer.frame && showsFrame(*answer.frame, index);
                    const bool late = answer.result == host::kUnhandledException && !answer.frame;
                    if (!right && !late) ++wrong;
                    if (late) return;
                }
            });
        }
        while (ready.load() < 3) std::this_thread::yield();
        EXPECT_EQ(async.call(host::aiClose, async.privateData()), host::aiNoError);
        for (std::thread& thread : threads) thread.join();
        ASSERT_EQ(wrong.load(), 0u);
    }
}

}  // namespace
