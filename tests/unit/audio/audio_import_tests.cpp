#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "avi/avi_stream.h"
#include "import_fixture.h"
#include "tests/support/captured_log.h"
#include "tests/support/chunk_lists.h"

namespace orvantis {
namespace {

using namespace audio_test;
using Lines = std::vector<std::string>;

/// A base of its own, so that the log is there before the stream's objects and goes after them.
struct WithLog {
    test::CapturedLog m_log;
};

class AudioImportTest : public testing::Test, protected WithLog, protected ImportFixture {};

/// The numbers in the lines that begin every read.
struct ReadHead {
    std::string position;  ///< as the host asks for it
    std::string last;      ///< where the last read ended
    std::string start;
    std::string size;
    std::string end;
    std::string total;
    std::string startBytes;
    std::string sizeBytes;
};

/// All lines of one read.
Lines readLog(const ReadHead& head, const Lines& more) {
    Lines lines = {
        "importAudioRec7P->position: " + head.position,    //
        "m_audioPosition           : " + head.last,        //
        "startPos                  : " + head.start,       //
        "importAudioRec7P->size    : " + head.size,        //
        "endPos                    : " + head.end,         //
        "m_numAudioSampleFrames    : " + head.total,       //
        "startPosBytes             : " + head.startBytes,  //
        "sizeBytes                 : " + head.sizeBytes,   //
    };
    lines.insert(lines.end(), more.begin(), more.end());
    return lines;
}

// --- which bytes are read ---

TEST_F(AudioImportTest, ReadsTheWholeOfOneChunk) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    m_log.clear();
    expectFrames(0, 1000, 0, 1000);
    EXPECT_EQ(file.seeks, std::vector<std::int64_t>{108});
    ASSERT_EQ(file.reads.size(), 1u);
    EXPECT_EQ(file.reads[0].count, 4000u);
    EXPECT_EQ(file.tells, 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"0", "0", "0", "1000", "1000", "1000", "0", "4000"},
                                                 {"reading : 0, 108, 4000", "fill    : 0"}));
}

TEST_F(AudioImportTest, ARangeFromInsideOneChunkIntoTheThirdReadsThreePieces) {
    layOut({400, 200, 600});  // data at 108, 616 and 924
    ASSERT_EQ(analyse({}, 300), 0);
    expectFrames(0, 1, 0, 1);
    m_log.clear();
    file.forgetCalls();
    // Frames 75 to 224 are the bytes 300 to 899.
    expectFrames(75, 150, 75, 150);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"75", "1", "75", "150", "225", "300", "300", "600"}, {"reading : 300, 408, 100",  //
                                                                             "reading : 400, 616, 200",  //
                                                                             "reading : 600, 924, 300",  //
                                                                             "fill    : 0"}));
    EXPECT_EQ(file.seeks, (std::vector<std::int64_t>{408, 616, 924}));
    ASSERT_EQ(file.reads.size(), 3u);
    EXPECT_EQ(file.reads[0].count, 100u);
    EXPECT_EQ(file.reads[1].count, 200u);
    EXPECT_EQ(file.reads[2].count, 300u);
    // Straight into their places in one buffer.
    EXPECT_EQ(file.reads[1].target, file.reads[0].target + 100);
    EXPECT_EQ(file.reads[2].target, file.reads[1].target + 200);
}

TEST_F(AudioImportTest, ChunksMayEndInsideASampleFrame) {
    layOut({5, 1, 3, 7, 4});
    ASSERT_EQ(analyse({}, 5), 0);
    expectFrames(0, 5, 0, 5);
    expectFrames(1, 3, 1, 3);
}

TEST_F(AudioImportTest, ChunksAreFoundWhereverTheyLieInTheFile) {
    layOut({40, 40, 40});
    // The file holds them in the order 2, 0, 1; the list gives the stream's order.
    std::vector<std::byte> content(1000, std::byte{0xEE});
    const std::uint64_t places[3] = {500, 800, 200};
    for (std::size_t i = 0; i < 3; ++i) {
        std::memcpy(content.data() + places[i], file.content.data() + stream.legacyEntries[i].offset, 40);
        test::moveChunk(stream.legacyEntries, i, places[i]);
    }
    file.content = content;
    ASSERT_EQ(analyse({}, 30), 0);
    expectFrames(0, 30, 0, 30);
    EXPECT_EQ(file.seeks, (std::vector<std::int64_t>{500, 800, 200}));
}

TEST_F(AudioImportTest, TheListInForceIsUsed) {
    layOut({40, 40});
    stream.openDmlEntries = std::move(stream.legacyEntries);
    stream.legacyEntries = test::chunkListOf({{0, 80, 0, 0, true}});
    stream.hasOpenDmlIndex = true;
    ASSERT_EQ(analyse({}, 20), 0);
    expectFrames(0, 20, 0, 20);
    EXPECT_EQ(file.seeks, (std::vector<std::int64_t>{108, 256}));
}

