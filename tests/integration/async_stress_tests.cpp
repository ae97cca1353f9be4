// Many host threads on one asynchronous importer at random, while services of the host, the codec library and
// reads of the file fail now and then. The seed is printed and can be set, so that a failure can be run
// again: ORVANTIS_STRESS_SEED, and ORVANTIS_STRESS_OPERATIONS for longer runs.
#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/shared_library.h"
#include "standin/error_codes.h"
#include "tests/integration/async_fixture.h"
#include "tests/support/environment.h"
#include "tests/support/file_hooks.h"
#include "tests/support/latch.h"
#include "tests/support/thorough.h"

namespace {

using orvantis::test::FileHooks;
using orvantis::test::ScopedEnvironment;

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// What fails now and then.
struct Faults {
    bool host = false;
    bool codec = false;
    FileHooks* file = nullptr;  ///< reads and seeks of the native twin

    bool any() const { return host || codec || file != nullptr; }
};

struct Tally {
    std::atomic<std::uint64_t> operations{0}, delivered{0}, failed{0}, wrong{0}, refused{0}, late{0};
};

/// Some of the codec calls that so many operations lead to, at random. The remark makes the library count
/// anew.
std::string codecFaults(std::mt19937_64& random, std::uint64_t operations) {
    std::string plan = "#" + std::to_string(random());
    for (std::uint64_t i = 0; i < 24; ++i) {
        const char* const function = i < 16 ? "decompress" : i < 20 ? "decompress_begin" : "decompress_end";
        plan += "," + std::string(function) + ":" + std::to_string(1 + random() % (operations / 2 + 1));
    }
    return plan;
}

void addFault(simhost::Host& host, const Faults& faults, std::mt19937_64& random) {
    if (faults.host) {
        constexpr simhost::Service kServices[] = {simhost::Service::kCreatePPix, simhost::Service::kGetPixels,
                                                  simhost::Service::kGetRowBytes};
        simhost::FaultPlan fault;
        fault.service = kServices[random() % 3];
        fault.nth = 1 + random() % 3;
        host.addFault(fault);
    }
    if (faults.file != nullptr) {
        auto& operations = random() % 2 == 0 ? faults.file->reads : faults.file->seeks;
        operations.failAt = operations.count + 1 + random() % 3;
    }
}

/// One host thread. Ends early when the importer has been closed under it.
void hostThread(simhost::Host& host, const simhost::AsyncClip& async, std::uint64_t seed,
                std::uint64_t operations, const Faults& faults, Tally& tally) {
    std::mt19937_64 random(seed);
    const std::uint32_t formats[] = {host::PrPixelFormat_BGRA_4444_8u, host::PrPixelFormat_ARGB_4444_8u,
                                     host::PrPixelFormat_BGRX_4444_8u, host::PrPixelFormat_XRGB_4444_8u};
    for (std::uint64_t i = 0; i < operations; ++i) {
        ++tally.operations;
        const auto index = static_cast<std::uint32_t>(random() % (kClipFrames + 2));
        const host::PrTime time = simhost::firstTickOfFrame(index, 25, 1, host.ticksPerSecond());
        const auto wanted = anySize(formats[random() % 4]);
        if (faults.any() && random() % 64 == 0) {
            addFault(host, faults, random);
        }
        const std::uint64_t what = random() % 100;
        std::int32_t result = host::aiNoError;
        if (what < 50) {
            result = async.initiate(time, wanted);
            if (result != host::aiNoError && result != host::kUnhandledException) {
                ++tally.wrong;
            }
        } else if (what < 98) {
            const simhost::FrameAnswer answer = async.getFrame(time, wanted);
            result = answer.result;
            if (index >= kClipFrames) {
                if (answer.frame) {
                    ++tally.wrong;
                }
                ++tally.refused;
            } else if (result == host::aiNoError) {
                if (!answer.frame || !showsFrame(*answer.frame, index)) {
                    ++tally.wrong;
                }
                ++tally.delivered;
            } else {
                if (answer.frame) {
                    ++tally.wrong;
                }
                if (result == host::aiUnknownError) {
                    if (!faults.any()) {
                        ++tally.wrong;
                    }
                    ++tally.failed;
                }
            }
            if (index >= kClipFrames && result != host::aiUnknownError &&
                result != host::kUnhandledException) {
                ++tally.wrong;
            }
        } else {
            result = async.flush();
            if (result != host::aiNoError && result != host::kUnhandledException) {
                ++tally.wrong;
            }
        }
        // Turned away: the importer is closed.
        if (result == host::kUnhandledException) {
            ++tally.late;
            return;
        }
    }
}

class AsyncStress : public AsyncTest {
 protected:
    enum class Close { kBehindTheCalls, kUnderTheCalls };

