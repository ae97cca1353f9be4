// Bad sectors: only what lies on one is lost. That the reader asks for more than it needs, to ask seldom,
// must not show.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "avi/avi_stream.h"
#include "tests/support/failing_file.h"
#include "tests/support/thorough.h"
#include "tests/unit/avi/avi_test_support.h"
#include "tests/unit/avi/plain_parser.h"

namespace orvantis {
namespace {

using test::AviBuilder;
using test::ByteRange;
using test::Bytes;
using test::FailingFile;
using test::MemoryFile;
using test::OpenDml;

constexpr std::uint64_t kSector = 512;
const std::string kIndexCode = "indx";

/// What a reader finds in a file with these bytes unreadable; with its windows' reads that failed.
struct BadParse {
    BadParse(const Bytes& bytes, ByteRange bad, bool inTwoSteps = false) : m_memory(bytes), m_file(m_memory) {
        m_file.makeUnreadable(bad.from, bad.to - bad.from);
        usable = reader.parse(m_file, inTwoSteps);
        if (inTwoSteps) {
            reader.readIndexes();
        }
    }
    std::uint64_t failedReads() const { return m_file.faults(); }
    const test::FileCounts& counts() const { return m_memory.counts(); }

    AviReader reader;
    bool usable = false;

 private:
    MemoryFile m_memory;
    FailingFile m_file;
};

ByteRange sectorOf(std::uint64_t position) {
    const std::uint64_t from = position / kSector * kSector;
    return {from, from + kSector};
}

TEST(BadSector, AnyRunOfBytesCostsOnlyWhatLiesThere) {
    for (const OpenDml kind : {OpenDml::kNone, OpenDml::kStandardIndex, OpenDml::kSuperIndex}) {
        AviBuilder avi = test::smallClip(9);
        avi.openDml(kind);
        if (kind == OpenDml::kSuperIndex) {
            avi.chunksPerForm(8).entriesPerStandardIndex(3);
        }
        const Bytes bytes = avi.build();
        for (std::uint64_t from = 0; from < bytes.size(); from += 4 * test::sampleStep(5)) {
            const ByteRange bad{from, from + 16};
            const test::PlainAvi expected = test::parsePlainly(bytes, bad);
            for (const bool inTwoSteps : {false, true}) {
                const BadParse parsed(bytes, bad, inTwoSteps);
                if (!parsed.usable && inTwoSteps) {
                    continue;  // then there is no second step
                }
                ASSERT_EQ(test::firstDifference(expected, test::asPlain(parsed.reader, parsed.usable)),
                          "none")
                    << "bad from " << from;
            }
        }
    }
}

TEST(BadSector, InTheFirstFramesLeavesTheFileWhole) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 320, 240, 25, 1));
    for (int i = 0; i < 40; ++i) {
        avi.addFilledChunk(0, 20'000, 1);
    }
    const Bytes bytes = avi.build();
    const ByteRange bad = sectorOf(avi.placements()[1].offset + 5000);
    ASSERT_LT(bad.to, FileWindow::kWindowBytes) << "the window at the start holds it";

    const BadParse parsed(bytes, bad);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "");
    ASSERT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(parsed.reader.streams[0]->entries().size(), 40U);
}

TEST(BadSector, BehindTheIndexLeavesTheIndex) {
    AviBuilder avi = test::smallClip(300);
    Bytes bytes = avi.build();
    bytes.resize(bytes.size() + 8 * kSector);  // as preallocated files have it
    // Not read by anybody: behind idx1 and behind the header of the empty chunk that follows it.
    const std::uint64_t behind = avi.idx1Offset() + 8 + 600U * 16U + kSector;
    const BadParse parsed(bytes, sectorOf(behind));
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.at(0)->entries().size(), 300U);
}

TEST(BadSector, IsAskedForWithAWindowOnce) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 320, 240, 25, 1));
    for (int i = 0; i < 50; ++i) {
        avi.addStream(test::pcmStream(2, 48000, 16));
    }
    for (int i = 0; i < 40; ++i) {
        avi.addFilledChunk(0, 20'000, 1);
    }
    const Bytes bytes = avi.build();
    const ByteRange bad = sectorOf(avi.placements()[0].offset + 5000);
    ASSERT_LT(bad.to, FileWindow::kWindowBytes);

    // A disk tries a bad sector for seconds each time. Some hundred headers lie before this one.
    const BadParse parsed(bytes, bad);
    EXPECT_EQ(parsed.reader.streams.size(), 51U);
    EXPECT_EQ(parsed.failedReads(), 1U);
}

