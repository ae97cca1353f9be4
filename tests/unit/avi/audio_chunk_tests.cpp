// Reading a part of an audio chunk: which bytes of the file it is, and what is told of each failure.
#include "avi/audio_chunk.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>
#include <vector>

#include "tests/support/failing_file.h"
#include "tests/support/memory_file.h"

namespace orvantis {
namespace {

using test::MemoryFile;
using Outcome = AudioChunkRead::Outcome;

constexpr IndexEntry kChunk{100, 40, 0, 0, true};

class AudioChunkTest : public testing::Test {
 protected:
    AudioChunkTest() : m_file(numbered(200)) { m_dest.fill(kUntouched); }

    static constexpr std::byte kUntouched{0xEE};
    // Each byte is its position.
    static std::vector<std::uint8_t> numbered(std::size_t count) {
        std::vector<std::uint8_t> bytes(count);
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = static_cast<std::uint8_t>(i);
        }
        return bytes;
    }

    MemoryFile m_file;
    std::array<std::byte, 64> m_dest;
};

TEST(AudioChunkPartTest, EndsWithTheChunkOrWithWhatIsWanted) {
    const AudioChunkPart whole = audioChunkPart(kChunk, 0, 1000);
    EXPECT_EQ(whole.filePosition, 100);
    EXPECT_EQ(whole.bytes, 40U);
    const AudioChunkPart middle = audioChunkPart(kChunk, 10, 5);
    EXPECT_EQ(middle.filePosition, 110);
    EXPECT_EQ(middle.bytes, 5U);
    const AudioChunkPart rest = audioChunkPart(kChunk, 39, 5);
    EXPECT_EQ(rest.filePosition, 139);
    EXPECT_EQ(rest.bytes, 1U);
    EXPECT_EQ(audioChunkPart(kChunk, 40, 5).bytes, 0U);
}

TEST(AudioChunkPartTest, PositionBeyondTheSignedRangeIsNegative) {
    IndexEntry chunk = kChunk;
    chunk.offset = std::numeric_limits<std::uint64_t>::max() - 15;
    EXPECT_EQ(audioChunkPart(chunk, 4, 5).filePosition, -12);
}

TEST_F(AudioChunkTest, ReadsThePartByOneSeekAndOneRead) {
    const AudioChunkRead read = readAudioChunk(m_file, {110, 5}, m_dest.data());
    EXPECT_EQ(read.outcome, Outcome::kRead);
    EXPECT_EQ(read.bytes, 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(m_dest[i], std::byte(110 + i)) << i;
    }
    EXPECT_EQ(m_dest[5], kUntouched);
    EXPECT_EQ(m_file.counts().seeks, 1U);
    EXPECT_EQ(m_file.counts().reads, 1U);
    EXPECT_EQ(m_file.counts().operations(), 2U);
}

TEST_F(AudioChunkTest, RefusedPositionIsToldAndNothingIsRead) {
    ASSERT_TRUE(m_file.seek(7));
    m_file.resetCounts();
    const AudioChunkRead read = readAudioChunk(m_file, {-12, 5}, m_dest.data());
    EXPECT_EQ(read.outcome, Outcome::kSeekRefused);
    EXPECT_EQ(read.bytes, 0U);
    EXPECT_EQ(m_file.counts().reads, 0U);
    EXPECT_EQ(m_file.tell(), 7) << "where the file stood";
}

TEST_F(AudioChunkTest, EndOfTheFileCutsThePartShort) {
    const AudioChunkRead read = readAudioChunk(m_file, {190, 40}, m_dest.data());
    EXPECT_EQ(read.outcome, Outcome::kCutShort);
    EXPECT_EQ(read.bytes, 10U);
    EXPECT_EQ(m_dest[9], std::byte{199});
    EXPECT_EQ(m_dest[10], kUntouched);
}

TEST_F(AudioChunkTest, PartBehindTheEndOfTheFileHasNoBytes) {
    const AudioChunkRead read = readAudioChunk(m_file, {300, 40}, m_dest.data());
    EXPECT_EQ(read.outcome, Outcome::kCutShort);
    EXPECT_EQ(read.bytes, 0U);
}

TEST_F(AudioChunkTest, FailedReadIsAPartCutShort) {
    test::FailingFile faulty(m_file);
    faulty.plan(test::FileFault::kFail, 1, test::FileOperation::kRead);
    const AudioChunkRead read = readAudioChunk(faulty, {110, 5}, m_dest.data());
    EXPECT_EQ(read.outcome, Outcome::kCutShort);
    EXPECT_EQ(read.bytes, 0U);
    EXPECT_EQ(readAudioChunk(faulty, {110, 5}, m_dest.data()).outcome, Outcome::kRead);
}

}  // namespace
}  // namespace orvantis
