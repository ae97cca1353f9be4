// The chunk lists: what idx1 and the OpenDML indexes become, and which of them is in force.
#include "avi/avi_index.h"
#include "avi/avi_stream.h"

#include <gtest/gtest.h>

#include "tests/unit/avi/avi_test_support.h"
#include "tests/unit/avi/plain_parser.h"

namespace orvantis {
namespace {

using test::AviBuilder;
using test::Bytes;
using test::OpenDml;
using test::Parsed;
using test::Placement;
using test::RiffBuilder;

constexpr std::uint32_t kKeyFrame = 0x10;

void expectListed(const ChunkList& list, const std::vector<Placement>& placements) {
    ASSERT_EQ(list.size(), placements.size());
    std::uint64_t start = 0;
    for (std::size_t i = 0; i < list.size(); ++i) {
        EXPECT_EQ(list[i].offset, placements[i].offset) << i;
        EXPECT_EQ(list[i].size, placements[i].size) << i;
        EXPECT_EQ(list[i].keyFrame, placements[i].keyFrame) << i;
        EXPECT_EQ(list[i].start, start) << i;
        EXPECT_EQ(list[i].reserved, 0U) << i;
        start += list[i].size;
    }
}

// The form's size after bytes were cut off or appended.
void setFormSize(Bytes& bytes) {
    const auto size = static_cast<std::uint32_t>(bytes.size() - 8);
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[4 + i] = static_cast<std::uint8_t>(size >> (8 * i));
    }
}

// A file with one video stream, in whose strl `indx` follows, and with `tail` behind hdrl.
struct IndexFile {
    explicit IndexFile(const Bytes& indxData, const Bytes& tail = {}) {
        RiffBuilder riff;
        riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
        riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
        indxPosition = riff.position() + 8;
        riff.chunk("indx", indxData).end().end();
        tailPosition = riff.position();
        riff.bytes(tail);
        bytes = riff.take();
    }
    Bytes bytes;
    std::uint64_t indxPosition = 0;  // of its data
    std::uint64_t tailPosition = 0;
};

// Index data: header and whatever follows.
RiffBuilder indexData(std::uint16_t longsPerEntry, std::uint8_t type, std::uint32_t entries,
                      std::uint64_t base = 0) {
    RiffBuilder data;
    data.u16(longsPerEntry).u8(0).u8(type).u32(entries).code("00dc").u64(base).u32(0);
    return data;
}

std::string problem(std::uint64_t position, std::uint64_t size, const std::string& message) {
    return "readIndex: stream[0], pos: " + std::to_string(static_cast<std::int64_t>(position)) +
           ", size: " + std::to_string(size) + ": " + message + "\n";
}

// idx1.

TEST(LegacyIndex, ListsEachStreamsChunksInOrder) {
    AviBuilder avi = test::smallClip(5);
    const Parsed parsed(avi.build());
    EXPECT_EQ(parsed.reader.errorText(), "");
    expectListed(parsed.stream(0).entries(), avi.placementsOf(0));
    expectListed(parsed.stream(1).entries(), avi.placementsOf(1));
    EXPECT_TRUE(parsed.stream(0).openDmlEntries.empty());
}

TEST(LegacyIndex, ChunkBelongsToThePositionOfItsTwoDigits) {
    // Whatever stands behind the digits; codes without two leading digits belong to nobody.
    RiffBuilder table;
    for (const std::string_view code :
         {"00dc", "00db", "01wb", "00xx", "ix00", "10dc", "0adc", "a0dc", ":0dc", "/0dc", "0:dc", "02dc"}) {
        table.code(code).u32(kKeyFrame).u32(4).u32(1);
    }
    table.u32('0').u32(kKeyFrame).u32(4).u32(1);
    Bytes bytes = test::smallClip(0).idx1(false).build();
    const Bytes idx1 = RiffBuilder().chunk("idx1", table.take()).take();
    bytes.insert(bytes.end(), idx1.begin(), idx1.end());
    setFormSize(bytes);
    const Parsed parsed(bytes);
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_EQ(parsed.stream(0).entries().size(), 3U);
    EXPECT_EQ(parsed.stream(1).entries().size(), 1U);
}

TEST(LegacyIndex, TheCharacterBehindTheNineIsNoDigit) {
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    for (int stream = 0; stream <= 10; ++stream) {
        riff.beginList("LIST", "strl")
            .chunk("strh", test::streamHeader("auds"))
            .chunk("strf", Bytes(16))
            .end();
    }
    riff.end().beginList("LIST", "movi").end().begin("idx1");
    riff.code("0:wb").u32(0).u32(4).u32(1);
    riff.end();
    const Parsed parsed(riff.take());
    ASSERT_EQ(parsed.reader.streams.size(), 11U);
    EXPECT_TRUE(parsed.stream(10).entries().empty());
}

TEST(LegacyIndex, PositionDecidesAfterADroppedStreamList) {
    // Three lists, the first one without strf: "00" means the second list, "02" nobody.
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("txts")).end();
    riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40)).end();
    riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("auds")).chunk("strf", Bytes(16)).end();
    riff.end().beginList("LIST", "movi").end().begin("idx1");
    riff.code("00dc")
        .u32(0)
        .u32(4)
        .u32(7)
        .code("01wb")
        .u32(0)
        .u32(4)
        .u32(8)
        .code("02wb")
        .u32(0)
        .u32(4)
        .u32(9)
        .end();
    const Parsed parsed(riff.take());
    ASSERT_EQ(parsed.reader.streams.size(), 2U);
    EXPECT_EQ(parsed.stream(0).index, 1U);
    ASSERT_EQ(parsed.stream(0).entries().size(), 1U);
    EXPECT_EQ(parsed.stream(0).entries()[0].size, 7U);
    ASSERT_EQ(parsed.stream(1).entries().size(), 1U);
    EXPECT_EQ(parsed.stream(1).entries()[0].size, 8U);
}

