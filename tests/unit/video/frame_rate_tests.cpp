// Frame-rate arithmetic: real rates, and the numbers that a damaged or hostile header can hold.
#include "video/frame_rate.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "tests/support/captured_log.h"

namespace orvantis {

// For failure messages.
static void PrintTo(const FrameRate& rate, std::ostream* out) {
    *out << rate.numerator << "/" << rate.denominator;
}

namespace {

constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kTicks = 254016000000;  // what the host says
constexpr std::uint32_t kNoFrame = 4294967295;

struct RateCase {
    std::int32_t rate;
    std::int32_t scale;
    FrameRate expected;
};

// As test names and failure messages show it.
std::ostream& operator<<(std::ostream& out, const RateCase& rate) {
    return out << rate.rate << "/" << rate.scale;
}

class SanitisedRate : public testing::TestWithParam<RateCase> {};

TEST_P(SanitisedRate, IsAsExpected) {
    EXPECT_EQ(sanitiseFrameRate(GetParam().rate, GetParam().scale), GetParam().expected)
        << GetParam().rate << "/" << GetParam().scale;
}

INSTANTIATE_TEST_SUITE_P(RealRates, SanitisedRate,
                         testing::Values(RateCase{24000, 1001, {24000, 1001}},       // 23.976
                                         RateCase{23976, 1000, {24000, 1001}},       //
                                         RateCase{24, 1, {24, 1}},                   //
                                         RateCase{25, 1, {25, 1}},                   //
                                         RateCase{50, 2, {25, 1}},                   //
                                         RateCase{1000000, 40000, {25, 1}},          // microseconds a frame
                                         RateCase{30000, 1001, {30000, 1001}},       // 29.97
                                         RateCase{2997, 100, {30000, 1001}},         //
                                         RateCase{29970, 1000, {30000, 1001}},       //
                                         RateCase{10000000, 333667, {30000, 1001}},  // 100 ns a frame
                                         RateCase{10000000, 333333, {30, 1}},        // 30.00003
                                         RateCase{30, 1, {30, 1}},                   //
                                         RateCase{50, 1, {50, 1}},                   //
                                         RateCase{60000, 1001, {60000, 1001}},       // 59.94
                                         RateCase{5994, 100, {60000, 1001}},         //
                                         RateCase{60, 1, {60, 1}},                   //
                                         RateCase{120000, 1001, {120000, 1001}},     // 119.88
                                         RateCase{25, 2, {25, 2}},                   // 12.5 rounds to 13
                                         RateCase{12500, 1000, {25, 2}},             // reduced all the same
                                         RateCase{15, 2, {15, 2}},                   // 7.5
                                         RateCase{1, 2, {1, 2}},                     // 0.5
                                         RateCase{44100, 1, {44100, 1}}));

// 0.01 is the border of both rules and lies outside them.
INSTANTIATE_TEST_SUITE_P(Borders, SanitisedRate,
                         testing::Values(RateCase{2501, 100, {2501, 100}},     // 25.01
                                         RateCase{25009, 1000, {25, 1}},       // 25.009
                                         RateCase{24991, 1000, {25, 1}},       // 24.991
                                         RateCase{1, 100, {1, 100}},           // 0.01
                                         RateCase{999, 1000, {1, 1}},          // 0.999: whole number first
                                         RateCase{9985, 1000, {10000, 1001}},  // 9.985, 10000/1001 is 9.990
                                         RateCase{1, 101, {0, 1}},             // below 0.01
                                         RateCase{1, 200, {0, 1}}));           // a time-lapse file's rate

INSTANTIATE_TEST_SUITE_P(HostileRates, SanitisedRate,
                         testing::Values(RateCase{-25, 1, {-25, 1}},            //
                                         RateCase{25, -1, {-25, 1}},            //
                                         RateCase{-25, -1, {25, 1}},            //
                                         RateCase{-2997, 100, {-30000, 1001}},  //
                                         RateCase{15, -2, {15, -2}},            // signs stay where they are
                                         RateCase{-15, 2, {-15, 2}},            //
                                         RateCase{-30, -4, {-15, -2}},          //
                                         RateCase{-5, 10, {-1, 2}},             //
                                         RateCase{kMax32, 1, {kMax32, 1}},      //
                                         RateCase{kMin32, 1, {kMin32, 1}},      //
                                         RateCase{kMin32, -1, {kMin32, 1}},     // 2147483648 wraps
                                         RateCase{kMin32, kMin32, {1, 1}},      //
                                         RateCase{kMax32, kMax32, {1, 1}},      //
                                         RateCase{kMin32, kMax32, {-1, 1}},     //
                                         RateCase{1, kMin32, {0, 1}},           //
                                         RateCase{-1, kMax32, {0, 1}},          //
                                         RateCase{kMin32, 3, {kMin32, 3}},      //
                                         RateCase{kMax32, 2, {kMax32, 2}},      //
                                         RateCase{kMin32, 1000000000, {-4194304, 1953125}}));

TEST(SanitisedRateOfZero, IsThirtyAndLogged) {
    test::CapturedLog log;
    EXPECT_EQ(sanitiseFrameRate(0, 1), (FrameRate{30, 1}));
    EXPECT_EQ(sanitiseFrameRate(25, 0), (FrameRate{30, 1}));
    EXPECT_EQ(sanitiseFrameRate(0, 0), (FrameRate{30, 1}));
    EXPECT_EQ(sanitiseFrameRate(0, kMin32), (FrameRate{30, 1}));
    EXPECT_EQ(log.lines(), (std::vector<std::string>{"Invalid FPS: 0/1", "Invalid FPS: 25/0",
                                                     "Invalid FPS: 0/0", "Invalid FPS: 0/-2147483648"}));
}

TEST(SanitisedRateOfAnything, NeverTrapsAndNeverHasDenominatorZero) {
    constexpr std::int32_t kEdges[] = {kMin32, kMin32 + 1, -1001, -2,  -1,   0,          1,          2,
                                       3,      99,         100,   101, 1001, kMax32 / 2, kMax32 - 1, kMax32};
    for (const std::int32_t rate : kEdges) {
        for (const std::int32_t scale : kEdges) {
            EXPECT_NE(sanitiseFrameRate(rate, scale).denominator, 0) << rate << "/" << scale;
        }
    }
}

struct DurationCase {
    FrameRate rate;
    std::int64_t frameCount;
    FrameRate expected;
    bool adjusted;
};

std::ostream& operator<<(std::ostream& out, const DurationCase& duration) {
    return out << duration.frameCount << " frames at " << duration.rate.numerator << "/"
               << duration.rate.denominator;
}

class LimitedDuration : public testing::TestWithParam<DurationCase> {};

TEST_P(LimitedDuration, IsAsExpected) {
    test::CapturedLog log;
    EXPECT_EQ(limitDuration(GetParam().rate, GetParam().frameCount), GetParam().expected);
    const std::vector<std::string> line{"Video duration overflow detected, adjusting FPS"};
    EXPECT_EQ(log.lines(), GetParam().adjusted ? line : std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(
    Cases, LimitedDuration,
    testing::Values(DurationCase{{30000, 1001}, 0, {30000, 1001}, false},
                    DurationCase{{30000, 1001}, 100, {30000, 1001}, false},
                    DurationCase{{30000, 1001}, 2145338, {30000, 1001}, false},  // 2147483338
                    DurationCase{{30000, 1001}, 2145339, {29999, 1000}, true},   // 2147484339
                    DurationCase{{30000, 1001}, 100000000, {643, 21}, true},
                    DurationCase{{25, 1}, 2147483647, {25, 1}, false},
                    DurationCase{{25, 1}, 2147483648, {24, 1}, true},  // the denominator cannot shrink
                    DurationCase{{1, 1}, 2147483648, {1, 1}, true},    // nor the numerator below 1
                    DurationCase{{0, 1}, 2147483648, {1, 1}, true},
                    DurationCase{{-25, 1}, 100, {-25, 1}, false},
                    DurationCase{{-25, 1}, 4294967296, {1, 1}, true},
                    DurationCase{{15, -2}, 10, {1, 1}, true},  // a negative product counts as too large
                    DurationCase{{15, -2}, 0, {15, -2}, false},
                    DurationCase{{kMin32, kMax32}, 2, {1, 1073741823}, true},
                    DurationCase{{kMax32, kMin32}, 4294967295, {1, 1}, true},
                    DurationCase{{30, kMax32}, kMax64, {1, 1}, true},  // the product wraps to 2^63 - 2^31 + 1
                    DurationCase{{30, 1 << 30}, std::int64_t{1} << 34, {30, 1 << 30}, false}));  // wraps to 0

TEST(FrameIndexOfTime, CountsWholeFrames) {
    const FrameRate pal{25, 1};
    const std::int64_t frame = kTicks / 25;
    EXPECT_EQ(frameIndexOfTime(0, pal, kTicks), 0U);
    EXPECT_EQ(frameIndexOfTime(frame - 1, pal, kTicks), 0U);
    EXPECT_EQ(frameIndexOfTime(frame, pal, kTicks), 1U);
    EXPECT_EQ(frameIndexOfTime(frame * 1000, pal, kTicks), 1000U);
    EXPECT_EQ(frameIndexOfTime(frame * 1000 - 1, pal, kTicks), 999U);
}

TEST(FrameIndexOfTime, TruncatesTicksPerFrameFirst) {
    // 3 ticks a second at 2 frames a second: a frame is 3 / 2 = 1 tick, so second 10 is frame 30, not 20.
    EXPECT_EQ(frameIndexOfTime(30, {2, 1}, 3), 30U);
}

TEST(FrameIndexOfTime, IsExactForNtscRates) {
    // 254016000000 * 1001 / 30000 = 8475667200 and 254016000000 * 1001 / 24000 = 10594584000, without
    // remainder.
    EXPECT_EQ(frameIndexOfTime(8475667200 * 107892, {30000, 1001}, kTicks), 107892U);
    EXPECT_EQ(frameIndexOfTime(8475667200 * 107892 - 1, {30000, 1001}, kTicks), 107891U);
    EXPECT_EQ(frameIndexOfTime(10594584000 * 86313, {24000, 1001}, kTicks), 86313U);
}

TEST(FrameIndexOfTime, NegativeTimeGivesTheLowBitsOfANegativeIndex) {
    const std::int64_t frame = kTicks / 25;
    EXPECT_EQ(frameIndexOfTime(-frame, {25, 1}, kTicks), 4294967295U);
    EXPECT_EQ(frameIndexOfTime(-2 * frame, {25, 1}, kTicks), 4294967294U);
    EXPECT_EQ(frameIndexOfTime(-frame + 1, {25, 1}, kTicks), 0U);  // truncates towards frame 0
}

TEST(FrameIndexOfTime, KeepsTheLow32BitsOfALargeIndex) {
    EXPECT_EQ(frameIndexOfTime((std::int64_t{1} << 32) + 5, {1, 1}, 1), 5U);
    EXPECT_EQ(frameIndexOfTime(kMin64, {1, 1}, 1), 0U);
    EXPECT_EQ(frameIndexOfTime(kMax64, {1, 1}, 1), 4294967295U);
}

TEST(FrameIndexOfTime, HasNoFrameWhereARateOrTimeBaseGivesNoDuration) {
    EXPECT_EQ(frameIndexOfTime(0, {0, 1}, kTicks), kNoFrame);
    EXPECT_EQ(frameIndexOfTime(kTicks, {0, 1}, kTicks), kNoFrame);
    EXPECT_EQ(frameIndexOfTime(kTicks, {25, 1}, 0), kNoFrame);
    EXPECT_EQ(frameIndexOfTime(kTicks, {25, 1}, 24), kNoFrame);  // 24 / 25 is 0 ticks
    EXPECT_EQ(frameIndexOfTime(kTicks, {kMax32, 1}, 2147483646), kNoFrame);
    EXPECT_EQ(frameIndexOfTime(25, {25, 1}, 25), 25U);
}

TEST(FrameIndexOfTime, SurvivesProductsBeyond64Bits) {
    // 254016000000 ticks * 36310201 is the last product that fits; a frame then lasts more than a year.
    EXPECT_EQ(frameIndexOfTime(kTicks * 36310201, {1, 36310201}, kTicks), 1U);
    EXPECT_EQ(frameIndexOfTime(kTicks * 36310201 - 1, {1, 36310201}, kTicks), 0U);
    EXPECT_EQ(frameIndexOfTime(kMax64, {1, 36310202}, kTicks), 0U);
    EXPECT_EQ(frameIndexOfTime(kTicks * 36310201, {2, 36310202}, kTicks), 1U);
    // 2147483647 / 2147483646 frames a second: the product needs 69 bits, the quotient 38.
    EXPECT_EQ(frameIndexOfTime(254015999881 * 1000, {kMax32, kMax32 - 1}, kTicks), 1000U);
    EXPECT_EQ(frameIndexOfTime(254015999881 * 1000 - 1, {kMax32, kMax32 - 1}, kTicks), 999U);
    // Even the quotient beyond 64 bits: every time lies in frame 0.
    EXPECT_EQ(frameIndexOfTime(kMin64, {1, kMin32}, kMin64), 0U);
    EXPECT_EQ(frameIndexOfTime(kMax64, {-1, kMax32}, kMax64), 0U);
    // The smallest of all is 1: -2^63 divided by -2^63.
    EXPECT_EQ(frameIndexOfTime(kMin64, {1, 1}, kMin64), 1U);
    EXPECT_EQ(frameIndexOfTime(kMin64, {-1, 1}, kMin64), 4294967295U);
}

TEST(FrameIndexOfTime, MinusOneAsDivisorDoesNotTrap) {
    EXPECT_EQ(frameIndexOfTime(kMin64, {-1, 1}, 1), 0U);                // 2^63
    EXPECT_EQ(frameIndexOfTime(kMin64, {1, -1}, 1), 0U);                //
    EXPECT_EQ(frameIndexOfTime(5, {kMin32, kMin32}, -1), 4294967291U);  // -5
    EXPECT_EQ(frameIndexOfTime(5, {-1, 1}, kMin64), 0U);
}

#if defined(__SIZEOF_INT128__)

__extension__ using Int128 = __int128;

std::uint32_t expectedIndex(std::int64_t frameTime, FrameRate rate, std::int64_t ticksPerSecond) {
    if (rate.numerator == 0) {
        return kNoFrame;
    }
    const Int128 ticksPerFrame = static_cast<Int128>(rate.denominator) * ticksPerSecond / rate.numerator;
    if (ticksPerFrame == 0) {
        return kNoFrame;
    }
    return static_cast<std::uint32_t>(static_cast<Int128>(frameTime) / ticksPerFrame);
}

TEST(FrameIndexOfTime, AgreesWith128BitArithmeticAtTheEdges) {
    const std::vector<std::int32_t> terms{kMin32,   kMin32 + 1, -36310203,  -1001, -1,    0,
                                          1,        2,          3,          1001,  30000, 36310201,
                                          36310202, 36310203,   kMax32 - 1, kMax32};
    const std::vector<std::int64_t> times{kMin64,     kMin64 + 1, -kTicks, -1,         0,     1,
                                          4294967295, 4294967296, kTicks,  kMax64 - 1, kMax64};
    for (const std::int32_t numerator : terms) {
        for (const std::int32_t denominator : terms) {
            for (const std::int64_t ticks : times) {
                for (const std::int64_t time : times) {
                    const FrameRate rate{numerator, denominator};
                    ASSERT_EQ(frameIndexOfTime(time, rate, ticks), expectedIndex(time, rate, ticks))
                        << numerator << "/" << denominator << " ticks " << ticks << " time " << time;
                }
            }
        }
    }
}

TEST(FrameIndexOfTime, AgreesWith128BitArithmeticAtRandom) {
    constexpr std::uint64_t kSeed = 20240607;
    std::mt19937_64 random(kSeed);
    // Numbers of every length, so that quotients of every length come up.
    const auto any64 = [&] {
        return static_cast<std::int64_t>(random() >> (random() % 64)) * (random() % 2 ? 1 : -1);
    };
    const auto any32 = [&] { return static_cast<std::int32_t>(any64()); };
    for (int i = 0; i < 200000; ++i) {
        const FrameRate rate{any32(), any32()};
        const std::int64_t ticks = any64();
        const std::int64_t time = any64();
        ASSERT_EQ(frameIndexOfTime(time, rate, ticks), expectedIndex(time, rate, ticks))
            << "seed " << kSeed << ", " << rate.numerator << "/" << rate.denominator << " ticks " << ticks
            << " time " << time;
    }
}

#endif

}  // namespace
}  // namespace orvantis