TEST_F(AudioImportTest, PositionsBeyond4GiBAreReached) {
    layOut({4000});
    // Five chunks of nearly 4 GiB lie ahead of it, in another file.
    std::vector<IndexEntry> entries(6, IndexEntry{1'000'000, 0xFFFF'FFFF, 0, 0, true});
    entries.back().size = 5;
    entries.push_back(stream.legacyEntries[0]);
    stream.legacyEntries = test::chunkListOf(entries);
    ASSERT_EQ(stream.legacyEntries.back().start, 0x5'0000'0000U);
    ASSERT_EQ(analyse({}, 1000), 0);
    m_log.clear();
    HostBuffers buffers(2, 10);
    // Frame 0x140000001 of 4 bytes each: 4 bytes into the chunk.
    EXPECT_EQ(importFrames(0x1'4000'0001, 10, buffers), 0);
    EXPECT_EQ(buffers.at(0, 0), sample16(1, 0));
    EXPECT_EQ(buffers.at(1, 9), sample16(10, 1));
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"5368709121", "0", "5368709121", "10", "5368709131", "1000", "21474836484", "40"},
                      {"reading : 21474836484, 112, 40", "fill    : 0"}));
}

// --- the end of the stream ---

TEST_F(AudioImportTest, ARequestPastTheEndEndsInSilence) {
    layOut({2000, 2000});
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(0, 1, 0, 1);
    m_log.clear();
    file.forgetCalls();
    expectFrames(800, 1000, 800, 200);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"800", "1", "800", "1000", "1800", "1000", "3200", "4000"},
                                                 {"reading : 3200, 3416, 800", "fill    : 3200"}));
    EXPECT_EQ(file.seeks.size(), 1u);
}

TEST_F(AudioImportTest, ARequestBehindTheLastChunkIsSilence) {
    layOut({2000});
    ASSERT_EQ(analyse({}, 500), 0);
    expectFrames(0, 1, 0, 1);
    for (const std::int64_t position : {std::int64_t{500}, std::int64_t{501}, std::int64_t{1} << 40}) {
        m_log.clear();
        file.forgetCalls();
        expectFrames(position, 10, 0, 0);
        EXPECT_TRUE(file.seeks.empty());
        EXPECT_TRUE(file.reads.empty());
        EXPECT_EQ(m_log.takeWithoutSuites().back(), "fill    : 40");
    }
}

TEST_F(AudioImportTest, AStreamWithoutChunksIsSilence) {
    layOut({});
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(0, 100, 0, 0);
    EXPECT_TRUE(file.seeks.empty());
}

TEST_F(AudioImportTest, AStreamOfEmptyChunksIsSilence) {
    layOut({0, 0, 0});
    ASSERT_EQ(analyse({}, 500), 0);
    expectFrames(0, 10, 0, 0);
    EXPECT_TRUE(file.seeks.empty());
}

// The header's length is not what limits a read.
TEST_F(AudioImportTest, DataBehindTheHeadersLengthIsRead) {
    layOut({2000});
    ASSERT_EQ(analyse({}, 10), 0);
    expectFrames(400, 100, 400, 100);
}

TEST_F(AudioImportTest, AFrameCutByTheEndIsFilledUp) {
    layOut({4 * 3 + 1});  // three frames of stereo and one byte
    ASSERT_EQ(analyse({}, 4), 0);
    HostBuffers buffers(2, 5);
    EXPECT_EQ(importFrames(0, 5, buffers), 0);
    const std::uint8_t cut[2] = {streamByte(12), 0};
    EXPECT_EQ(buffers.at(0, 3), convertedSample(cut, 16));
    EXPECT_EQ(buffers.at(1, 3), 0.0f);
    EXPECT_EQ(buffers.at(0, 4), 0.0f);
    EXPECT_EQ(buffers.at(1, 4), 0.0f);
}

TEST_F(AudioImportTest, NoFramesReadNothing) {
    layOut({2000});
    ASSERT_EQ(analyse({}, 500), 0);
    m_log.clear();
    HostBuffers buffers(2, 0);
    EXPECT_EQ(importFrames(100, 0, buffers), 0);
    EXPECT_TRUE(file.seeks.empty());
    EXPECT_TRUE(buffers.guardsHold());
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"100", "0", "100", "0", "100", "500", "400", "0"}, {"fill    : 0"}));
    expectFrames(-1, 10, 100, 10);
}

// --- empty chunks ---

TEST_F(AudioImportTest, AnEmptyChunkIsLoggedAndCostsNoFileCall) {
    layOut({8, 0, 8, 0});  // data at 108, 224, 332, 448
    ASSERT_EQ(analyse({}, 4), 0);
    expectFrames(0, 1, 0, 1);
    m_log.clear();
    file.forgetCalls();
    expectFrames(0, 6, 0, 4);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"0", "1", "0", "6", "6", "4", "0", "24"}, {"reading : 0, 108, 8",   //
                                                                  "reading : 8, 224, 0",   //
                                                                  "reading : 8, 332, 8",   //
                                                                  "reading : 16, 448, 0",  //
                                                                  "fill    : 8"}));
    EXPECT_EQ(file.seeks, (std::vector<std::int64_t>{108, 332}));
    EXPECT_EQ(file.reads.size(), 2u);
}