TEST(LegacyIndex, KeyFrameIsBitFourOfTheFlags) {
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    riff.beginList("LIST", "strl")
        .chunk("strh", test::streamHeader("vids"))
        .chunk("strf", Bytes(40))
        .end()
        .end();
    riff.beginList("LIST", "movi").end().begin("idx1");
    for (const std::uint32_t flags : {0x0U, 0x10U, 0xFFFFFFEFU, 0xFFFFFFFFU}) {
        riff.code("00dc").u32(flags).u32(0xFFFFFFFF).u32(0xFFFFFFFF);
    }
    riff.end();
    const Parsed parsed(riff.take());
    const ChunkList& list = parsed.stream(0).entries();
    ASSERT_EQ(list.size(), 4U);
    EXPECT_FALSE(list[0].keyFrame);
    EXPECT_TRUE(list[1].keyFrame);
    EXPECT_FALSE(list[2].keyFrame);
    EXPECT_TRUE(list[3].keyFrame);
    // Offsets and sums are 64 bits wide.
    EXPECT_EQ(list[0].offset, parsed.reader.chunks[0].children[1].offset + 16 + 0xFFFFFFFF);
    EXPECT_EQ(list[3].start, 3 * 0xFFFFFFFFULL);
    EXPECT_EQ(parsed.stream(0).totalBytes(), 4 * 0xFFFFFFFFULL);
}

TEST(LegacyIndex, Of100BytesHasSevenEntriesAndTheSizeMessage) {
    AviBuilder avi = test::smallClip(5);
    Bytes bytes = avi.build();
    bytes.resize(avi.idx1Offset() + 8 + 100);
    bytes[avi.idx1Offset() + 4] = 100;
    setFormSize(bytes);
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "idx1 size is not a multiple of index entry size\n");
    // 96 bytes are six entries; of the seventh only the code is there.
    ASSERT_EQ(parsed.stream(0).entries().size(), 4U);
    EXPECT_EQ(parsed.stream(1).entries().size(), 3U);
    const IndexEntry last = parsed.stream(0).entries()[3];
    EXPECT_EQ(last.offset, avi.moviOffset() + 16);
    EXPECT_EQ(last.size, 0U);
    EXPECT_FALSE(last.keyFrame);
}