TEST(BadSector, InTheLastPieceOfALargeIndexLeavesThatStreamWithoutAnIndex) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1)).openDml(OpenDml::kStandardIndex);
    constexpr int kFrames = 20'000;  // 8 bytes each: three pieces of an index
    for (int i = 0; i < kFrames; ++i) {
        avi.addFilledChunk(0, 4, 1);
    }
    const Bytes bytes = avi.build();
    const BadParse good(bytes, {});
    ASSERT_EQ(good.reader.streams.at(0)->openDmlEntries.size(), static_cast<std::size_t>(kFrames));

    const auto index = std::search(bytes.begin(), bytes.end(), kIndexCode.begin(), kIndexCode.end());
    ASSERT_NE(index, bytes.end());
    const auto at = static_cast<std::uint64_t>(index - bytes.begin());
    const BadParse parsed(bytes, sectorOf(at + 8 + 24 + 8U * kFrames - 16));
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.at(0)->openDmlEntries.size(), 0U);
    EXPECT_NE(parsed.reader.errorText().find("failed to read index data"), std::string::npos);
}

TEST(BadSector, InTheLastPieceOfALargeSuperIndexLeavesNothingOfIt) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1))
        .openDml(OpenDml::kSuperIndex)
        .entriesPerStandardIndex(1);
    constexpr std::size_t kIndexes = 5000;  // 16 bytes each: two pieces of an index
    for (std::size_t i = 0; i < kIndexes; ++i) {
        avi.addFilledChunk(0, 4, 1);
    }
    const Bytes bytes = avi.build();
    const BadParse good(bytes, {});
    ASSERT_EQ(good.reader.streams.at(0)->superIndex.size(), kIndexes);

    const auto index = std::search(bytes.begin(), bytes.end(), kIndexCode.begin(), kIndexCode.end());
    ASSERT_NE(index, bytes.end());
    const auto at = static_cast<std::uint64_t>(index - bytes.begin());
    const BadParse parsed(bytes, sectorOf(at + 8 + 24 + 16U * kIndexes - 16));
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.at(0)->superIndex.size(), 0U);
}

TEST(BadSector, InTheLastPieceOfALargeIdx1LeavesNoListFromIt) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1));
    constexpr int kFrames = 10'000;  // 16 bytes each: three pieces of an index
    for (int i = 0; i < kFrames; ++i) {
        avi.addFilledChunk(0, 4, 1);
    }
    const Bytes bytes = avi.build();
    const BadParse good(bytes, {});
    ASSERT_EQ(good.reader.streams.at(0)->legacyEntries.size(), static_cast<std::size_t>(kFrames));

    const BadParse parsed(bytes, {bytes.size() - 16, bytes.size()});
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.at(0)->legacyEntries.size(), 0U);
}

TEST(BadSector, ElsewhereWindowsAreReadAsEver) {
    AviBuilder avi = test::smallClip(3);
    for (int i = 0; i < 40; ++i) {
        avi.addFilledChunk(0, 20'000, 1);
    }
    const Bytes bytes = avi.build();
    const ByteRange none{};
    const BadParse good(bytes, {none.from, none.from});
    const BadParse parsed(bytes, sectorOf(avi.placements()[30].offset));
    EXPECT_EQ(parsed.failedReads(), 0U);
    EXPECT_EQ(parsed.counts().reads, good.counts().reads);
}

TEST(BadSector, UnderIndexChunksDoesNotCountAgainstTheirBound) {
    // A super index with more names than index chunks are read of a file of this size: all but the last name
    // a chunk that cannot be read.
    constexpr std::uint32_t kNames = 50'000;
    test::RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
    riff.begin("indx").u16(4).u8(0).u8(0).u32(kNames).code("00dc").u64(0).u32(0);
    const std::uint64_t bad = riff.position() + kNames * 16U;
    const std::uint64_t good = bad + 32;
    for (std::uint32_t i = 0; i < kNames; ++i) {
        riff.u64(i + 1 < kNames ? bad : good).u32(32).u32(0);
    }
    riff.end();
    for (int i = 0; i < 2; ++i) {
        riff.fill(8).u16(2).u8(0).u8(1).u32(0).code("00dc").u64(0).u32(0);
    }
    const Bytes bytes = riff.take();

    const BadParse parsed(bytes, {bad, bad + 32});
    EXPECT_GE(parsed.failedReads(), kNames - 1);
    EXPECT_EQ(parsed.reader.streams.at(0)->standardIndexes.size(), 1U);
    EXPECT_FALSE(parsed.reader.streams.at(0)->hasOpenDmlIndex);
}

}  // namespace
}  // namespace orvantis