TEST_F(AudioImportTest, EveryEmptyChunkOfARunIsLogged) {
    layOut({4, 0, 0, 0, 4, 0, 0});  // data at 108, 220, 328, 436, 544, 656, 764
    ASSERT_EQ(analyse({}, 2), 0);
    m_log.clear();
    expectFrames(0, 3, 0, 2);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"0", "0", "0", "3", "3", "2", "0", "12"}, {"reading : 0, 108, 4",  //
                                                                  "reading : 4, 220, 0",  //
                                                                  "reading : 4, 328, 0",  //
                                                                  "reading : 4, 436, 0",  //
                                                                  "reading : 4, 544, 4",  //
                                                                  "reading : 8, 656, 0",  //
                                                                  "reading : 8, 764, 0",  //
                                                                  "fill    : 4"}));
    EXPECT_EQ(file.reads.size(), 2u);
}

TEST_F(AudioImportTest, EmptyChunksAheadOfTheFirstOneWithDataArePassedOver) {
    layOut({0, 0, 8});
    ASSERT_EQ(analyse({}, 2), 0);
    m_log.clear();
    expectFrames(0, 2, 0, 2);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"0", "0", "0", "2", "2", "2", "0", "8"}, {"reading : 0, 324, 8", "fill    : 0"}));
}

// --- requests for no sample frames ---

TEST_F(AudioImportTest, ARequestForNoFramesGoesTheWholeWay) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    HostBuffers buffers(2, 4);
    m_log.clear();
    EXPECT_EQ(importFrames(20, 0, buffers), 0);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"20", "0", "20", "0", "20", "1000", "80", "0"}, {"fill    : 0"}));
    ASSERT_EQ(audioHost.converterCalls.size(), 1u) << "the host converts nothing, but is asked";
    EXPECT_EQ(audioHost.converterCalls[0].frames, 0u);
    EXPECT_EQ(audioHost.converterCalls[0].channels, 2u);
    EXPECT_NE(audioHost.converterCalls[0].from, nullptr) << "even for nothing it is given an address";
    EXPECT_TRUE(file.reads.empty());
    EXPECT_TRUE(buffers.untouched());
    expectFrames(-1, 10, 20, 10);  // the position has moved there
}

TEST_F(AudioImportTest, ARequestForNoFramesNeedsTheSuiteLikeAnyOther) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    audioHost.refusedSuites = {"Premiere Audio Suite"};
    HostBuffers buffers(2, 4);
    EXPECT_THROW(importFrames(0, 0, buffers), std::runtime_error);
}

TEST_F(AudioImportTest, ARequestForNoFramesWithoutSomeBufferIsConvertedToo) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    HostBuffers buffers(2, 4);
    buffers.pointers[0] = nullptr;
    EXPECT_EQ(importFrames(0, 0, buffers), 0);
    ASSERT_EQ(audioHost.converterCalls.size(), 1u);
    EXPECT_EQ(audioHost.converterCalls[0].frames, 0u);
    EXPECT_TRUE(buffers.untouched());
}

TEST_F(AudioImportTest, ARequestForNoFramesOfAnUnreadableTypeFails) {
    layOut({4000});
    ASSERT_EQ(analyse({.tag = kTagFloat, .bits = 16}, 1000), 0);
    HostBuffers buffers(2, 4);
    EXPECT_EQ(importFrames(0, 0, buffers), 36);
}

// --- failures of the file ---

TEST_F(AudioImportTest, ARefusedSeekEndsTheReadInSilence) {
    layOut({400, 400, 400});
    ASSERT_EQ(analyse({}, 300), 0);
    expectFrames(0, 1, 0, 1);
    m_log.clear();
    file.forgetCalls();
    file.refuseSeekNumber = 1;
    expectFrames(0, 300, 0, 100);
    // The second chunk's data lies at 616; the first read left the file at 508.
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"0", "1", "0", "300", "300", "300", "0", "1200"},
                                                 {"reading : 0, 108, 400",                   //
                                                  "reading : 400, 616, 400",                 //
                                                  "importAudio: seek error: 616, pos: 508",  //
                                                  "fill    : 800"}));
    EXPECT_EQ(file.seeks.size(), 2u);
    EXPECT_EQ(file.reads.size(), 1u);
    // It was this read's fault alone.
    file.forgetCalls();
    file.refuseSeekNumber = std::numeric_limits<std::size_t>::max();
    expectFrames(-1, 10, 300, 0);
    expectFrames(0, 300, 0, 300);
}