TEST(LegacyIndex, CutByTheEndOfTheFileLeavesNoEntriesButTheSizeMessage) {
    AviBuilder avi = test::smallClip(5);
    for (const std::uint8_t size : {std::uint8_t{160}, std::uint8_t{161}}) {
        Bytes bytes = avi.build();
        bytes[avi.idx1Offset() + 4] = size;
        bytes.resize(avi.idx1Offset() + 8 + 159);
        const Parsed parsed(bytes);
        EXPECT_TRUE(parsed.usable);
        EXPECT_TRUE(parsed.stream(0).entries().empty());
        EXPECT_TRUE(parsed.stream(1).entries().empty());
        EXPECT_EQ(parsed.reader.errorText(),
                  size == 160 ? "" : "idx1 size is not a multiple of index entry size\n");
    }
}

TEST(LegacyIndex, ClaimOfFourGigabytesAllocatesNothing) {
    AviBuilder avi = test::smallClip(5);
    Bytes bytes = avi.build();
    for (std::size_t i = 4; i < 8; ++i) {
        bytes[avi.idx1Offset() + i] = 0xFF;
    }
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.usable);
    EXPECT_TRUE(parsed.stream(0).entries().empty());
    EXPECT_LT(parsed.file->counts().largestRead, 100'000U);
    EXPECT_EQ(parsed.reader.errorText(), "idx1 size is not a multiple of index entry size\n");
}

TEST(LegacyIndex, AbsoluteOffsetsAreTakenAsRelative) {
    AviBuilder avi = test::smallClip(2);
    const Parsed parsed(avi.absoluteIdx1Offsets(true).build());
    // The header's true position, counted from movi once more.
    EXPECT_EQ(parsed.stream(0).entries().at(0).offset,
              avi.moviOffset() + 16 + avi.placements()[0].offset - 8);
}

TEST(LegacyIndex, ChunksInsideRecListsAreReached) {
    AviBuilder avi = test::smallClip(6);
    avi.chunksPerRecList(4);
    const Parsed parsed(avi.build());
    expectListed(parsed.stream(0).entries(), avi.placementsOf(0));
    expectListed(parsed.stream(1).entries(), avi.placementsOf(1));
}

TEST(LegacyIndex, WithoutAnIndexThereAreNoFrames) {
    const Parsed parsed(test::smallClip(6).idx1(false).build());
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_TRUE(parsed.stream(0).entries().empty());
    EXPECT_EQ(parsed.stream(0).totalBytes(), 0U);
}

TEST(LegacyIndex, StreamsFromPosition100OnHaveNoList) {
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    for (int i = 0; i < 130; ++i) {
        riff.beginList("LIST", "strl")
            .chunk("strh", test::streamHeader("auds"))
            .chunk("strf", Bytes(16))
            .end();
    }
    riff.end().beginList("LIST", "movi").end().begin("idx1");
    for (std::uint32_t i = 0; i < 100; ++i) {
        riff.u8(static_cast<std::uint8_t>('0' + i / 10)).u8(static_cast<std::uint8_t>('0' + i % 10)).u16(0);
        riff.u32(0).u32(4).u32(i + 1);
    }
    riff.end();
    const Bytes bytes = riff.take();
    const Parsed parsed(bytes);
    ASSERT_EQ(parsed.reader.streams.size(), 130U);
    for (std::size_t i = 0; i < 130; ++i) {
        ASSERT_EQ(parsed.stream(i).entries().size(), i < 100 ? 1U : 0U) << i;
        if (i < 100) {
            EXPECT_EQ(parsed.stream(i).entries()[0].size, i + 1) << i;
        }
    }
    EXPECT_EQ(test::firstDifference(test::parsePlainly(bytes), test::asPlain(parsed.reader, parsed.usable)),
              "none");
}

