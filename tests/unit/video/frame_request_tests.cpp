// A request taken over from the host, and the ownership of the host's frame.
#include "video/frame_request.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

namespace orvantis {
namespace {

std::vector<host::PPixHand> disposed;

host::prSuiteError recordDispose(host::PPixHand frame) {
    disposed.push_back(frame);
    return 0;
}

class FrameOwnership : public testing::Test {
 protected:
    FrameOwnership() {
        suite.Dispose = recordDispose;
        disposed.clear();
    }

    host::PPixSuite suite{};
    host::PPixContents* contents[2]{};
    host::PPixHand first = &contents[0];
    host::PPixHand second = &contents[1];
};

TEST_F(FrameOwnership, DroppedFrameIsDisposedOfOnce) {
    { const HostFrame frame(suite, first); }
    EXPECT_EQ(disposed, std::vector{first});
}

TEST_F(FrameOwnership, ReleasedFrameIsTheHosts) {
    {
        HostFrame frame(suite, first);
        EXPECT_EQ(frame.release(), first);
        EXPECT_FALSE(frame);
        EXPECT_EQ(frame.get(), nullptr);
    }
    EXPECT_TRUE(disposed.empty());
}

TEST_F(FrameOwnership, EmptyFrameDisposesOfNothing) {
    {
        HostFrame frame;
        EXPECT_FALSE(frame);
        frame.reset();
        EXPECT_EQ(frame.release(), nullptr);
    }
    EXPECT_TRUE(disposed.empty());
}

TEST_F(FrameOwnership, MovedFrameHasOneOwner) {
    {
        HostFrame frame(suite, first);
        HostFrame other(std::move(frame));
        EXPECT_EQ(other.get(), first);
        HostFrame third;
        third = std::move(other);
        EXPECT_EQ(third.get(), first);
        EXPECT_TRUE(disposed.empty());
    }
    EXPECT_EQ(disposed, std::vector{first});
}

TEST_F(FrameOwnership, ReplacedFrameIsDisposedOf) {
    HostFrame frame(suite, first);
    frame = HostFrame(suite, second);
    EXPECT_EQ(disposed, std::vector{first});
    EXPECT_EQ(frame.get(), second);
}

TEST_F(FrameOwnership, AssigningARequestAnewDropsItsFrame) {
    FrameRequest request;
    request.frame = HostFrame(suite, first);
    request.assign(0, nullptr, 0, suite);
    EXPECT_EQ(disposed, std::vector{first});
    EXPECT_FALSE(request.frame);
}

TEST_F(FrameOwnership, AssignCopiesTheListAndClearsWhatALaterStepSets) {
    FrameRequest request;
    request.frameIndex = 9;
    request.chunk.bytes = 9;
    request.formatChanged = true;
    std::byte* const buffer = request.chunk.buffer.ensure(100);
    const host::imFrameFormat formats[]{{640, 480, 0x61726762}, {0, -1, 7}};
    request.assign(-5, formats, 2, suite);

    EXPECT_EQ(request.frameTime, -5);
    ASSERT_EQ(request.frameFormats.size(), 2U);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameWidth}, 640);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameHeight}, 480);
    EXPECT_EQ(std::uint32_t{request.frameFormats[0].inPixelFormat}, 0x61726762U);
    EXPECT_EQ(std::int32_t{request.frameFormats[1].inFrameHeight}, -1);
    EXPECT_EQ(request.frameIndex, 0U);
    EXPECT_EQ(request.chunk.bytes, 0U);
    EXPECT_EQ(request.chunk.buffer.data(), buffer) << "the buffer is kept for the next frame";
    EXPECT_FALSE(request.formatChanged);
    EXPECT_EQ(request.ppixSuite, &suite);
}

TEST_F(FrameOwnership, AbsentListIsAnEmptyList) {
    const host::imFrameFormat formats[]{{640, 480, 1}};
    FrameRequest request;
    request.assign(0, formats, 1, suite);
    request.assign(0, nullptr, 3, suite);
    EXPECT_TRUE(request.frameFormats.empty());
    request.assign(0, formats, 1, suite);
    request.assign(0, formats, 0, suite);
    EXPECT_TRUE(request.frameFormats.empty());
    request.assign(0, formats, -1, suite);
    EXPECT_TRUE(request.frameFormats.empty());
}

TEST_F(FrameOwnership, ListAtAnOddAddressIsRead) {
    // The host's records are packed by one.
    unsigned char bytes[1 + sizeof(host::imFrameFormat)] = {0xEE, 1, 0, 0, 0, 2, 0, 0, 0, 'b', 'g', 'r', 'a'};
    FrameRequest request;
    request.assign(0, reinterpret_cast<const host::imFrameFormat*>(bytes + 1), 1, suite);
    ASSERT_EQ(request.frameFormats.size(), 1U);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameWidth}, 1);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameHeight}, 2);
    EXPECT_EQ(std::uint32_t{request.frameFormats[0].inPixelFormat}, 0x61726762U);
}

}  // namespace
}  // namespace orvantis