TEST_F(AudioImportTest, AShortReadEndsTheReadInSilence) {
    layOut({400, 400, 400});
    ASSERT_EQ(analyse({}, 300), 0);
    expectFrames(0, 1, 0, 1);
    m_log.clear();
    file.forgetCalls();
    file.shortReadNumber = 1;
    file.shortReadBytes = 40;
    expectFrames(0, 300, 0, 110);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"0", "1", "0", "300", "300", "300", "0", "1200"},
                                                 {"reading : 0, 108, 400",                   //
                                                  "reading : 400, 616, 400",                 //
                                                  "importAudio: read error: 400, read: 40",  //
                                                  "fill    : 760"}));
    EXPECT_EQ(file.reads.size(), 2u);
    expectFrames(-1, 1, 300, 0);
}

TEST_F(AudioImportTest, AChunkBehindTheEndOfTheFileIsSilence) {
    layOut({400});
    test::moveChunk(stream.legacyEntries, 0, 1'000'000);
    ASSERT_EQ(analyse({}, 100), 0);
    m_log.clear();
    expectFrames(0, 100, 0, 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"0", "0", "0", "100", "100", "100", "0", "400"},
                                                 {"reading : 0, 1000000, 400",              //
                                                  "importAudio: read error: 400, read: 0",  //
                                                  "fill    : 400"}));
}

TEST_F(AudioImportTest, AnOffsetBeyondTheSignedRangeIsRefusedByTheFile) {
    layOut({400});
    test::moveChunk(stream.legacyEntries, 0, 0xFFFF'FFFF'FFFF'FFF0);
    ASSERT_EQ(analyse({}, 100), 0);
    m_log.clear();
    expectFrames(1, 99, 0, 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"1", "0", "1", "99", "100", "100", "4", "396"},
                                                 {"reading : 4, -12, 396",                 //
                                                  "importAudio: seek error: -12, pos: 0",  //
                                                  "fill    : 396"}));
}

// --- sequential reads ---

TEST_F(AudioImportTest, ANegativePositionGoesOnBehindTheLastRead) {
    layOut({4000, 8000});
    ASSERT_EQ(analyse({}, 3000), 0);
    expectFrames(0, 1000, 0, 1000);
    m_log.clear();
    expectFrames(-1, 500, 1000, 500);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"-1", "1000", "1000", "500", "1500", "3000", "4000", "2000"},
                      {"reading : 4000, 4216, 2000", "fill    : 0"}));
    expectFrames(std::numeric_limits<std::int64_t>::min(), 500, 1500, 500);
}

TEST_F(AudioImportTest, TheFirstSequentialReadStartsAtTheBeginning) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(-1, 100, 0, 100);
}

TEST_F(AudioImportTest, SequentialReadsDeliverTheStreamFromEndToEnd) {
    layOut({4000, 120, 0, 40, 8000, 3840});
    ASSERT_EQ(analyse({}, 4000), 0);
    std::uint64_t frame = 0;
    for (std::uint32_t size = 1; frame < 4000; size += 37) {
        const auto left = static_cast<std::uint32_t>(4000 - frame);
        expectFrames(-1, size, frame, std::min(size, left));
        frame += size;
    }
    expectFrames(-1, 10, 0, 0);
}

TEST_F(AudioImportTest, ThePositionMovesOnEvenWhenTheReadStoppedEarly) {
    layOut({400});
    ASSERT_EQ(analyse({}, 100), 0);
    expectFrames(90, 50, 90, 10);
    m_log.clear();
    expectFrames(-1, 1, 0, 0);
    EXPECT_EQ(m_log.takeWithoutSuites()[1], "m_audioPosition           : 140");
}

TEST_F(AudioImportTest, AnotherAnalysisStartsAtTheBeginning) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(500, 100, 500, 100);
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(-1, 100, 0, 100);
}

// --- positions at the edge of the arithmetic ---

TEST_F(AudioImportTest, TheGreatestPositionIsSilence) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    m_log.clear();
    expectFrames(std::numeric_limits<std::int64_t>::max(), 2, 0, 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"9223372036854775807", "0", "9223372036854775807", "2",
                                                  "-9223372036854775807", "1000", "-4", "8"},
                                                 {"fill    : 8"}));
}

// The position that followed went round to the lowest number. In bytes that is 4 * 2^63 + 4, of which 64 bits
// keep 4.
TEST_F(AudioImportTest, AReadBehindTheGreatestPositionGoesRound) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(std::numeric_limits<std::int64_t>::max(), 2, 0, 0);
    m_log.clear();
    expectFrames(-5, 3, 1, 3);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"-5", "-9223372036854775807", "-9223372036854775807", "3",
                                                  "-9223372036854775804", "1000", "4", "12"},
                                                 {"reading : 4, 112, 12", "fill    : 0"}));
}

TEST_F(AudioImportTest, APositionInBytesGoesRoundAt64Bits) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    m_log.clear();
    expectFrames(std::int64_t{1} << 62, 5, 0, 5);
    EXPECT_EQ(m_log.takeWithoutSuites()[6], "startPosBytes             : 0");
}

// --- requests of 4 GiB and more ---