    void run(const Faults& faults, std::uint64_t usualOperations, Close close = Close::kBehindTheCalls) {
        const std::uint64_t seed = numberFrom("ORVANTIS_STRESS_SEED", std::random_device{}());
        const std::uint64_t operations =
            numberFrom("ORVANTIS_STRESS_OPERATIONS", orvantis::test::howManyAtRandom(usualOperations));
        RecordProperty("seed", std::to_string(seed));
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        // Loaded here too, so that its account can be read when the plug-in is gone.
        const simhost::SharedLibrary codec(codecFolder() + ORVANTIS_CODEC_FILE);
        ASSERT_NO_FATAL_FAILURE(openClip());

        // Each with an importer of its own.
        const std::uint64_t kRounds = close == Close::kUnderTheCalls ? 40 : 10;
        constexpr std::uint64_t kThreads = 4;
        const std::uint64_t each = operations / kRounds / kThreads;
        std::mt19937_64 random(seed);
        Tally tally;
        for (std::uint64_t round = 0; round < kRounds; ++round) {
            host().clearTrace();
            const ScopedEnvironment plan("ORVANTIS_STANDIN_FAIL",
                                         faults.codec ? codecFaults(random, each * kThreads) : "");
            auto async = std::make_unique<simhost::AsyncClip>(clip());
            ASSERT_EQ(async->creation().result, host::imNoErr);
            const std::uint64_t closeAt = tally.operations + random() % (each * kThreads);
            std::atomic<std::uint64_t> ended{0};
            std::vector<std::thread> threads;
            for (std::uint64_t t = 0; t < kThreads; ++t) {
                threads.emplace_back([&, t] {
                    hostThread(host(), *async, seed + round * kThreads + t, each, faults, tally);
                    ++ended;
                });
            }
            if (close == Close::kUnderTheCalls) {
                while (tally.operations < closeAt && ended < kThreads) {
                    std::this_thread::yield();
                }
                EXPECT_EQ(async->call(host::aiClose, async->privateData()), host::aiNoError);
            }
            for (std::thread& thread : threads) {
                thread.join();
            }
            // What was not struck must not strike the next importer's opening.
            host().clearFaults();
            if (faults.file != nullptr) {
                faults.file->reads.failAt = faults.file->seeks.failAt = 0;
            }
        }
        EXPECT_EQ(tally.wrong.load(), 0u);
        EXPECT_GT(tally.delivered.load(), 0u);
        EXPECT_GT(tally.refused.load(), 0u);
        if (close == Close::kBehindTheCalls) {
            EXPECT_EQ(tally.late.load(), 0u);
            EXPECT_EQ(tally.operations.load(), each * kThreads * kRounds);
        } else {
            EXPECT_GT(tally.late.load(), 0u) << "no call met the close";
        }
        if (faults.any()) {
            EXPECT_GT(tally.failed.load(), 0u) << "no fault reached a frame";
        }
        dropClip();
        stop();
        const auto libraryClose = reinterpret_cast<std::int32_t (*)()>(codec.find("orvantis_library_close"));
        ASSERT_NE(libraryClose, nullptr);
        EXPECT_EQ(libraryClose(), static_cast<std::int32_t>(orvantis::standin::Error::kNotInitialised))
            << "an initialisation or a session of the codec library was left";
    }
};

TEST_F(AsyncStress, EveryDeliveredFrameIsRightAndNothingLeaks) {
    run({}, 12'000);
}

TEST_F(AsyncStress, FaultsOfTheHostCostFramesButNothingElse) {
    Faults faults;
    faults.host = true;
    run(faults, 8'000);
}

TEST_F(AsyncStress, FaultsOfTheCodecCostFramesButNothingElse) {
    Faults faults;
    faults.codec = true;
    run(faults, 8'000);
}

#ifndef _WIN32
TEST_F(AsyncStress, FailingReadsCostFramesButNothingElse) {
    orvantis::test::InstalledFileHooks hooks;
    Faults faults;
    faults.file = &*hooks;
    run(faults, 8'000);
    EXPECT_EQ(hooks->opened, hooks->closes);
}
#endif

TEST_F(AsyncStress, ClosingWhileEverythingFailsLeavesNothing) {
    Faults faults;
    faults.host = true;
    faults.codec = true;
#ifndef _WIN32
    orvantis::test::InstalledFileHooks hooks;
    faults.file = &*hooks;
#endif
    run(faults, 12'000, Close::kUnderTheCalls);
#ifndef _WIN32
    EXPECT_EQ(hooks->opened, hooks->closes);
#endif
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
                    if (!right && !late) {
                        ++wrong;
                    }
                    if (late) {
                        return;
                    }
                }
            });
        }
        while (ready.load() < 3) {
            std::this_thread::yield();
        }
        EXPECT_EQ(async.call(host::aiClose, async.privateData()), host::aiNoError);
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(wrong.load(), 0u);
    }
}

TEST_F(AsyncStress, ImportersAreMadeAndClosedOnSeveralThreadsAtOnce) {
    openClip();
    constexpr int kThreads = 4;
    constexpr int kRounds = 60;
    std::atomic<std::uint64_t> wrong{0};
    orvantis::test::Latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            start.arriveAndWait();
            for (int round = 0; round < kRounds; ++round) {
                simhost::AsyncClip async(clip());
                const auto index = static_cast<std::uint32_t>(round) % kClipFrames;
                const auto wanted = anySize(host::PrPixelFormat_BGRA_4444_8u);
                const bool made = async.creation().result == host::imNoErr;
                const simhost::FrameAnswer answer =
                    made ? async.getFrame(timeOf(index), wanted) : simhost::FrameAnswer();
                if (!answer.frame || !showsFrame(*answer.frame, index)) {
                    ++wrong;
                }
                if (async.flush() != host::aiNoError || async.close() != host::aiNoError) {
                    ++wrong;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong.load(), 0u);
}

}  // namespace
