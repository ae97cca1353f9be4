// Every AVI on the machine passes through the reader: refusing or opening one costs few and large reads.
#include <gtest/gtest.h>

#include "avi/avi_stream.h"
#include "tests/unit/avi/avi_test_support.h"

namespace orvantis {
namespace {

using test::AviBuilder;
using test::Bytes;
using test::OpenDml;
using test::Parsed;

// A clip whose movi is some megabytes long, as they are.
AviBuilder megabytes(std::size_t frames = 40) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 320, 240, 25, 1)).addStream(test::pcmStream(2, 48000, 16));
    for (std::size_t i = 0; i < frames; ++i) {
        avi.addFilledChunk(0, 100'000, 1).addFilledChunk(1, 7680, 2);
    }
    return avi;
}

TEST(ReadCount, FileThatIsNoAviCostsOneRead) {
    const Parsed parsed(Bytes(1'000'000));
    EXPECT_FALSE(parsed.usable);
    EXPECT_EQ(parsed.file->counts().reads, 1U);
    EXPECT_EQ(parsed.file->counts().seeks, 1U);
    EXPECT_EQ(parsed.file->counts().sizes, 1U);
}

TEST(ReadCount, HeadersOfARegularFileCostOneRead) {
    // What follows movi is not looked at before the indexes are wanted.
    Parsed parsed(megabytes().build(), true);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.file->counts().reads, 1U);
    EXPECT_EQ(parsed.file->counts().seeks, 1U);
    EXPECT_LE(parsed.file->counts().bytesRead, FileWindow::kWindowBytes);
    parsed.reader.readIndexes();
    EXPECT_EQ(parsed.file->counts().reads, 2U);
    EXPECT_EQ(parsed.stream(0).entries().size(), 40U);
}

TEST(ReadCount, PaddingBeforeMoviCostsOneReadMore) {
    const Parsed parsed(megabytes().junk(300'000).build(), true);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.file->counts().reads, 2U);
}

TEST(ReadCount, SmallIdx1ComesWithItsHeader) {
    const Parsed parsed(megabytes().build());
    EXPECT_EQ(parsed.stream(0).entries().size(), 40U);
    EXPECT_EQ(parsed.file->counts().reads, 2U);
}

TEST(ReadCount, LargeIdx1IsReadOnceInPieces) {
    AviBuilder avi = megabytes(0);
    constexpr int kFrames = 20'000;
    for (int i = 0; i < kFrames; ++i) {
        avi.addFilledChunk(0, 30, 1).addFilledChunk(1, 4, 1);
    }
    const Parsed parsed(avi.build());
    EXPECT_EQ(parsed.stream(0).entries().size(), std::size_t{kFrames});
    constexpr std::uint64_t kIndexBytes = 2 * kFrames * 16;
    // Headers, what lies behind movi, and the index once: no piece of it twice.
    EXPECT_EQ(parsed.file->counts().reads,
              2 + (kIndexBytes + IndexInput::kPieceBytes - 1) / IndexInput::kPieceBytes);
    EXPECT_LE(parsed.file->counts().largestRead, IndexInput::kPieceBytes);
    EXPECT_LE(parsed.file->counts().bytesRead, 2 * FileWindow::kWindowBytes + kIndexBytes);
}

TEST(ReadCount, EachStandardIndexIsOneRead) {
    AviBuilder avi = megabytes();
    avi.openDml(OpenDml::kSuperIndex).chunksPerForm(20);
    const Parsed parsed(avi.build());
    EXPECT_EQ(parsed.stream(0).entries().size(), 40U);
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    // Four forms with an index for each of two streams; the super indexes came with the headers.
    EXPECT_EQ(parsed.stream(0).standardIndexes.size() + parsed.stream(1).standardIndexes.size(), 8U);
    EXPECT_EQ(parsed.file->counts().reads, 2 + 8U);
}

TEST(ReadCount, HeadersOfManyStreamsAreOneRead) {
    AviBuilder avi = megabytes();
    for (int i = 0; i < 60; ++i) {
        avi.addStream(test::pcmStream(2, 48000, 16));
    }
    const Parsed parsed(avi.build(), true);
    EXPECT_EQ(parsed.reader.streams.size(), 62U);
    EXPECT_EQ(parsed.file->counts().reads, 1U);
}

TEST(ReadCount, HeadersLargerThanAWindowAreGoneThroughInWindows) {
    AviBuilder avi = megabytes();
    for (int i = 0; i < 2000; ++i) {
        avi.addStream(test::pcmStream(2, 48000, 16));
    }
    const Bytes bytes = avi.build();
    const Parsed parsed(bytes, true);
    EXPECT_EQ(parsed.reader.streams.size(), 2002U);
    // The tree first, then what the headers hold: twice the headers, and what follows movi.
    const std::uint64_t windows = avi.moviOffset() / FileWindow::kWindowBytes + 1;
    EXPECT_GT(windows, 2U);
    EXPECT_LE(parsed.file->counts().reads, 2 * windows + 1);
}

}  // namespace
}  // namespace orvantis
