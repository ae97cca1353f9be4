#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include "fake_plugin.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "simhost/frame.h"
#include "simhost/host.h"

namespace simhost {
namespace {

using test::acquire;

// A host with the two frame suites held.
struct FrameHost {
    explicit FrameHost(RowBytesPolicy policy = RowBytesPolicy::kPadded, HostOptions options = {})
        : sim(profileWith(policy), options),
          creator(acquire<host::PPixCreatorSuite>(sim.basicSuite(), host::kPPixCreatorSuiteName, 1)),
          ppix(acquire<host::PPixSuite>(sim.basicSuite(), host::kPPixSuiteName, 1)) {}

    static HostProfile profileWith(RowBytesPolicy policy) {
        HostProfile profile = defaultProfile();
        profile.rowBytes = policy;
        return profile;
    }
    host::PPixHand create(std::uint32_t format, std::int32_t width, std::int32_t height) const {
        host::PPixHand made = nullptr;
        const host::prRect bounds{0, 0, width, height};
        EXPECT_EQ(creator->CreatePPix(&made, host::kBufferAccessWriteOnly, format, &bounds), 0);
        return made;
    }
    unsigned char* pixels(host::PPixHand frame) const {
        char* address = nullptr;
        EXPECT_EQ(ppix->GetPixels(frame, host::kBufferAccessWriteOnly, &address), 0);
        return reinterpret_cast<unsigned char*>(address);
    }
    std::int32_t rowBytes(host::PPixHand frame) const {
        std::int32_t bytes = 0;
        EXPECT_EQ(ppix->GetRowBytes(frame, &bytes), 0);
        return bytes;
    }

    Host sim;
    const host::PPixCreatorSuite* creator;
    const host::PPixSuite* ppix;
};

TEST(Frames, RowBytesFollowThePolicy) {
    struct Case {
        RowBytesPolicy policy;
        std::uint32_t format;
        std::int32_t width;
        std::int32_t rowBytes;
    };
    const Case cases[] = {
        {RowBytesPolicy::kMinimal, host::PrPixelFormat_BGRA_4444_8u, 5, 20},
        {RowBytesPolicy::kAligned16, host::PrPixelFormat_BGRA_4444_8u, 5, 32},
        {RowBytesPolicy::kPadded, host::PrPixelFormat_BGRA_4444_8u, 4, 32},
        {RowBytesPolicy::kNegative, host::PrPixelFormat_BGRA_4444_8u, 5, -48},
        {RowBytesPolicy::kMinimal, host::PrPixelFormat_V210_422_10u_601, 7, 32},
        {RowBytesPolicy::kPadded, host::PrPixelFormat_V210_422_10u_601, 7, 256},
        {RowBytesPolicy::kPadded, host::PrPixelFormat_V210_422_10u_601, 49, 384},
    };
    for (const Case& c : cases) {
        FrameHost frames(c.policy);
        const host::PPixHand frame = frames.create(c.format, c.width, 2);
        EXPECT_EQ(frames.rowBytes(frame), c.rowBytes);
        EXPECT_EQ(frames.ppix->Dispose(frame), 0);
        EXPECT_TRUE(frames.sim.violations().empty());
    }
}

TEST(Frames, PixelsStartPoisonedAndAligned) {
    FrameHost frames;
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_16u, 3, 3);
    const unsigned char* pixels = frames.pixels(frame);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pixels) % 64, 0u);
    for (int y = 0; y < 3; ++y) {
        const unsigned char* row = pixels + y * frames.rowBytes(frame);
        EXPECT_TRUE(
            std::all_of(row, row + 24, [](unsigned char b) { return b == FrameBuffer::kPixelPoison; }));
    }
    EXPECT_EQ(frames.ppix->Dispose(frame), 0);
}