TEST_F(AudioImportTest, ARequestOf4GiBKeepsOnlyTheRestAndTheOtherFramesAreSilence) {
    layOut({128 * 10});
    ASSERT_EQ(analyse({.tag = kTagFloat, .channels = 32, .bits = 32}, 10), 0);
    m_log.clear();
    // 33554437 frames of 128 bytes are 4 GiB and 5 frames. Only the last channel has a buffer.
    constexpr std::uint32_t kFrames = 33'554'437;
    std::vector<float> samples(kFrames + 1, kUntouched);
    std::vector<float*> pointers(32, nullptr);
    pointers[31] = samples.data();
    EXPECT_EQ(importFrames(0, kFrames, pointers.data()), 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"0", "0", "0", "33554437", "33554437", "10", "0", "640"},
                                                 {"reading : 0, 108, 640", "fill    : 0"}));
    for (std::uint32_t f = 0; f < 5; ++f) {
        std::uint32_t bits;
        std::memcpy(&bits, &samples[f], 4);
        std::uint32_t expected = 0;
        for (unsigned i = 0; i < 4; ++i) {
            expected |= std::uint32_t{streamByte(f * 128 + 31 * 4 + i)} << (8 * i);
        }
        EXPECT_EQ(bits, expected) << f;
    }
    std::size_t silent = 0;
    for (std::size_t f = 5; f < kFrames; ++f) {
        silent += samples[f] == 0.0f ? 1u : 0u;
    }
    EXPECT_EQ(silent, kFrames - 5u);
    EXPECT_EQ(samples[kFrames], kUntouched);
    // The position counts all of them.
    m_log.clear();
    EXPECT_EQ(importFrames(-1, 0, pointers.data()), 0);
    EXPECT_EQ(m_log.takeWithoutSuites()[1], "m_audioPosition           : 33554437");
}

TEST_F(AudioImportTest, ARequestOf4GiBWithoutABufferArrayWritesNothing) {
    layOut({4000});
    for (const WaveBytes& wave :
         {WaveBytes{.channels = 1, .bits = 32}, WaveBytes{.tag = kTagFloat, .channels = 1, .bits = 32}}) {
        ASSERT_EQ(analyse(wave, 1000), 0);
        EXPECT_EQ(importFrames(0, 0x4000'0005, nullptr), 0);
    }
}

TEST_F(AudioImportTest, ARequestOfExactly4GiBReadsNothing) {
    layOut({4000});
    ASSERT_EQ(analyse({.channels = 1, .bits = 32}, 1000), 0);
    m_log.clear();
    std::vector<float*> none(1, nullptr);
    EXPECT_EQ(importFrames(0, 0x4000'0000, none.data()), 0);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"0", "0", "0", "1073741824", "1073741824", "1000", "0", "0"}, {"fill    : 0"}));
    EXPECT_TRUE(file.seeks.empty());
    EXPECT_TRUE(audioHost.converterCalls.empty());
}

// 44739243 frames of 96 bytes are 4 GiB and 32 bytes: read, but no whole frame.
TEST_F(AudioImportTest, ARestSmallerThanAFrameConvertsNothing) {
    layOut({960});
    ASSERT_EQ(analyse({.channels = 32, .bits = 24}, 10), 0);
    m_log.clear();
    std::vector<float*> none(32, nullptr);
    EXPECT_EQ(importFrames(0, 44'739'243, none.data()), 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"0", "0", "0", "44739243", "44739243", "10", "0", "32"},
                                                 {"reading : 0, 108, 32", "fill    : 0"}));
    EXPECT_TRUE(audioHost.converterCalls.empty());
}

TEST_F(AudioImportTest, TheConverterIsGivenOnlyTheFramesThatTheBufferHolds) {
    layOut({1280});
    ASSERT_EQ(analyse({.channels = 32, .bits = 32}, 10), 0);
    constexpr std::uint32_t kFrames = 33'554'435;  // 4 GiB and 3 frames
    std::vector<float> samples(kFrames + 1, kUntouched);
    std::vector<float*> pointers(32, nullptr);
    pointers[0] = samples.data();
    EXPECT_EQ(importFrames(2, kFrames, pointers.data()), 0);
    ASSERT_EQ(audioHost.converterCalls.size(), 1u);
    EXPECT_EQ(audioHost.converterCalls[0].bits, 32u);
    EXPECT_EQ(audioHost.converterCalls[0].frames, 3u);
    for (std::uint32_t i = 0; i < 384; ++i) {
        ASSERT_EQ(audioHost.converterCalls[0].source[i], streamByte(256 + i)) << i;
    }
    for (std::uint32_t f = 0; f < 3; ++f) {
        std::uint8_t bytes[4];
        for (unsigned i = 0; i < 4; ++i) {
            bytes[i] = streamByte(256 + f * 128 + i);
        }
        EXPECT_EQ(samples[f], convertedSample(bytes, 32)) << f;
    }
    EXPECT_EQ(samples[3], 0.0f);
    EXPECT_EQ(samples[kFrames / 2], 0.0f);
    EXPECT_EQ(samples[kFrames - 1], 0.0f);
    EXPECT_EQ(samples[kFrames], kUntouched);
}

// --- streams that cannot be delivered ---

TEST_F(AudioImportTest, TheDummyTouchesNothingAndDoesNotMove) {
    layOut({4000});
    ASSERT_EQ(analyse({}, 1000), 0);
    expectFrames(0, 100, 0, 100);
    file.forgetCalls();
    ASSERT_EQ(analyse({.bits = 12}, 1000), 2);
    m_log.clear();
    HostBuffers buffers(2, 100);
    EXPECT_EQ(importFrames(0, 100, buffers), 0);
    EXPECT_EQ(importFrames(-1, 100, buffers), 0);
    EXPECT_EQ(importFrames(0, 100, nullptr), 0);
    EXPECT_TRUE(buffers.untouched());
    EXPECT_TRUE(file.seeks.empty());
    EXPECT_EQ(m_log.takeWithoutSuites(), Lines{});
}

TEST_F(AudioImportTest, BeforeTheAnalysisNothingIsTouched) {
    m_log.clear();
    HostBuffers buffers(2, 100);
    EXPECT_EQ(importFrames(0, 100, buffers), 0);
    EXPECT_TRUE(buffers.untouched());
    EXPECT_EQ(m_log.takeWithoutSuites(), Lines{});
}

TEST_F(AudioImportTest, FloatOfOtherThan32BitsIsReadButNotDelivered) {
    layOut({4000});
    ASSERT_EQ(analyse({.tag = kTagFloat, .channels = 2, .bits = 16}, 1000), 0);
    m_log.clear();
    HostBuffers buffers(2, 100);
    EXPECT_EQ(importFrames(50, 100, buffers), 36);
    EXPECT_TRUE(buffers.untouched());
    EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"50", "0", "50", "100", "150", "1000", "200", "400"},
                                                 {"reading : 200, 308, 400", "fill    : 0"}));
    EXPECT_EQ(audioHost.requestsFor("Premiere Audio Suite"), 0);
    // The position moved all the same.
    EXPECT_EQ(importFrames(-1, 100, buffers), 36);
    EXPECT_EQ(m_log.takeWithoutSuites()[2], "startPos                  : 150");
    EXPECT_EQ(importFrames(-1, 0, nullptr), 36);
}

