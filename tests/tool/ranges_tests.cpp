// Frame ranges and play orders.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <set>

#include "tool/shared/media/frame_range.h"
#include "tool/shared/media/play_order.h"

namespace simhost::tool {
namespace {

using Frames = std::vector<std::uint32_t>;

Frames framesIn(const char* text, std::uint32_t count) {
    const auto range = parseFrameRange(text);
    EXPECT_TRUE(range) << text;
    return range ? framesOf(*range, count) : Frames{};
}

TEST(FrameRangeTest, TheLastFrameIsIncluded) {
    EXPECT_EQ(framesIn("5", 10), (Frames{5}));
    EXPECT_EQ(framesIn("2:4", 10), (Frames{2, 3, 4}));
    EXPECT_EQ(framesIn("0:9:4", 10), (Frames{0, 4, 8}));
    EXPECT_EQ(framesIn("7:", 10), (Frames{7, 8, 9}));
    EXPECT_EQ(framesIn("0::5", 10), (Frames{0, 5}));
    EXPECT_EQ(framesIn("all", 3), (Frames{0, 1, 2}));
}

TEST(FrameRangeTest, FramesBehindTheClipAreLeftOut) {
    EXPECT_EQ(framesIn("8:20", 10), (Frames{8, 9}));
    EXPECT_EQ(framesIn("10", 10), Frames{});
    EXPECT_EQ(framesIn("4294967295", 10), Frames{});
    EXPECT_EQ(framesIn("0:4294967295:4294967295", 0xFFFFFFFF), (Frames{0}));
}

TEST(FrameRangeTest, EverythingElseIsRefused) {
    for (const char* text :
         {"", ":", "a", "1:a", "4:2", "1:2:0", "1:2:", "1:2:3:4", "-1", "1 ", "4294967296"}) {
        EXPECT_FALSE(parseFrameRange(text)) << text;
    }
}

Frames firstFrames(std::uint32_t count) {
    Frames out(count);
    std::iota(out.begin(), out.end(), 0u);
    return out;
}

TEST(PlayOrderTest, SequentialAndReverseAreEachOthersMirror) {
    EXPECT_EQ(playOrder(PlayPattern::kSequential, firstFrames(4), 1), (Frames{0, 1, 2, 3}));
    EXPECT_EQ(playOrder(PlayPattern::kReverse, firstFrames(4), 1), (Frames{3, 2, 1, 0}));
}

TEST(PlayOrderTest, ScrubbingGoesBothWaysOverTheWholeClip) {
    const Frames order = playOrder(PlayPattern::kScrub, firstFrames(40), 1);
    EXPECT_EQ(Frames(order.begin(), order.begin() + 9), (Frames{0, 2, 4, 6, 8, 7, 6, 5, 4}));
    EXPECT_EQ(std::set<std::uint32_t>(order.begin(), order.end()).count(39), 1u);
    EXPECT_TRUE(std::all_of(order.begin(), order.end(), [](std::uint32_t i) { return i < 40; }));
    EXPECT_EQ(playOrder(PlayPattern::kScrub, firstFrames(1), 1), (Frames{0}));
    EXPECT_EQ(playOrder(PlayPattern::kScrub, {}, 1), Frames{});
}

TEST(PlayOrderTest, RandomDependsOnTheSeedAlone) {
    const Frames a = playOrder(PlayPattern::kRandom, firstFrames(50), 7);
    EXPECT_EQ(a.size(), 50u);
    EXPECT_EQ(a, playOrder(PlayPattern::kRandom, firstFrames(50), 7));
    EXPECT_NE(a, playOrder(PlayPattern::kRandom, firstFrames(50), 8));
    EXPECT_EQ(playOrder(PlayPattern::kRandom, {}, 7), Frames{});
}

TEST(PlayOrderTest, PatternsHaveNames) {
    EXPECT_EQ(parsePlayPattern("scrub"), PlayPattern::kScrub);
    EXPECT_EQ(parsePlayPattern("random"), PlayPattern::kRandom);
    EXPECT_EQ(parsePlayPattern("Random"), std::nullopt);
}

}  // namespace
}  // namespace simhost::tool