TEST(Frames, NegativeRowsAllLieInsideTheBuffer) {
    FrameHost frames(RowBytesPolicy::kNegative);
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_8u, 8, 5);
    unsigned char* pixels = frames.pixels(frame);
    for (int y = 0; y < 5; ++y) {
        std::fill_n(pixels + y * frames.rowBytes(frame), 32, static_cast<unsigned char>(y));
    }
    const auto buffer = frames.sim.takeDelivered(frame);
    ASSERT_TRUE(buffer);
    {
        const Frame delivered(frames.sim, buffer, true);
        for (int y = 0; y < 5; ++y) {
            EXPECT_EQ(delivered.pictureRow(y)[31], y);
            EXPECT_EQ(delivered.storedRow(y)[0], y);
        }
    }
    EXPECT_TRUE(frames.sim.violations().empty());
}

TEST(Frames, AWriteIntoThePaddingIsFoundAtDisposal) {
    FrameHost frames;
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 3);
    frames.pixels(frame)[frames.rowBytes(frame) + 16 + 2] = 0;
    EXPECT_EQ(frames.ppix->Dispose(frame), 0);
    EXPECT_EQ(
        texts(frames.sim.violations()),
        (std::vector<std::string>{
            "frames.padding: frame PrPixelFormat_BGRA_4444_8u 4 x 3: 1 bytes written behind the pixels of "
            "line 1, the first 2 bytes in"}));
}

TEST(Frames, WritesBeforeAndBehindTheBufferAreFoundWhenTheHostIsDoneWithIt) {
    FrameHost frames(RowBytesPolicy::kMinimal);
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
    frames.pixels(frame)[-1] = 0;
    frames.pixels(frame)[32] = 0;
    frames.pixels(frame)[33] = 0;
    { const Frame delivered(frames.sim, frames.sim.takeDelivered(frame), true); }
    EXPECT_EQ(
        texts(frames.sim.violations()),
        (std::vector<std::string>{
            "frames.bounds: frame PrPixelFormat_BGRA_4444_8u 4 x 2: 1 bytes written before the buffer, the "
            "first 255 bytes in; 2 bytes written behind the buffer, the first 0 bytes in"}));
}

TEST(Frames, LeakedFramesAreReported) {
    FrameHost frames;
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
    EXPECT_EQ(frames.sim.balance().frames, 1u);
    EXPECT_FALSE(frames.sim.balance().isBalanced());
    EXPECT_NE(frames.sim.report().find("1 frames not disposed of, "), std::string::npos);
    EXPECT_EQ(frames.ppix->Dispose(frame), 0);
    EXPECT_EQ(frames.sim.balance().frames, 0u);
}

TEST(Frames, ADeliveredFrameIsTheHostsAndNoLeak) {
    FrameHost frames;
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
    const auto buffer = frames.sim.takeDelivered(frame);
    EXPECT_EQ(frames.sim.balance().frames, 0u);
    EXPECT_EQ(frames.sim.balance().deliveredFrames, 1u);
    EXPECT_NE(frames.ppix->Dispose(frame), 0);
    EXPECT_EQ(frames.sim.takeDelivered(frame), nullptr);
    EXPECT_EQ(
        texts(frames.sim.violations()),
        (std::vector<std::string>{"frames.owner: Dispose: the frame was delivered",
                                  "frames.delivered-once: imGetSourceVideo: a frame was delivered twice"}));
    frames.sim.releaseDelivered(buffer);
    EXPECT_EQ(frames.sim.balance().deliveredFrames, 0u);
}

TEST(Frames, DisposingTwiceOrOfNothingIsAViolation) {
    FrameHost frames;
    const host::PPixHand frame = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
    EXPECT_EQ(frames.ppix->Dispose(frame), 0);
    EXPECT_NE(frames.ppix->Dispose(frame), 0);
    EXPECT_NE(frames.ppix->Dispose(nullptr), 0);
    EXPECT_EQ(texts(frames.sim.violations()),
              (std::vector<std::string>{"frames.live: Dispose: no live frame",
                                        "frames.live: Dispose: no live frame"}));
}