TEST_F(AudioImportTest, AStreamWithoutChannelsReadsNothing) {
    layOut({4000});
    ASSERT_EQ(analyse({.channels = 0}, 1000), 0);
    m_log.clear();
    float guard = kUntouched;
    float* pointers[1] = {&guard};
    EXPECT_EQ(importFrames(7, 100, pointers), 0);
    EXPECT_EQ(guard, kUntouched);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              readLog({"7", "0", "7", "100", "107", "1000", "0", "0"}, {"fill    : 0"}));
    EXPECT_TRUE(file.seeks.empty());
    EXPECT_TRUE(audioHost.converterCalls.empty());
    EXPECT_EQ(importFrames(-1, 100, nullptr), 0);
    EXPECT_EQ(m_log.takeWithoutSuites()[2], "startPos                  : 107");
}

// --- the host's converters ---

struct IntegerCase {
    std::uint16_t bits;
    std::vector<std::uint8_t> stream;
    std::vector<std::uint8_t> seen;
    std::vector<float> samples;
};

TEST_F(AudioImportTest, EachIntegerTypeGoesToItsConverter) {
    const std::vector<IntegerCase> cases = {
        {8, {0x00, 0x80, 0xFF, 0x81}, {0x80, 0x00, 0x7F, 0x01}, {-1.0f, 0.0f, 127.0f / 128, 1.0f / 128}},
        {16,
         {0x00, 0x80, 0x01, 0x00, 0x00, 0x40},
         {0x00, 0x80, 0x01, 0x00, 0x00, 0x40},
         {-1.0f, 1.0f / 32768, 0.5f}},
        {24,
         {0x00, 0x00, 0x80, 0x01, 0x00, 0x00},
         {0x00, 0x00, 0x80, 0x01, 0x00, 0x00},
         {-1.0f, 1.0f / 8388608}},
        {32, {0, 0, 0, 0x80, 0, 0, 0, 0x40}, {0, 0, 0, 0x80, 0, 0, 0, 0x40}, {-1.0f, 0.5f}},
    };
    for (const IntegerCase& one : cases) {
        SCOPED_TRACE(one.bits);
        setOnlyChunk(one.stream);
        const auto frames = static_cast<std::uint32_t>(one.samples.size());
        ASSERT_EQ(analyse({.channels = 1, .bits = one.bits}, frames), 0);
        HostBuffers buffers(1, frames);
        audioHost.converterCalls.clear();
        EXPECT_EQ(importFrames(0, frames, buffers), 0);
        ASSERT_EQ(audioHost.converterCalls.size(), 1u);
        EXPECT_EQ(audioHost.converterCalls[0].bits, one.bits);
        EXPECT_EQ(audioHost.converterCalls[0].channels, 1u);
        EXPECT_EQ(audioHost.converterCalls[0].frames, frames);
        EXPECT_EQ(audioHost.converterCalls[0].destination, buffers.pointers.data());
        EXPECT_EQ(audioHost.converterCalls[0].source, one.seen);
        for (std::uint32_t f = 0; f < frames; ++f) {
            EXPECT_EQ(buffers.at(0, f), one.samples[f]) << f;
        }
        EXPECT_TRUE(buffers.guardsHold());
    }
}