// OpenDML.

TEST(OpenDmlIndex, StandardIndexInTheStreamListIsRead) {
    AviBuilder avi = test::smallClip(5);
    const Parsed parsed(avi.openDml(OpenDml::kStandardIndex).build());
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).standardIndexes.size(), 1U);
    EXPECT_TRUE(parsed.stream(0).superIndex.empty());
    expectListed(parsed.stream(0).entries(), avi.placementsOf(0));
    expectListed(parsed.stream(1).entries(), avi.placementsOf(1));
}

TEST(OpenDmlIndex, SuperIndexReachesChunksBehindTheFirstForm) {
    AviBuilder avi = test::smallClip(30);
    avi.openDml(OpenDml::kSuperIndex).chunksPerForm(8).entriesPerStandardIndex(3);
    for (const bool numberFirst : {false, true}) {
        const Parsed parsed(avi.indexNumberFirst(numberFirst).build());
        EXPECT_EQ(parsed.reader.errorText(), "");
        for (std::size_t i = 0; i < 2; ++i) {
            EXPECT_TRUE(parsed.stream(i).hasOpenDmlIndex);
            EXPECT_EQ(parsed.stream(i).superIndex.size(), 15U);  // 7 forms of 4, 4 = 3 + 1 each, and one of 2
            EXPECT_EQ(parsed.stream(i).standardIndexes.size(), 15U);
            expectListed(parsed.stream(i).openDmlEntries, avi.placementsOf(i));
        }
        // idx1 is built too. It covers the first form only.
        EXPECT_EQ(parsed.stream(0).legacyEntries.size(), 4U);
        EXPECT_EQ(&parsed.stream(0).entries(), &parsed.stream(0).openDmlEntries);
    }
}

TEST(OpenDmlIndex, FileWithBothCompleteUsesOpenDml) {
    AviBuilder avi = test::smallClip(4);
    Bytes bytes = avi.openDml(OpenDml::kSuperIndex).build();
    // idx1 says something else, so that it shows which list is in force.
    bytes[avi.idx1Offset() + 8 + 12] = 1;
    const Parsed parsed(bytes);
    EXPECT_EQ(parsed.stream(0).legacyEntries.at(0).size, 1U);
    EXPECT_EQ(parsed.stream(0).entries().at(0).size, 100U);
}

TEST(OpenDmlIndex, BrokenOneFallsBackToIdx1) {
    AviBuilder avi = test::smallClip(4);
    Bytes bytes = avi.openDml(OpenDml::kSuperIndex).build();
    const std::uint64_t indx = avi.indxOffset(0) + 8;
    bytes[indx + 3] = 2;
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.usable);
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_TRUE(parsed.stream(1).hasOpenDmlIndex);
    expectListed(parsed.stream(0).entries(), avi.placementsOf(0));
    EXPECT_EQ(parsed.reader.errorText(), problem(indx, 40, "unknown bIndexType: 2, wLongsPerEntry: 4"));
}

TEST(OpenDmlIndex, BlocksReadBeforeAFailureAreKeptButNotInForce) {
    AviBuilder avi = test::smallClip(6);
    Bytes bytes = avi.openDml(OpenDml::kSuperIndex).entriesPerStandardIndex(2).build();
    // The second of three super index entries of stream 0 names nothing.
    const std::uint64_t entry = avi.indxOffset(0) + 8 + 24 + 16;
    for (std::size_t i = 0; i < 16; ++i) {
        bytes[entry + i] = 0;
    }
    const Parsed parsed(bytes);
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).superIndex.size(), 3U);
    EXPECT_EQ(parsed.stream(0).standardIndexes.size(), 2U);
    EXPECT_EQ(parsed.stream(0).openDmlEntries.size(), 4U);
    expectListed(parsed.stream(0).entries(), avi.placementsOf(0));
    EXPECT_EQ(parsed.reader.errorText(), problem(8, 0, "index data size too small"));
}