TEST(Frames, CreationRefusesReadOnlyAccessAndUnknownShapes) {
    FrameHost frames;
    host::PPixHand made = nullptr;
    const host::prRect good{0, 0, 4, 2};
    const host::prRect empty{0, 0, 0, 2};
    const host::prRect turned{4, 0, 0, 2};
    const auto bgra = host::PrPixelFormat_BGRA_4444_8u;
    EXPECT_EQ(frames.creator->CreatePPix(&made, host::kBufferAccessWriteOnly, bgra, &empty),
              host::kSuiteBadParameters);
    EXPECT_EQ(frames.creator->CreatePPix(&made, host::kBufferAccessWriteOnly, bgra, &turned),
              host::kSuiteBadParameters);
    EXPECT_EQ(frames.creator->CreatePPix(&made, host::kBufferAccessWriteOnly, host::PrPixelFormat_Raw, &good),
              host::kSuiteBadParameters);
    EXPECT_TRUE(frames.sim.violations().empty());
    EXPECT_EQ(frames.creator->CreatePPix(&made, host::kBufferAccessReadOnly, bgra, &good),
              host::kSuiteBadParameters);
    EXPECT_EQ(texts(frames.sim.violations()),
              (std::vector<std::string>{"frames.access: CreatePPix, access: 0"}));
    EXPECT_EQ(made, nullptr);
}

TEST(Frames, FramesAboveTheHostsLimitAreRefusedAsOutOfMemory) {
    HostOptions options;
    options.largestFrameBytes = 1000;
    FrameHost frames(RowBytesPolicy::kMinimal, options);
    host::PPixHand made = nullptr;
    const host::prRect most{0, 0, 25, 10};
    const host::prRect more{0, 0, 25, 11};
    const host::prRect huge{0, 0, 0x7FFFFFFF, 0x7FFFFFFF};
    const auto bgra = host::PrPixelFormat_BGRA_4444_8u;
    EXPECT_EQ(frames.creator->CreatePPix(&made, 1, bgra, &more), host::kSuiteOutOfMemory);
    EXPECT_EQ(frames.creator->CreatePPix(&made, 1, bgra, &huge), host::kSuiteOutOfMemory);
    EXPECT_EQ(frames.creator->CreatePPix(&made, 1, bgra, &most), 0);
    EXPECT_EQ(frames.ppix->Dispose(made), 0);
}

TEST(Frames, RecycledFramesAreWatchedLikeNewOnes) {
    HostOptions options;
    options.recycleFrames = true;
    FrameHost frames(RowBytesPolicy::kPadded, options);
    const host::PPixHand first = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
    frames.pixels(first)[0] = 1;
    EXPECT_EQ(frames.ppix->Dispose(first), 0);
    EXPECT_EQ(frames.sim.balance().frames, 0u);
    const host::PPixHand second = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
    EXPECT_EQ(second, first);
    EXPECT_EQ(frames.pixels(second)[0], FrameBuffer::kPixelPoison);
    frames.pixels(second)[16] = 1;
    EXPECT_EQ(frames.ppix->Dispose(second), 0);
    EXPECT_EQ(frames.sim.violations().size(), 1u);
}

TEST(Frames, AFrameMayOutliveItsHost) {
    std::unique_ptr<Frame> kept;
    {
        FrameHost frames;
        const host::PPixHand made = frames.create(host::PrPixelFormat_BGRA_4444_8u, 4, 2);
        std::fill_n(frames.pixels(made), 16, static_cast<unsigned char>(7));
        kept = std::make_unique<Frame>(frames.sim, frames.sim.takeDelivered(made), false);
    }
    EXPECT_EQ(kept->storedRow(0)[15], 7);
    EXPECT_EQ(kept->pictureRow(1)[15], 7) << "bottom row first";
    EXPECT_EQ(kept->picture().size(), 32u);
    kept.reset();
}

TEST(Frames, ManyThreadsCreateAndDisposeAtOnce) {
    FrameHost frames;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&frames] {
            for (int i = 0; i < 50; ++i) {
                const host::PPixHand frame = frames.create(host::PrPixelFormat_YUYV_422_8u_601, 16, 4);
                frames.pixels(frame)[0] = 1;
                EXPECT_EQ(frames.ppix->Dispose(frame), 0);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(frames.sim.calls(Service::kCreatePPix), 200u);
    EXPECT_EQ(frames.sim.balance().frames, 0u);
    EXPECT_TRUE(frames.sim.violations().empty());
}

}  // namespace
}  // namespace simhost
