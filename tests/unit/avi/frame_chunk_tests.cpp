// Reading one frame's bytes: which chunk serves it, how the buffer grows, what is told of each failure.
#include "avi/avi_stream.h"
#include "avi/frame_chunk.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/support/chunk_lists.h"
#include "tests/support/failing_file.h"
#include "tests/support/memory_file.h"
#include "tests/unit/avi/avi_test_support.h"

namespace orvantis {
namespace {

using test::AviBuilder;
using test::Bytes;
using test::MemoryFile;
using FrameOutcome = FrameChunkRead::Outcome;
using Substitute = std::optional<std::uint64_t>;

// A video stream with frames of these sizes; frame i is filled with i + 1.
AviBuilder framesOf(const std::vector<std::uint32_t>& sizes) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1));
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        avi.addFilledChunk(0, sizes[i], static_cast<std::uint8_t>(i + 1));
    }
    return avi;
}

class FrameChunkTest : public ::testing::Test {
 protected:
    void open(const std::vector<std::uint32_t>& sizes) {
        m_frameCount = static_cast<std::int64_t>(sizes.size());
        m_file = std::make_unique<MemoryFile>(framesOf(sizes).build());
        ASSERT_TRUE(m_reader.parse(*m_file, false));
        m_file->resetCounts();
    }
    /// The rest of the answer is in m_last.
    FrameOutcome read(std::uint64_t frame) { return read(*m_file, frame); }
    FrameOutcome read(fileio::File& file, std::uint64_t frame) {
        m_last = readFrameChunk(file, *m_reader.streams.at(0), frame, m_frameCount, m_chunk);
        return m_last.outcome;
    }
    Bytes bytesRead() const {
        const auto* const first = reinterpret_cast<const std::uint8_t*>(m_chunk.buffer.data());
        return {first, first + m_chunk.bytes};
    }
    ChunkList& list() { return m_reader.streams.at(0)->legacyEntries; }

    std::unique_ptr<MemoryFile> m_file;
    AviReader m_reader;
    FrameChunk m_chunk;
    FrameChunkRead m_last;
    std::int64_t m_frameCount = 0;
};

TEST_F(FrameChunkTest, ReadsTheFramesOwnChunk) {
    open({10, 200, 30});
    const Bytes expected[] = {Bytes(10, 1), Bytes(200, 2), Bytes(30, 3)};
    for (const std::uint64_t frame : {1U, 0U, 2U}) {
        EXPECT_EQ(read(frame), FrameOutcome::kRead) << frame;
        EXPECT_EQ(bytesRead(), expected[frame]) << frame;
        EXPECT_EQ(m_last.substitute, std::nullopt) << frame;
    }
}

TEST_F(FrameChunkTest, EmptyChunkIsServedByTheNearestEarlierOne) {
    open({10, 11, 12, 13, 14, 0, 0});
    EXPECT_EQ(read(5), FrameOutcome::kRead);
    EXPECT_EQ(bytesRead(), Bytes(14, 5));
    EXPECT_EQ(m_last.substitute, Substitute(4));
    EXPECT_EQ(read(6), FrameOutcome::kRead);
    EXPECT_EQ(bytesRead(), Bytes(14, 5));
    EXPECT_EQ(m_last.substitute, Substitute(4));
}

TEST_F(FrameChunkTest, EmptyChunksAtTheStartAreServedByTheFirstWithData) {
    open({0, 0, 12, 13});
    EXPECT_EQ(read(0), FrameOutcome::kRead);
    EXPECT_EQ(bytesRead(), Bytes(12, 3));
    EXPECT_EQ(m_last.substitute, Substitute(2));
    EXPECT_EQ(read(1), FrameOutcome::kRead);
    EXPECT_EQ(m_last.substitute, Substitute(2));
}

TEST_F(FrameChunkTest, SearchForwardEndsAtTheFrameCount) {
    open({0, 0, 12, 13});
    m_frameCount = 2;
    EXPECT_EQ(read(0), FrameOutcome::kNoneWithData);
    EXPECT_EQ(m_last.substitute, std::nullopt);
    m_frameCount = 3;
    EXPECT_EQ(read(0), FrameOutcome::kRead);
}

TEST_F(FrameChunkTest, StreamOfEmptyChunksHasNoFrame) {
    open({0, 0, 0});
    for (std::uint64_t i = 0; i < 3; ++i) {
        EXPECT_EQ(read(i), FrameOutcome::kNoneWithData) << i;
    }
    EXPECT_EQ(m_last.substitute, std::nullopt);
    EXPECT_EQ(m_file->counts().reads, 0U);
}

