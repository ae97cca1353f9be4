// What a read costs while the log is off: once the buffer has its size no memory, no more file calls than
// pieces, nothing cleared in vain.

#include <gtest/gtest.h>

#include <new>
#include <vector>

#include "avi/avi_stream.h"
#include "diag/log.h"
#include "import_fixture.h"
#include "tests/support/allocation_meter/allocation_meter.h"

namespace orvantis {
namespace {

using namespace audio_test;

void expectNoAllocations(const WaveBytes& wave) {
    ImportFixture fixture;
    fixture.audioHost.keepsConverterCalls = false;
    fixture.layOut({6400, 128, 0, 6400, 1280, 64000});
    ASSERT_EQ(fixture.analyse(wave, 1000), 0);
    HostBuffers buffers(wave.channels, 300);
    buffers.pointers.back() = wave.bits == 24 ? nullptr : buffers.pointers.back();
    ASSERT_EQ(fixture.importFrames(0, 300, buffers), 0);
    fixture.file.seeks.reserve(10'000);
    fixture.file.reads.reserve(10'000);

    test::startCounting();
    for (int i = 0; i < 300; ++i) {
        ASSERT_EQ(fixture.importFrames(i % 4 == 0 ? i : -1, static_cast<std::uint32_t>(300 - i % 7), buffers),
                  0);
    }
    EXPECT_EQ(test::counted().calls, 0u) << wave.bits;
}

TEST(AudioImportCost, SteadyReadsAllocateNothing) {
    expectNoAllocations({.channels = 2, .bits = 8});
    expectNoAllocations({.channels = 2, .bits = 16});
    expectNoAllocations({.channels = 3, .bits = 24});  // one of them without a buffer
    expectNoAllocations({.channels = 6, .bits = 32});
    expectNoAllocations({.tag = kTagFloat, .channels = 8, .bits = 32});
}

TEST(AudioImportCost, TheCounterCounts) {
    test::startCounting();
    const std::vector<int> one(10);
    EXPECT_EQ(test::counted().calls, 1u);
    EXPECT_EQ(one.size(), 10u);
}

TEST(AudioImportCost, EachPieceTakesOneSeekAndOneRead) {
    ImportFixture fixture;
    fixture.layOut({4000, 4000, 4000});
    ASSERT_EQ(fixture.analyse({}, 3000), 0);
    HostBuffers buffers(2, 3000);
    for (const std::uint32_t pieces : {1u, 2u, 3u}) {
        fixture.file.forgetCalls();
        ASSERT_EQ(fixture.importFrames(0, pieces * 1000, buffers), 0);
        EXPECT_EQ(fixture.file.seeks.size(), pieces);
        EXPECT_EQ(fixture.file.reads.size(), pieces);
        EXPECT_EQ(fixture.file.tells, 0);
    }
}

TEST(AudioImportCost, BytesThatAreReadAreNotClearedFirst) {
    ImportFixture fixture;
    fixture.layOut({4000});
    ASSERT_EQ(fixture.analyse({.channels = 1}, 2000), 0);
    HostBuffers buffers(1, 2000);
    ASSERT_EQ(fixture.importFrames(0, 2000, buffers), 0);
    // When the second read begins, the buffer must still hold what the first one brought.
    bool same = false;
    fixture.file.beforeRead = [&](const ReadCall& call) {
        same = true;
        for (std::size_t i = 0; i < call.count; ++i) {
            same = same && call.target[i] == std::byte{streamByte(i)};
        }
    };
    ASSERT_EQ(fixture.importFrames(500, 1000, buffers), 0);
    EXPECT_TRUE(same);
}

TEST(AudioImportCost, TheBufferNeverShrinks) {
    ImportFixture fixture;
    fixture.layOut({40'000});
    ASSERT_EQ(fixture.analyse({.channels = 1}, 20'000), 0);
    HostBuffers buffers(1, 20'000);
    ASSERT_EQ(fixture.importFrames(0, 20'000, buffers), 0);
    ASSERT_EQ(fixture.importFrames(0, 1, buffers), 0);
    ASSERT_EQ(fixture.importFrames(0, 20'000, buffers), 0);
    const std::vector<ReadCall>& reads = fixture.file.reads;
    ASSERT_EQ(reads.size(), 3u);
    EXPECT_EQ(reads[0].target, reads[1].target);
    EXPECT_EQ(reads[0].target, reads[2].target);
}

// What a stream was before does not show through when its next analysis does not come to its end.
TEST(AudioImportCost, AnAnalysisWithoutMemoryLeavesNoUsableStream) {
    if (!test::canCountAllocations()) {
        GTEST_SKIP() << "the sanitizer has operator new";
    }
    ImportFixture fixture;
    ASSERT_EQ(fixture.analyse({}, 1000), 0);
    ASSERT_TRUE(fixture.info.valid());
    fixture.stream.format = waveBytes({.bits = 12});
    test::failAllocation(0, true);
    EXPECT_THROW(static_cast<void>(fixture.info.init(fixture.stream)), std::bad_alloc);
    test::failAllocation(-1, false);
    EXPECT_FALSE(fixture.info.valid());
}

TEST(AudioImportCost, AReadWithoutMemoryDoesNotMoveThePosition) {
    if (!test::canCountAllocations()) {
        GTEST_SKIP() << "the sanitizer has operator new";
    }
    ImportFixture fixture;
    fixture.layOut({4000});
    ASSERT_EQ(fixture.analyse({}, 1000), 0);
    fixture.expectFrames(20, 10, 20, 10);
    HostBuffers buffers(2, 500);
    test::failAllocationsFrom(2000);
    EXPECT_THROW(fixture.importFrames(-1, 500, buffers), std::bad_alloc);
    test::failAllocationsFrom(0);
    EXPECT_TRUE(buffers.untouched());
    fixture.expectFrames(-1, 10, 30, 10);
}

class QuietImport : public testing::Test, protected ImportFixture {
 protected:
    void SetUp() override { ASSERT_FALSE(logEnabled()); }
};

TEST_F(QuietImport, EmptyChunksGiveTheSameSamples) {
    layOut({8, 0, 0, 8, 0, 4, 0, 0});
    ASSERT_EQ(analyse({}, 5), 0);
    expectFrames(0, 8, 0, 5);
    expectFrames(3, 2, 3, 2);
    EXPECT_EQ(file.seeks.size(), 5u);
    EXPECT_EQ(file.reads.size(), 5u);
}

// A damaged index can hold millions of them: going through them all for every block of sound would stall
// playback.
TEST_F(QuietImport, ARunOfEmptyChunksIsJumpedOver) {
    layOut({8});
    constexpr std::uint32_t kEmpty = 2'000'000;
    ChunkListBuilder list;
    list.add(108, 0, 8, true);
    for (std::uint32_t i = 0; i < kEmpty; ++i) {
        list.add(108, 0, 0, true);
    }
    list.add(100, 0, 4, true);
    stream.legacyEntries = list.finish();
    ASSERT_EQ(analyse({.channels = 1}, 6), 0);
    HostBuffers buffers(1, 6);
    for (int i = 0; i < 20'000; ++i) {
        ASSERT_EQ(importFrames(0, 6, buffers), 0);  // 40,000,000,000 entries one by one
    }
    EXPECT_EQ(file.reads.size(), 40'000u);
}

TEST_F(QuietImport, AFailedSeekDoesNotAskForThePosition) {
    layOut({400});
    ASSERT_EQ(analyse({}, 100), 0);
    file.refuseSeekNumber = 0;
    expectFrames(0, 100, 0, 0);
    EXPECT_EQ(file.tells, 0);
}

}  // namespace
}  // namespace orvantis
