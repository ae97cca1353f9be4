// Spare chunk buffers: handed out again as they are, and never more than their bound.
#include <gtest/gtest.h>

#include <utility>

#include "async/spare_chunks.h"

namespace {

using orvantis::FrameChunk;
using orvantis::SpareChunks;

constexpr std::size_t kMebibyte = 1 << 20;

FrameChunk chunkOf(std::size_t bytes) {
    FrameChunk chunk;
    chunk.buffer.ensure(bytes);
    return chunk;
}

TEST(SpareChunks, ABufferComesBackWithoutBeingAllocatedAnew) {
    SpareChunks spares;
    FrameChunk chunk = chunkOf(1000);
    const std::byte* const place = chunk.buffer.data();
    spares.put(std::move(chunk));
    EXPECT_EQ(spares.bytes(), 1000u);
    const FrameChunk again = spares.take();
    EXPECT_EQ(again.buffer.data(), place);
    EXPECT_EQ(again.buffer.capacity(), 1000u);
    EXPECT_EQ(spares.bytes(), 0u);
}

TEST(SpareChunks, EachBufferComesBackOnceTheLastOneFirst) {
    SpareChunks spares;
    spares.put(chunkOf(1000));
    spares.put(chunkOf(2000));
    EXPECT_EQ(spares.take().buffer.capacity(), 2000u);
    EXPECT_EQ(spares.take().buffer.capacity(), 1000u);
    EXPECT_EQ(spares.take().buffer.capacity(), 0u);
}

TEST(SpareChunks, WithoutSparesTheBufferIsEmpty) {
    SpareChunks spares;
    EXPECT_EQ(spares.take().buffer.capacity(), 0u);
    EXPECT_EQ(spares.bytes(), 0u);
}

TEST(SpareChunks, TheyStayBelowSixtyFourMebibytesHoweverManyCome) {
    static_assert(SpareChunks::kMaxBytes == 64 * kMebibyte);
    SpareChunks spares;
    for (int i = 0; i < 20; ++i) {
        spares.put(chunkOf(12 * kMebibyte));
        EXPECT_LE(spares.bytes(), SpareChunks::kMaxBytes);
    }
    EXPECT_EQ(spares.bytes(), 60 * kMebibyte);
    spares.put(chunkOf(4 * kMebibyte));
    EXPECT_EQ(spares.bytes(), 64 * kMebibyte) << "a small one still fits";
    spares.put(chunkOf(1));
    EXPECT_EQ(spares.bytes(), 64 * kMebibyte);
}

TEST(SpareChunks, TheirNumberIsNotWhatBoundsThem) {
    SpareChunks spares;
    for (int i = 0; i < 1000; ++i) {
        spares.put(chunkOf(2048));
    }
    EXPECT_EQ(spares.bytes(), 1000u * 2048);
}

TEST(SpareChunks, OneThatIsLargerThanTheBoundIsFreed) {
    SpareChunks spares;
    spares.put(chunkOf(SpareChunks::kMaxBytes + 1));
    EXPECT_EQ(spares.bytes(), 0u);
    EXPECT_EQ(spares.take().buffer.capacity(), 0u);
}

TEST(SpareChunks, OneThatHoldsNothingIsNotHandedOutInPlaceOfOneThatDoes) {
    SpareChunks spares;
    spares.put(chunkOf(1));
    EXPECT_EQ(spares.bytes(), 1u) << "a byte is something";
    spares.put(FrameChunk{});
    EXPECT_EQ(spares.take().buffer.capacity(), 1u);
}

TEST(SpareChunks, ClearingLeavesNothing) {
    SpareChunks spares;
    for (int i = 0; i < 5; ++i) {
        spares.put(chunkOf(kMebibyte));
    }
    spares.clear();
    EXPECT_EQ(spares.bytes(), 0u);
    EXPECT_EQ(spares.take().buffer.capacity(), 0u);
}

}  // namespace