TEST_F(FrameChunkTest, FrameNumberBehindTheListThrows) {
    open({10, 11});
    EXPECT_THROW(read(2), std::out_of_range);
    EXPECT_THROW(read(0xFFFFFFFF), std::out_of_range);
    EXPECT_THROW(read(0xFFFF'FFFF'FFFF'FFFF), std::out_of_range);
}

TEST_F(FrameChunkTest, SteadyStateIsOneSeekAndOneReadAndNoNewBuffer) {
    open({1000, 900, 1000, 0});
    ASSERT_EQ(read(0), FrameOutcome::kRead);
    const std::byte* const buffer = m_chunk.buffer.data();
    m_file->resetCounts();
    for (std::uint64_t i = 0; i < 4; ++i) {
        ASSERT_EQ(read(i), FrameOutcome::kRead);
    }
    EXPECT_EQ(m_file->counts().seeks, 4U);
    EXPECT_EQ(m_file->counts().reads, 4U);
    EXPECT_EQ(m_file->counts().sizes, 0U);
    EXPECT_EQ(m_chunk.buffer.data(), buffer);
    EXPECT_EQ(m_chunk.buffer.capacity(), 1000U);
}

TEST_F(FrameChunkTest, ChunkCutByTheEndOfTheFileFailsWithTheBytesLeft) {
    open({500, 100});
    const std::uint64_t offset = list().at(0).offset;
    m_file->bytes().resize(offset + 120);
    EXPECT_EQ(read(0), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, "Read error: size: 500, read: 120");
    EXPECT_EQ(m_chunk.buffer.capacity(), 0U);
    // The same text when the buffer is large enough already and the read itself comes up short.
    m_chunk.buffer.ensure(1000);
    EXPECT_EQ(read(0), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, "Read error: size: 500, read: 120");
}

TEST_F(FrameChunkTest, ClaimThatTheFileCannotBackDoesNotGrowTheBuffer) {
    open({500, 100});
    test::resizeChunk(list(), 1, 0x7FFFFFFF);
    const std::uint64_t left = m_file->bytes().size() - list().at(1).offset;
    ASSERT_EQ(read(0), FrameOutcome::kRead);
    EXPECT_EQ(read(1), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, "Read error: size: 2147483647, read: " + std::to_string(left));
    EXPECT_EQ(m_chunk.buffer.capacity(), 500U);
    EXPECT_EQ(m_chunk.bytes, 500U) << "a failed read leaves the count of the last good one";
}

TEST_F(FrameChunkTest, ChunkBehindTheEndOfTheFileHasNoBytesLeft) {
    open({500, 100});
    test::moveChunk(list(), 0, m_file->bytes().size() + 1000);
    EXPECT_EQ(read(0), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, "Read error: size: 500, read: 0");
}

TEST_F(FrameChunkTest, PositionThatIsRefusedIsASeekError) {
    open({500, 100});
    test::moveChunk(list(), 0, 0xFFFF'FFFF'FFFF'FFF0);
    EXPECT_EQ(read(0), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, "Seek error: offset: -16");
}

TEST_F(FrameChunkTest, AnyExceptionOfTheFileIsAFailedRead) {
    open({500, 100});
    test::FailingFile faulty(*m_file);
    faulty.plan(test::FileFault::kThrowRuntime, 1, test::FileOperation::kRead);
    EXPECT_EQ(read(faulty, 0), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, "injected fault");
    // The next attempt is a new one.
    EXPECT_EQ(read(faulty, 0), FrameOutcome::kRead);
}

TEST_F(FrameChunkTest, ReadFrameHasNothingToTell) {
    open({10, 0});
    ASSERT_EQ(read(1), FrameOutcome::kRead);
    ASSERT_EQ(m_last.substitute, Substitute(0));
    ASSERT_EQ(read(0), FrameOutcome::kRead);
    EXPECT_EQ(m_last.substitute, std::nullopt) << "frame 0 has a chunk of its own";
    EXPECT_EQ(m_last.failure, "");
}

TEST_F(FrameChunkTest, SubstituteThatCannotBeReadIsNamedAllTheSame) {
    open({500, 0});
    m_file->bytes().resize(list().at(0).offset + 120);
    EXPECT_EQ(read(1), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.substitute, Substitute(0));
    EXPECT_EQ(m_last.failure, "Read error: size: 500, read: 120");
}

TEST_F(FrameChunkTest, NoMemoryIsAFailedRead) {
    open({500, 100});
    test::FailingFile faulty(*m_file);
    faulty.plan(test::FileFault::kThrowBadAlloc, 1, test::FileOperation::kSeek);
    EXPECT_EQ(read(faulty, 0), FrameOutcome::kFailed);
    EXPECT_EQ(m_last.failure, std::bad_alloc().what());
}

TEST_F(FrameChunkTest, ReadsThroughTheOpenDmlListWhenThatIsInForce) {
    AviBuilder avi = framesOf({10, 0, 30});
    m_frameCount = 3;
    Bytes bytes = avi.openDml(test::OpenDml::kSuperIndex).build();
    // idx1 names no stream of the file.
    for (std::size_t i = 0; i < 3; ++i) {
        bytes[avi.idx1Offset() + 8 + 16 * i] = 'x';
    }
    m_file = std::make_unique<MemoryFile>(bytes);
    ASSERT_TRUE(m_reader.parse(*m_file, false));
    EXPECT_EQ(read(2), FrameOutcome::kRead);
    EXPECT_EQ(bytesRead(), Bytes(30, 3));
    EXPECT_EQ(read(1), FrameOutcome::kRead);
    EXPECT_EQ(bytesRead(), Bytes(10, 1));
    EXPECT_EQ(m_last.substitute, Substitute(0));
}

// The neighbours of a million empty frames are found without going through the list for each.
TEST_F(FrameChunkTest, MillionEmptyFramesAreServedAtOnce) {
    constexpr std::size_t kFrames = 1'000'000;
    auto stream = std::make_unique<AviStream>(0);
    ChunkListBuilder list;
    list.add(0, 0, 4, true);
    for (std::size_t i = 1; i < kFrames; ++i) {
        list.add(0, 0, 0, false);
    }
    stream->legacyEntries = list.finish();
    MemoryFile file(Bytes{1, 2, 3, 4});
    // Half a million requests at the far end take a second; when each one searches, they outlast any time
    // limit.
    constexpr std::uint64_t kRequests = 500'000;
    for (std::uint64_t i = 0; i < kRequests; ++i) {
        const FrameChunkRead result = readFrameChunk(file, *stream, kFrames - 1 - i, kFrames, m_chunk);
        ASSERT_EQ(result.outcome, FrameOutcome::kRead);
        ASSERT_EQ(result.substitute, Substitute(0));
    }
    EXPECT_EQ(file.counts().reads, kRequests);
}

}  // namespace
}  // namespace orvantis
