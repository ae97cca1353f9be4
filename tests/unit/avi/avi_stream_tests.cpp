// Lookups in a stream's chunk list, and the parts of its format.
#include "avi/avi_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <utility>

#include "tests/support/chunk_lists.h"

namespace orvantis {
namespace {

// A stream whose chunks have these sizes.
AviStream streamOf(const std::vector<std::uint32_t>& sizes, bool openDml = false) {
    AviStream stream(0);
    stream.hasOpenDmlIndex = openDml;
    ChunkListBuilder list;
    std::uint64_t start = 0;
    for (const std::uint32_t size : sizes) {
        list.add(1000 + start, 0, size, true);
        start += size;
    }
    (openDml ? stream.openDmlEntries : stream.legacyEntries) = list.finish();
    return stream;
}

// The number of the chunk that holds the position, -1 if there is none.
std::int64_t found(const AviStream& stream, std::uint64_t position) {
    const ChunkList::Iterator chunk = stream.findByPosition(position);
    if (chunk == stream.entries().end()) {
        return -1;
    }
    const IndexEntry entry = *chunk;
    EXPECT_LE(entry.start, position);
    EXPECT_LT(position - entry.start, entry.size);
    EXPECT_EQ(entry.offset, stream.entries()[chunk.number()].offset);
    return static_cast<std::int64_t>(chunk.number());
}

TEST(AviStream, ChunkIdNamesTheLastTwoDigitsOfTheOrdinal) {
    const std::pair<std::uint64_t, std::uint32_t> named[] = {{0, riffCode("00??")},  {9, riffCode("09??")},
                                                             {10, riffCode("10??")}, {42, riffCode("42??")},
                                                             {99, riffCode("99??")}, {108, riffCode("08??")}};
    for (const auto& [ordinal, code] : named) {
        EXPECT_EQ(AviStream(ordinal).chunkId, code) << ordinal;
    }
}

TEST(AviStream, PositionIsFoundInTheChunkThatHoldsIt) {
    const AviStream stream = streamOf({10, 20, 30});
    EXPECT_EQ(found(stream, 0), 0);
    EXPECT_EQ(found(stream, 9), 0);
    EXPECT_EQ(found(stream, 10), 1);
    EXPECT_EQ(found(stream, 29), 1);
    EXPECT_EQ(found(stream, 30), 2);
    EXPECT_EQ(found(stream, 59), 2);
}

TEST(AviStream, PositionAtOrBehindTheEndIsNotFound) {
    const AviStream stream = streamOf({10, 20, 30});
    EXPECT_EQ(stream.totalBytes(), 60U);
    EXPECT_EQ(found(stream, 60), -1);
    EXPECT_EQ(found(stream, 61), -1);
    EXPECT_EQ(found(stream, 0xFFFF'FFFF'FFFF'FFFF), -1);
}

TEST(AviStream, NothingIsFoundInAnEmptyList) {
    const AviStream stream = streamOf({});
    EXPECT_EQ(stream.totalBytes(), 0U);
    EXPECT_EQ(found(stream, 0), -1);
}

TEST(AviStream, EmptyChunkIsNeverFound) {
    const AviStream stream = streamOf({0, 0, 10, 0, 0, 5, 0});
    EXPECT_EQ(found(stream, 0), 2);
    EXPECT_EQ(found(stream, 9), 2);
    EXPECT_EQ(found(stream, 10), 5);
    EXPECT_EQ(found(stream, 14), 5);
    EXPECT_EQ(found(stream, 15), -1);
    EXPECT_EQ(found(streamOf({0, 0, 0}), 0), -1);
}

TEST(AviStream, LookupsGoByTheListInForce) {
    AviStream stream = streamOf({10, 20}, true);
    stream.legacyEntries = test::chunkListOf({{5, 1, 0, 0, true}});
    EXPECT_EQ(stream.totalBytes(), 30U);
    EXPECT_EQ(found(stream, 15), 1);
    stream.hasOpenDmlIndex = false;
    EXPECT_EQ(stream.totalBytes(), 1U);
    EXPECT_EQ(found(stream, 15), -1);
}

TEST(AviStream, TotalExceeds32Bits) {
    const AviStream stream = streamOf({0xFFFFFFFF, 0xFFFFFFFF, 1});
    EXPECT_EQ(stream.totalBytes(), 0x1'FFFF'FFFFU);
    EXPECT_EQ(found(stream, 0x1'FFFF'FFFE), 2);
    EXPECT_EQ(found(stream, 0xFFFF'FFFE), 0);
}

TEST(AviStream, NearestChunkWithDataIsTheOneBeforeTheRun) {
    const AviStream stream = streamOf({5, 0, 0, 7, 0});
    EXPECT_EQ(stream.nearestWithData(1, 5), 0);
    EXPECT_EQ(stream.nearestWithData(2, 5), 0);
    EXPECT_EQ(stream.nearestWithData(4, 5), 3);
}

TEST(AviStream, EmptyChunksAtTheStartTakeTheFirstOneBehind) {
    const AviStream stream = streamOf({0, 0, 0, 7, 8});
    for (std::uint64_t i = 0; i < 3; ++i) {
        EXPECT_EQ(stream.nearestWithData(i, 5), 3) << i;
    }
    // The search forward ends at the frame count.
    EXPECT_EQ(stream.nearestWithData(0, 4), 3);
    EXPECT_EQ(stream.nearestWithData(0, 3), -1);
    EXPECT_EQ(stream.nearestWithData(0, 0), -1);
    // And at the end of the list.
    EXPECT_EQ(streamOf({0, 0}).nearestWithData(0, 10), -1);
}

TEST(AviStream, NoChunkWithDataIsFoundWhereThereIsNone) {
    const AviStream stream = streamOf({0, 0, 0});
    for (std::uint64_t i = 0; i < 3; ++i) {
        EXPECT_EQ(stream.nearestWithData(i, 3), -1) << i;
    }
}

// The rule in its own words: back to 0, then forward from 1.
std::int64_t nearestBySearch(const std::vector<std::uint32_t>& sizes, std::int64_t entry,
                             std::int64_t frameCount) {
    for (std::int64_t i = entry - 1; i >= 0; --i) {
        if (sizes[static_cast<std::size_t>(i)] != 0) {
            return i;
        }
    }
    for (std::int64_t i = 1; i < frameCount; ++i) {
        if (sizes[static_cast<std::size_t>(i)] != 0) {
            return i;
        }
    }
    return -1;
}

TEST(AviStream, PreparedNeighboursEqualASearchForEveryPatternOfNineChunks) {
    for (unsigned pattern = 0; pattern < 512; ++pattern) {
        std::vector<std::uint32_t> sizes(9);
        for (unsigned i = 0; i < 9; ++i) {
            sizes[i] = (pattern >> i & 1U) * 10;
        }
        for (const bool openDml : {false, true}) {
            const AviStream stream = streamOf(sizes, openDml);
            for (std::int64_t entry = 0; entry < 9; ++entry) {
                if (sizes[static_cast<std::size_t>(entry)] != 0) {
                    continue;
                }
                for (std::int64_t frameCount = 0; frameCount <= 9; ++frameCount) {
                    EXPECT_EQ(stream.nearestWithData(static_cast<std::uint64_t>(entry), frameCount),
                              nearestBySearch(sizes, entry, frameCount))
                        << pattern << ' ' << entry << ' ' << frameCount;
                }
            }
        }
    }
}

TEST(AviStream, FormatHeaderIsFilledUpWithZeros) {
    AviStream stream(0);
    EXPECT_EQ(stream.formatHeader().biSize, 0U);
    stream.format = {40, 0, 0, 0, 0x40, 0x01};
    EXPECT_EQ(stream.formatHeader().biSize, 40U);
    EXPECT_EQ(stream.formatHeader().biWidth, 320);
    EXPECT_EQ(stream.formatHeader().biClrImportant, 0U);
    stream.format.assign(100, 1);
    EXPECT_EQ(stream.formatHeader().biClrImportant, 0x01010101U);
}

TEST(AviStream, ExtraDataStartsBehindTheHeaderOfTheStreamsType) {
    AviStream stream(0);
    stream.format.resize(50);
    std::iota(stream.format.begin(), stream.format.end(), std::uint8_t{0});
    stream.header.fccType = kStreamTypeVideo;
    ASSERT_EQ(stream.extraData().size(), 10U);
    EXPECT_EQ(stream.extraData()[0], 40);
    stream.header.fccType = kStreamTypeAudio;
    ASSERT_EQ(stream.extraData().size(), 32U);
    EXPECT_EQ(stream.extraData()[0], 18);
    stream.header.fccType = riffCode("txts");
    ASSERT_EQ(stream.extraData().size(), 50U);
    EXPECT_EQ(stream.extraData()[0], 0);
}

TEST(AviStream, ExtraDataIsEmptyWhenNothingIsLeft) {
    AviStream stream(0);
    stream.header.fccType = kStreamTypeVideo;
    for (const std::size_t size : {0U, 39U, 40U}) {
        stream.format.assign(size, 1);
        EXPECT_TRUE(stream.extraData().empty()) << size;
    }
    stream.header.fccType = kStreamTypeAudio;
    stream.format.assign(16, 1);
    EXPECT_TRUE(stream.extraData().empty());
}

}  // namespace
}  // namespace orvantis