TEST_F(AudioImportTest, EveryUnsigned8BitValueBecomesSigned) {
    std::vector<std::uint8_t> all(256);
    for (unsigned i = 0; i < 256; ++i) {
        all[i] = static_cast<std::uint8_t>(i);
    }
    setOnlyChunk(all);
    ASSERT_EQ(analyse({.channels = 1, .bits = 8}, 256), 0);
    HostBuffers buffers(1, 256);
    EXPECT_EQ(importFrames(0, 256, buffers), 0);
    ASSERT_EQ(audioHost.converterCalls.size(), 1u);
    for (int i = 0; i < 256; ++i) {
        EXPECT_EQ(static_cast<std::int8_t>(audioHost.converterCalls[0].source[static_cast<std::size_t>(i)]),
                  i - 128);
    }
}

// The fill comes first, so that it is turned like the samples ahead of it.
TEST_F(AudioImportTest, TheTailOf8BitSamplesReachesTheConverterAsMinus128) {
    setOnlyChunk({0x80, 0x81, 0x7F});
    ASSERT_EQ(analyse({.channels = 1, .bits = 8}, 3), 0);
    HostBuffers buffers(1, 6);
    EXPECT_EQ(importFrames(1, 6, buffers), 0);
    ASSERT_EQ(audioHost.converterCalls.size(), 1u);
    EXPECT_EQ(audioHost.converterCalls[0].source,
              (std::vector<std::uint8_t>{0x01, 0xFF, 0x80, 0x80, 0x80, 0x80}));
}

TEST_F(AudioImportTest, TheConverterGetsTheHostsChannelsInOrder) {
    layOut({6 * 3 * 50});
    ASSERT_EQ(analyse({.channels = 6, .bits = 24}, 50), 0);
    HostBuffers buffers(6, 50);
    EXPECT_EQ(importFrames(0, 50, buffers), 0);
    ASSERT_EQ(audioHost.converterCalls.size(), 1u);
    EXPECT_EQ(audioHost.converterCalls[0].channels, 6u);
    for (std::uint32_t c = 0; c < 6; ++c) {
        for (std::uint32_t f = 0; f < 50; ++f) {
            const std::uint64_t at = (f * 6 + c) * 3;
            const std::uint8_t bytes[3] = {streamByte(at), streamByte(at + 1), streamByte(at + 2)};
            ASSERT_EQ(buffers.at(c, f), convertedSample(bytes, 24)) << c << ", " << f;
        }
    }
}

TEST_F(AudioImportTest, TheResultOfTheConverterIsNotLookedAt) {
    layOut({400});
    ASSERT_EQ(analyse({}, 100), 0);
    audioHost.converterResult = -1;
    expectFrames(0, 100, 0, 100);
}

TEST_F(AudioImportTest, ARefusedSuiteIsAnErrorOfIntegerStreams) {
    layOut({400});
    ASSERT_EQ(analyse({.channels = 1}, 200), 0);
    audioHost.refusedSuites = {"Premiere Audio Suite"};
    HostBuffers buffers(1, 10);
    try {
        importFrames(20, 10, buffers);
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not acquire suite: 'Premiere Audio Suite', ver: 1");
    }
    EXPECT_TRUE(buffers.untouched());
    // The host is asked again each time, and by then the position has moved.
    audioHost.refusedSuites.clear();
    expectFrames(-1, 10, 30, 10);
}

TEST_F(AudioImportTest, FloatStreamsNeedNoSuite) {
    layOut({400});
    audioHost.refusedSuites = {"Premiere Audio Suite"};
    ASSERT_EQ(analyse({.tag = kTagFloat, .channels = 1, .bits = 32}, 100), 0);
    HostBuffers buffers(1, 100);
    EXPECT_EQ(importFrames(0, 100, buffers), 0);
    EXPECT_EQ(audioHost.requestsFor("Premiere Audio Suite"), 0);
    EXPECT_FALSE(buffers.untouched());
}

// --- float samples ---