TEST(OpenDmlIndex, BaseOffsetAndBitThirtyOne) {
    RiffBuilder data = indexData(2, 1, 3, 0x1'0000'0000);
    data.u32(0x10).u32(0x80001000).u32(0xFFFFFFFF).u32(5).u32(0).u32(0x80000000);
    const Parsed parsed(IndexFile(data.take()).bytes);
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    const ChunkList& list = parsed.stream(0).entries();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].offset, 0x1'0000'0010U);
    EXPECT_EQ(list[0].size, 4096U);
    EXPECT_FALSE(list[0].keyFrame);
    EXPECT_EQ(list[1].offset, 0x1'FFFF'FFFFU);
    EXPECT_TRUE(list[1].keyFrame);
    EXPECT_EQ(list[1].start, 4096U);
    EXPECT_EQ(list[2].size, 0U);
    EXPECT_FALSE(list[2].keyFrame);
    EXPECT_EQ(list[2].start, 4101U);
}

TEST(OpenDmlIndex, NothingIsSortedOrCheckedAgainstTheFile) {
    RiffBuilder data = indexData(2, 1, 3, 0xFFFF'FFFF'FFFF'FFF0);
    data.u32(0x20).u32(1).u32(0x8).u32(2).u32(0x8).u32(2);
    const Parsed parsed(IndexFile(data.take()).bytes);
    const ChunkList& list = parsed.stream(0).entries();
    ASSERT_EQ(list.size(), 3U);
    EXPECT_EQ(list[0].offset, 0x10U);
    EXPECT_EQ(list[1].offset, 0xFFFF'FFFF'FFFF'FFF8U);
    EXPECT_EQ(list[2].offset, list[1].offset);
}

TEST(OpenDmlIndex, ClaimOfMoreEntriesThanFitIsCutAndRecorded) {
    // Three entries are claimed, two and a half fit.
    RiffBuilder data = indexData(2, 1, 3);
    data.u32(1).u32(10).u32(2).u32(20).u32(3);
    const IndexFile file(data.take());
    const Parsed parsed(file.bytes);
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).entries().size(), 2U);
    EXPECT_EQ(
        parsed.reader.errorText(),
        problem(file.indxPosition, 44, "index data size is smaller than required by nEntriesInUse (3)"));
}

TEST(OpenDmlIndex, SuperIndexClaimingMoreThanFitsReadsThoseThatFit) {
    AviBuilder avi = test::smallClip(4);
    Bytes bytes = avi.openDml(OpenDml::kSuperIndex).build();
    const std::uint64_t indx = avi.indxOffset(0) + 8;
    for (std::size_t i = 4; i < 8; ++i) {
        bytes[indx + i] = 0xFF;
    }
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).superIndex.size(), 1U);
    expectListed(parsed.stream(0).entries(), avi.placementsOf(0));
    EXPECT_EQ(parsed.reader.errorText(),
              problem(indx, 40, "index data size is smaller than required by nEntriesInUse (4294967295)"));
}

TEST(OpenDmlIndex, ClaimOfFewerEntriesThanFitIsTaken) {
    // Preallocated room behind the entries in use.
    RiffBuilder data = indexData(2, 1, 1);
    data.u32(1).u32(10).fill(80);
    const Parsed parsed(IndexFile(data.take()).bytes);
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_EQ(parsed.stream(0).entries().size(), 1U);
    EXPECT_EQ(parsed.stream(0).standardIndexes.at(0).entries, 1U);
}

