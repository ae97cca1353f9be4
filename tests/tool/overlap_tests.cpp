// How much of the plug-in's work a host hides by announcing its frames.
#include <gtest/gtest.h>

#include "tool/async/async_timing.h"

namespace simhost::tool {
namespace {

TEST(Overlap, WhatIsWaitedForIsNotHidden) {
    // 10 frames: 5 ms of work and 4 ms of waiting each, of which 3 ms vanish.
    const PlayTiming synchronous{0.090, 0.040, 10};
    const PlayTiming asynchronous{0.060, 0.010, 10};
    const Overlap overlap = overlapOf(synchronous, asynchronous);
    EXPECT_DOUBLE_EQ(overlap.hidden, 0.75);
    EXPECT_DOUBLE_EQ(overlap.possible, 1.0) << "the work is longer than the waiting";
    EXPECT_NEAR(synchronous.perFrame(synchronous.work()), 0.005, 1e-12);
    EXPECT_NEAR(asynchronous.perSecond(), 166.7, 0.1);
}

TEST(Overlap, WorkThatIsTooShortCanHideAPartOnly) {
    EXPECT_DOUBLE_EQ(overlapOf({0.050, 0.040, 10}, {0.041, 0.031, 10}).possible, 0.25);
}

TEST(Overlap, WaitingLongerThanSynchronouslyHidesNothing) {
    EXPECT_EQ(overlapOf({0.050, 0.040, 10}, {0.090, 0.080, 10}).hidden, 0.0);
}

TEST(Overlap, NothingPlayedIsNoDivision) {
    const Overlap overlap = overlapOf({}, {});
    EXPECT_EQ(overlap.hidden, 0.0);
    EXPECT_EQ(overlap.possible, 0.0);
    EXPECT_EQ(PlayTiming{}.perSecond(), 0.0);
    EXPECT_EQ(PlayTiming{}.perFrame(1.0), 0.0);
}

TEST(Overlap, SlowerPlayIsToldInBothRates) {
    EXPECT_EQ(slowerText({1.0, 1.0, 100}, {1.25, 1.0, 100}),
              "asynchronous play was slower: 80.0 frames/s against 100.0; with more of the host's own work "
              "(--work-us) or larger frames there is more to hide\n");
    EXPECT_EQ(slowerText({1.0, 1.0, 100}, {1.01, 1.0, 100}), "") << "no more than measuring can blur";
    EXPECT_EQ(slowerText({1.0, 1.0, 100}, {0.5, 0.2, 100}), "");
}

}  // namespace
}  // namespace simhost::tool
