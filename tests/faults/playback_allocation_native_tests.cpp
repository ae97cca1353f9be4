// What the plug-in takes from the heap while a clip plays: nothing, from the second frame and sound request
// on.
#include <cstring>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "simhost/async_clip.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/allocation_meter/allocation_meter.h"

namespace {

constexpr std::uint32_t kYuy2 = host::PrPixelFormat_YUYV_422_8u_601;

class PlaybackAllocations : public ClipTest {
 protected:
    void watchPlugin() {
        const auto entry = plugin().entry();
        const void* address = nullptr;
        static_assert(sizeof(address) == sizeof(entry));
        std::memcpy(&address, &entry, sizeof(address));
        orvantis::test::countOnlyModuleOf(address);
    }
    /// Allocations of the plug-in while frame and sound `index` are delivered.
    static std::uint64_t play(const simhost::Clip& clip, std::uint32_t index) {
        orvantis::test::startCounting();
        const simhost::FrameAnswer frame = clip.getFrame(index, kYuy2);
        const simhost::AudioAnswer sound = clip.importAudio(-1, clips::kSamplesPerFrame, 2);
        const std::uint64_t allocations = orvantis::test::counted().calls;
        EXPECT_TRUE(frame.frame);
        EXPECT_EQ(sound.result, host::imNoErr);
        return allocations;
    }
};

TEST_F(PlaybackAllocations, OnlyTheFirstFrameAndSoundTakeMemoryAndQuietGivesItBack) {
    startAndInit();
    watchPlugin();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    for (int round = 0; round < 2; ++round) {
        EXPECT_GT(play(clip, 0), 0U) << "the counter counts";
        for (std::uint32_t index = 1; index < 5; ++index) {
            EXPECT_EQ(play(clip, index), 0U) << index;
        }
        ASSERT_EQ(clip.quiet(), host::imNoErr);
        ASSERT_EQ(clip.reopen().result, host::imNoErr);
    }
}

// Reading ahead, a request is an object of its own and a promise; its buffer is one of those that were used
// before. The native pool starts a thread whenever a task finds all others at work, in whichever round that
// happens first, so that a few rounds take more. Without the buffers of before each would take four more.
TEST_F(PlaybackAllocations, ReadingAheadTakesTheSameLittleForEveryFrame) {
    constexpr std::uint64_t kForARequest = 5;
    constexpr std::uint32_t kAhead = 4;
    constexpr int kRounds = 32;
    startAndInit();
    watchPlugin();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    simhost::AsyncClip async = clip.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    const host::imFrameFormat wanted[] = {{0, 0, kYuy2}};
    std::uint64_t beyond = 0;
    int steadyRounds = 0;
    for (int round = 0; round < kRounds; ++round) {
        orvantis::test::startCounting();
        for (std::uint32_t i = 0; i < kAhead; ++i) {
            EXPECT_EQ(async.initiate(clip.frameTime(i), wanted), host::aiNoError);
        }
        for (std::uint32_t i = 0; i < kAhead; ++i) {
            EXPECT_TRUE(async.getFrame(clip.frameTime(i), wanted).frame);
        }
        const std::uint64_t calls = orvantis::test::counted().calls;
        ASSERT_GE(calls, kAhead * kForARequest) << round;
        if (calls == kAhead * kForARequest) {
            ++steadyRounds;
        } else if (round >= 2) {  // the second round takes the buffers of the first in another order
            beyond += calls - kAhead * kForARequest;
        }
    }
    EXPECT_LT(beyond, std::uint64_t{kRounds});
    EXPECT_GE(steadyRounds, kRounds / 2);
}

}  // namespace