TEST(OpenDmlIndex, EmptyIndexesAreComplete) {
    const Parsed standard(IndexFile(indexData(2, 1, 0).take()).bytes);
    EXPECT_TRUE(standard.stream(0).hasOpenDmlIndex);
    EXPECT_TRUE(standard.stream(0).entries().empty());
    const Parsed super(IndexFile(indexData(4, 0, 0).take()).bytes);
    EXPECT_TRUE(super.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(super.reader.errorText(), "");
}

TEST(OpenDmlIndex, HeaderAsStoredIsKept) {
    RiffBuilder data = indexData(2, 1, 1, 0x1122334455667788);
    data.u32(1).u32(10);
    const Parsed parsed(IndexFile(data.take()).bytes);
    const AviStdIndexHeader header = parsed.stream(0).standardIndexes.at(0).header;
    EXPECT_EQ(header.wLongsPerEntry, 2);
    EXPECT_EQ(header.bIndexType, 1);
    EXPECT_EQ(std::uint32_t{header.nEntriesInUse}, 1U);
    EXPECT_EQ(std::uint32_t{header.dwChunkId}, riffCode("00dc"));
    EXPECT_EQ(std::uint64_t{header.qwBaseOffset}, 0x1122334455667788U);
}

TEST(OpenDmlIndex, OtherKindsAreUnknown) {
    struct Case {
        std::uint16_t longs;
        std::uint8_t type;
        const char* message;
    };
    const Case cases[] = {
        {2, 0, "unknown bIndexType: 0, wLongsPerEntry: 2"},      // super index with the other entry size
        {4, 1, "unknown bIndexType: 1, wLongsPerEntry: 4"},      // and the other way round
        {3, 1, "unknown bIndexType: 1, wLongsPerEntry: 3"},      // index of two fields
        {4, 128, "unknown bIndexType: 128, wLongsPerEntry: 4"},  // index is data
        {0, 1, "unknown bIndexType: 1, wLongsPerEntry: 0"},  // an entry of no bytes: nothing may divide by it
        {0, 0, "unknown bIndexType: 0, wLongsPerEntry: 0"},
    };
    for (const Case& c : cases) {
        const IndexFile file(indexData(c.longs, c.type, 1).fill(64).take());
        const Parsed parsed(file.bytes);
        EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
        EXPECT_TRUE(parsed.stream(0).standardIndexes.empty());
        EXPECT_EQ(parsed.reader.errorText(), problem(file.indxPosition, 88, c.message));
    }
}

TEST(OpenDmlIndex, UnknownKindStillSaysThatEntriesAreMissing) {
    // 0xFFFF longs are 262140 bytes an entry.
    const IndexFile file(indexData(0xFFFF, 7, 9).fill(8).take());
    const Parsed parsed(file.bytes);
    EXPECT_EQ(
        parsed.reader.errorText(),
        problem(file.indxPosition, 32, "index data size is smaller than required by nEntriesInUse (9)") +
            problem(file.indxPosition, 32, "unknown bIndexType: 7, wLongsPerEntry: 65535"));
}

TEST(OpenDmlIndex, SmallerThanItsHeaderIsTooSmall) {
    const IndexFile file(Bytes(23));
    const Parsed parsed(file.bytes);
    EXPECT_EQ(parsed.reader.errorText(), problem(file.indxPosition, 23, "index data size too small"));
}

TEST(OpenDmlIndex, CutByTheEndOfTheFileFails) {
    IndexFile file(indexData(2, 1, 1).u32(1).u32(10).take());
    file.bytes.resize(file.indxPosition + 31);
    const Parsed parsed(file.bytes);
    ASSERT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(parsed.reader.errorText(), problem(file.indxPosition, 32, "failed to read index data"));
}

TEST(OpenDmlIndex, SuperIndexEntryOutsideTheFileFailsWithItsSignedPosition) {
    const IndexFile file(indexData(4, 0, 3)
                             .u64(0x7FFF'FFFF'FFFF'0000)
                             .u32(100)
                             .u32(0)
                             .u64(0xFFFF'FFFF'FFFF'0000)
                             .u32(100)
                             .u32(0)
                             .u64(0xFFFF'FFFF'FFFF'FFFF)  // + 8 wraps to 7
                             .u32(31)
                             .u32(0)
                             .take());
    const Parsed parsed(file.bytes);
    EXPECT_EQ(parsed.reader.errorText(),
              problem(0x7FFF'FFFF'FFFF'0008, 92, "failed to read index data") +
                  "readIndex: stream[0], pos: -65528, size: 92: failed to read index data\n" +
                  problem(7, 23, "index data size too small"));
}

// Sizes in a super index include the chunk's header.
TEST(OpenDmlIndex, NamedIndexWithoutRoomForItsChunkHeaderHasNoData) {
    RiffBuilder entries = indexData(4, 0, 4);
    for (const std::uint32_t size : {7U, 8U, 9U, 31U}) {
        entries.u64(0).u32(size).u32(0);
    }
    const IndexFile file(entries.take());
    const Parsed parsed(file.bytes);
    std::string expected;
    for (const std::uint32_t data : {0U, 0U, 1U, 23U}) {
        expected += problem(8, data, "index data size too small");
    }
    EXPECT_EQ(parsed.reader.errorText(), expected);
}

TEST(OpenDmlIndex, ClaimOfFourGigabytesAllocatesNothing) {
    const IndexFile file(indexData(4, 0, 1).u64(0).u32(0xFFFFFFFF).u32(0).take());
    const Parsed parsed(file.bytes);
    EXPECT_EQ(parsed.reader.errorText(), problem(8, 0xFFFFFFF7, "failed to read index data"));
}

TEST(OpenDmlIndex, SuperIndexInsideASuperIndexIsFollowed) {
    const IndexFile probe(indexData(4, 0, 1).u64(0).u32(0).u32(0).take());
    RiffBuilder tail(probe.tailPosition);
    const std::uint64_t inner = tail.position();
    tail.chunk("ix00", indexData(4, 0, 1).u64(inner + 48).u32(40).u32(0).take());
    ASSERT_EQ(tail.position(), inner + 48);
    tail.chunk("ix00", indexData(2, 1, 1).u32(77).u32(10).take());
    const IndexFile file(indexData(4, 0, 1).u64(inner).u32(48).u32(0).take(), tail.take());
    const Parsed parsed(file.bytes);
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).superIndex.size(), 2U);
    ASSERT_EQ(parsed.stream(0).entries().size(), 1U);
    EXPECT_EQ(parsed.stream(0).entries()[0].offset, 77U);
}

TEST(OpenDmlIndex, ProblemsStandBetweenThoseOfTheStreamLists) {
    // List 0 has a bad index, list 1 no strf, list 2 a bad index, then idx1 has a bad size.
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    const auto strlWithBadIndex = [&riff] {
        riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
        riff.chunk("indx", Bytes(10)).end();
    };
    strlWithBadIndex();
    const std::uint64_t first = riff.position() - 10;
    riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).end();
    strlWithBadIndex();
    const std::uint64_t second = riff.position() - 10;
    riff.end().begin("idx1").fill(3).end();
    const Bytes bytes = riff.take();

    const std::string expected = "readIndex: stream[0], pos: " + std::to_string(first) +
                                 ", size: 10: index data size too small\n"
                                 "stream[1]: strf missing in strl\n"
                                 "readIndex: stream[2], pos: " +
                                 std::to_string(second) +
                                 ", size: 10: index data size too small\n"
                                 "idx1 size is not a multiple of index entry size\n";
    EXPECT_EQ(Parsed(bytes).reader.errorText(), expected);
    Parsed halves(bytes, true);
    EXPECT_EQ(halves.reader.errorText(), "stream[1]: strf missing in strl\n");
    halves.reader.readIndexes();
    EXPECT_EQ(halves.reader.errorText(), expected);
}

}  // namespace
}  // namespace orvantis