TEST_F(AudioImportTest, FloatSamplesArriveBitForBit) {
    const std::vector<std::uint32_t> words = {
        0x00000000, 0x80000000,  // both zeros
        0x3F800000, 0xBF800000,  // full scale
        0x42C80000, 0xFF7FFFFF,  // far beyond it
        0x7F800000, 0xFF800000,  // infinities
        0x7FC00001, 0xFFC12345,  // quiet NaNs with payloads
        0x7F800001, 0xFFA00000,  // signalling NaNs
        0x00000001, 0x807FFFFF,  // denormals
    };
    std::vector<std::uint8_t> bytes;
    for (const std::uint32_t word : words) {
        append(bytes, word, 4);
    }
    for (const std::uint16_t count :
         {std::uint16_t{1}, std::uint16_t{2}, std::uint16_t{7}, std::uint16_t{14}}) {
        setOnlyChunk(bytes);
        const std::uint32_t frames = 14u / count;
        ASSERT_EQ(analyse({.tag = kTagFloat, .channels = count, .bits = 32}, frames), 0);
        HostBuffers buffers(count, frames + 1);
        EXPECT_EQ(importFrames(0, frames + 1, buffers), 0);
        for (std::uint32_t f = 0; f < frames; ++f) {
            for (std::uint32_t c = 0; c < count; ++c) {
                EXPECT_EQ(buffers.bitsAt(c, f), words[f * count + c]) << count << ": " << c << ", " << f;
            }
        }
        for (std::uint32_t c = 0; c < count; ++c) {
            EXPECT_EQ(buffers.bitsAt(c, frames), 0u);
        }
        EXPECT_TRUE(buffers.guardsHold());
    }
}

// --- buffers that the host does not give ---

TEST_F(AudioImportTest, WithoutABufferArrayTheStreamIsReadAndNothingWritten) {
    layOut({4000});
    for (const WaveBytes& wave : {WaveBytes{.channels = 2, .bits = 16}, WaveBytes{.channels = 4, .bits = 8},
                                  WaveBytes{.tag = kTagFloat, .channels = 1, .bits = 32}}) {
        ASSERT_EQ(analyse(wave, 1000), 0);
        m_log.clear();
        EXPECT_EQ(importFrames(10, 100, nullptr), 0);
        EXPECT_EQ(m_log.takeWithoutSuites(), readLog({"10", "0", "10", "100", "110", "1000", "40", "400"},
                                                     {"reading : 40, 148, 400", "fill    : 0"}));
        EXPECT_TRUE(audioHost.converterCalls.empty());
    }
}

TEST_F(AudioImportTest, AChannelWithoutABufferIsLeftOut) {
    layOut({6000});
    ASSERT_EQ(analyse({.channels = 3, .bits = 16}, 1000), 0);
    for (unsigned absent = 1; absent < 8; ++absent) {
        SCOPED_TRACE(absent);
        HostBuffers buffers(3, 1000);
        for (unsigned c = 0; c < 3; ++c) {
            if ((absent >> c & 1) != 0) {
                buffers.pointers[c] = nullptr;
            }
        }
        const std::vector<float*> given = buffers.pointers;
        EXPECT_EQ(importFrames(0, 1000, buffers), 0);
        EXPECT_EQ(buffers.pointers, given);
        for (unsigned c = 0; c < 3; ++c) {
            for (std::uint32_t f = 0; f < 1000; ++f) {
                const float expected = given[c] == nullptr ? kUntouched : sample16(f, c);
                ASSERT_EQ(buffers.at(c, f), expected) << c << ", " << f;
            }
        }
        EXPECT_TRUE(buffers.guardsHold());
    }
}

// The converter writes all channels, so that those without a buffer are given one of ours, block by block.
TEST_F(AudioImportTest, TheConverterIsCalledOnceForEachBlockThatHasFrames) {
    layOut({6000});
    ASSERT_EQ(analyse({.channels = 3, .bits = 16}, 1000), 0);
    for (const auto& [size, calls] : {std::pair{511u, 1u}, {512u, 1u}, {513u, 2u}, {1000u, 2u}}) {
        HostBuffers buffers(3, size);
        buffers.pointers[1] = nullptr;
        audioHost.converterCalls.clear();
        EXPECT_EQ(importFrames(0, size, buffers), 0);
        EXPECT_EQ(audioHost.converterCalls.size(), calls) << size;
    }
}

TEST_F(AudioImportTest, AFloatChannelWithoutABufferIsLeftOut) {
    layOut({800});
    ASSERT_EQ(analyse({.tag = kTagFloat, .channels = 2, .bits = 32}, 100), 0);
    HostBuffers buffers(2, 100);
    buffers.pointers[0] = nullptr;
    EXPECT_EQ(importFrames(0, 100, buffers), 0);
    for (std::uint32_t f = 0; f < 100; ++f) {
        std::uint32_t word = 0;
        for (unsigned i = 0; i < 4; ++i) {
            word |= std::uint32_t{streamByte(f * 8 + 4 + i)} << (8 * i);
        }
        ASSERT_EQ(buffers.bitsAt(1, f), word) << f;
        ASSERT_EQ(buffers.at(0, f), kUntouched) << f;
    }
}

}  // namespace
}  // namespace orvantis
