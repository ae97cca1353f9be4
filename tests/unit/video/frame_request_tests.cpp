// A request taken over from the host.
#include "video/frame_request.h"

#include <gtest/gtest.h>

#include <vector>

namespace orvantis {
namespace {

std::vector<host::PPixHand> disposed;

host::prSuiteError recordDispose(host::PPixHand frame) {
    disposed.push_back(frame);
    return 0;
}

class FrameRequestTest : public testing::Test {
 protected:
    FrameRequestTest() {
        suite.Dispose = recordDispose;
        disposed.clear();
    }

    host::PPixSuite suite{};
    host::PPixContents* contents = nullptr;
    host::PPixHand first = &contents;
};

TEST_F(FrameRequestTest, AssigningARequestAnewDropsItsFrame) {
    FrameRequest request;
    request.frame = HostFrame(suite, first);
    request.assign(0, nullptr, 0, suite);
    EXPECT_EQ(disposed, std::vector{first});
    EXPECT_FALSE(request.frame);
}

TEST_F(FrameRequestTest, AssignCopiesTheListAndClearsWhatALaterStepSets) {
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

TEST_F(FrameRequestTest, AbsentListIsAnEmptyList) {
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

TEST_F(FrameRequestTest, ListAtAnOddAddressIsRead) {
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
