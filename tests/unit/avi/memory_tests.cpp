// What parsing costs in memory: little more than the lists for honest files, a bounded multiple of the file's
// size for any other, and no escape when there is none left.
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>

#include "avi/avi_index.h"
#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "avi/chunk_list_builder.h"
#include "avi/error_text.h"
#include "avi/frame_chunk.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/memory_file.h"
#include "tests/unit/avi/avi_test_support.h"
#include "tests/unit/avi/plain_parser.h"
#include "tests/unit/avi/same_lists.h"

namespace orvantis {
namespace {

using FrameOutcome = FrameChunkRead::Outcome;
using test::AviBuilder;
using test::Bytes;
using test::OpenDml;
using test::RiffBuilder;

constexpr std::size_t kMebibyte = 1024 * 1024;

struct Cost {
    bool usable = false;
    std::size_t peak = 0;      // while parsing
    std::size_t retained = 0;  // by the reader afterwards
};

Cost costOf(const Bytes& bytes, AviReader& reader) {
    test::MemoryFile file(bytes);
    test::startCounting();
    Cost cost;
    cost.usable = reader.parse(file, false);
    cost.peak = test::counted().peak;
    cost.retained = test::counted().current;
    return cost;
}

// A million frames of two bytes, with the index forms asked for.
Bytes millionFrames(OpenDml kind, bool idx1, std::size_t perIndex) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1));
    for (int i = 0; i < 1'000'000; ++i) {
        avi.addFilledChunk(0, 2, static_cast<std::uint8_t>(i));
    }
    return avi.openDml(kind).idx1(idx1).entriesPerStandardIndex(perIndex).build();
}

// Eight bytes a chunk, and a twentieth of that for the blocks; windows and buffers besides while parsing.
constexpr std::size_t kMillionChunks = 1'000'000 * 84 / 10;
constexpr std::size_t kWhileParsing = 2 * FileWindow::kWindowBytes + IndexInput::kPieceBytes + 100'000;

TEST(IndexMemory, MillionOpenDmlEntriesTakeEightBytesEach) {
    for (const std::size_t perIndex : {std::size_t{0}, std::size_t{4000}}) {
        const Bytes bytes = millionFrames(OpenDml::kSuperIndex, false, perIndex);
        AviReader reader;
        const Cost cost = costOf(bytes, reader);
        ASSERT_TRUE(cost.usable);
        ASSERT_EQ(reader.streams.at(0)->entries().size(), 1'000'000U);
        EXPECT_LE(cost.peak, kMillionChunks + kWhileParsing);
        EXPECT_LE(cost.retained, kMillionChunks + 4096U + reader.streams[0]->standardIndexes.size() * 64);
    }
}

// A hostile file has problems by the million: what there is no room for any more is not even put into words.
TEST(IndexMemory, ProblemsWithoutRoomAllocateNothing) {
    test::MemoryFile file(Bytes(64));
    FileWindow window;
    window.attach(file, 64);
    IndexInput input(window);
    Problems problems;
    problems.add({ProblemPlace::Part::kStructure}, std::string(kMaxErrorText, 'x'));
    OpenDmlIndexReader reader(input, problems);
    AviStream stream(0);
    test::startCounting();
    EXPECT_FALSE(reader.readOpenDmlIndex(8, 3, stream));
    EXPECT_EQ(test::counted().calls, 0U);
}

TEST(IndexMemory, MillionIdx1EntriesTakeEightBytesEach) {
    const Bytes bytes = millionFrames(OpenDml::kNone, true, 0);
    AviReader reader;
    const Cost cost = costOf(bytes, reader);
    ASSERT_TRUE(cost.usable);
    ASSERT_EQ(reader.streams.at(0)->entries().size(), 1'000'000U);
    EXPECT_LE(cost.peak, kMillionChunks + kWhileParsing);
    EXPECT_LE(cost.retained, kMillionChunks + 4096);
}

TEST(IndexMemory, RefusedFileCostsTwoWindowsAtMost) {
    AviReader reader;
    const Cost cost = costOf(Bytes(10 * kMebibyte), reader);
    EXPECT_FALSE(cost.usable);
    EXPECT_LE(cost.peak, 2 * FileWindow::kWindowBytes + 4096);
    EXPECT_LE(cost.retained, 4096U);
}

TEST(IndexMemory, WindowsAreGivenBackAfterTheParse) {
    AviReader reader;
    const Cost cost = costOf(test::smallClip(10).build(), reader);
    ASSERT_TRUE(cost.usable);
    EXPECT_GT(cost.peak, FileWindow::kWindowBytes);
    EXPECT_LT(cost.retained, 32'000U);
}

// Hostile shapes, each of which drives one kind of memory up.

constexpr std::uint32_t kShapeBytes = 6'000'000;

Bytes closed(RiffBuilder& riff) {
    if (riff.position() < kShapeBytes) {
        riff.fill(kShapeBytes - riff.position());
    }
    return riff.take();
}

RiffBuilder& openHeaders(RiffBuilder& riff) {
    return riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
}

// The smallest chunks there are.
Bytes fullOfChunks() {
    RiffBuilder riff;
    openHeaders(riff);
    return closed(riff);
}

// Chains of lists with one child each.
Bytes fullOfChains() {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < kShapeBytes) {
        for (int i = 0; i < 60; ++i) {
            riff.beginList("LIST", "strl");
        }
        for (int i = 0; i < 60; ++i) {
            riff.end();
        }
    }
    return closed(riff);
}

// The shortest stream lists, each with an index of nothing.
Bytes fullOfStreams() {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < kShapeBytes) {
        riff.beginList("LIST", "strl").chunk("strh", Bytes(56)).begin("strf").end().begin("indx").end().end();
    }
    return closed(riff);
}

// Lists over one another, 20 bytes each, that share their stream header (see hostile_index_tests.cpp).
Bytes fullOfOverlappingStreams() {
    RiffBuilder riff;
    openHeaders(riff);
    while (riff.position() < kShapeBytes) {
        constexpr std::uint32_t kLists = 1000;
        const std::uint64_t shared = riff.position() + kLists * 20ULL;
        for (std::uint32_t i = 1; i <= kLists; ++i) {
            riff.code("LIST").u32(0xFFFFFFFF).code("strl").u32(i == kLists ? 4 + 120 : 4);
            riff.u32(static_cast<std::uint32_t>(shared - (riff.position() + 4)));
        }
        riff.chunk("strh", test::streamHeader("vids"))
            .chunk("strf", Bytes(40))
            .begin("stop")
            .endWithSize(0xFFFFFFF7);
    }
    return closed(riff);
}

// One stream, whose super index names what `named` writes behind it, over and over.
Bytes manyNames(std::uint32_t names, std::uint32_t namedSize, std::uint32_t namedEntries, bool idx1) {
    RiffBuilder riff;
    openHeaders(riff);
    riff.beginList("LIST", "strl")
        .chunk("strh", test::streamHeader("vids"))
        .chunk("strf", Bytes(40))
        .begin("indx");
    riff.u16(4).u8(0).u8(0).u32(names).code("00dc").u64(0).u32(0);
    const std::uint64_t chunk = riff.position() + names * 16ULL + 12;  // behind the empty movi
    for (std::uint32_t i = 0; i < names; ++i) {
        riff.u64(chunk).u32(namedSize + 8).u32(0);
    }
    riff.end().end().end();
    riff.beginList("LIST", "movi").end();
    // What is named lies in idx1, each entry of which names stream 0 and is an entry of a standard index
    // twice.
    riff.begin(idx1 ? "idx1" : "JUNK");
    while (riff.position() < chunk + 8) {
        riff.u8(0);
    }
    riff.u16(2).u8(0).u8(1).u32(namedEntries).code("00dc").u64(0).u32(0);
    while (riff.position() < kShapeBytes) {
        riff.code("00dc").u32(0).code("00dc").u32(0);
    }
    return closed(riff);
}

TEST(HostileMemory, PeakStaysBelow64MebibytesAnd24TimesTheFile) {
    struct Shape {
        const char* name;
        std::size_t mostTimes;  // the file's size, at the peak
        std::function<Bytes()> make;
    };
    const Shape shapes[] = {
        {"chunks", 13, fullOfChunks},
        {"chains", 5, fullOfChains},
        {"streams", 6, fullOfStreams},
        {"overlapping streams", 11, fullOfOverlappingStreams},
        {"one large index, named often", 2, [] { return manyNames(1000, 5'000'000, 600'000, false); }},
        {"small indexes without entries", 2, [] { return manyNames(200'000, 24, 0, false); }},
        {"the same, and idx1", 3, [] { return manyNames(200'000, 32, 1, true); }},
        {"large index and idx1", 3, [] { return manyNames(100, 5'800'000, 700'000, true); }},
        {"names of nothing", 7, [] { return manyNames(350'000, 8, 0, false); }},
    };
    for (const auto& [name, mostTimes, make] : shapes) {
        const Bytes bytes = make();
        AviReader reader;
        const Cost cost = costOf(bytes, reader);
        EXPECT_TRUE(cost.usable) << name;
        EXPECT_LE(cost.peak, 64 * kMebibyte + 24 * bytes.size()) << name;
        EXPECT_LE(cost.peak, kMebibyte + mostTimes * bytes.size()) << name;
        std::printf("    %-34s %5.1f x file at the peak, %5.1f x afterwards\n", name,
                    static_cast<double>(cost.peak) / static_cast<double>(bytes.size()),
                    static_cast<double>(cost.retained) / static_cast<double>(bytes.size()));
    }
}

TEST(HostileMemory, ClaimsCostNothingInASmallFile) {
    for (const char* const id : {"strf", "indx", "idx1"}) {
        RiffBuilder riff;
        openHeaders(riff);
        riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids"));
        if (std::string_view(id) != "strf") {
            riff.chunk("strf", Bytes(40));
        }
        if (std::string_view(id) == "idx1") {
            riff.end().end();
        }
        riff.begin(id).endWithSize(0x7FFFFFF0);
        const Bytes bytes = riff.take();
        AviReader reader;
        const Cost cost = costOf(bytes, reader);
        EXPECT_TRUE(cost.usable) << id;
        EXPECT_LE(cost.peak, kMebibyte) << id;
    }
}

TEST(HostileMemory, FrameOfAnyClaimedSizeCostsNothing) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1)).addFilledChunk(0, 100, 1);
    Bytes bytes = avi.build();
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[avi.idx1Offset() + 8 + 12 + i] = 0xFF;
    }
    test::MemoryFile file(bytes);
    AviReader reader;
    ASSERT_TRUE(reader.parse(file, false));
    ASSERT_EQ(reader.streams.at(0)->entries().at(0).size, 0xFFFFFFFFU);
    FrameChunk chunk;
    test::startCounting();
    EXPECT_EQ(readFrameChunk(file, *reader.streams[0], 0, 1, chunk).outcome, FrameOutcome::kFailed);
    EXPECT_LE(test::counted().peak, 4096U);
}

TEST(SteadyState, ReadingFramesAllocatesNothing) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1));
    for (std::uint32_t i = 0; i < 50; ++i) {
        avi.addFilledChunk(0, 1000 - i, 1).addFilledChunk(0, 0, 0);
    }
    const Bytes bytes = avi.build();
    test::MemoryFile file(bytes);
    AviReader reader;
    ASSERT_TRUE(reader.parse(file, false));
    FrameChunk chunk;
    ASSERT_EQ(readFrameChunk(file, *reader.streams.at(0), 0, 100, chunk).outcome, FrameOutcome::kRead);
    test::startCounting();
    for (std::uint64_t i = 0; i < 100; ++i) {
        ASSERT_EQ(readFrameChunk(file, *reader.streams[0], i, 100, chunk).outcome, FrameOutcome::kRead);
    }
    EXPECT_EQ(test::counted().calls, 0U);
}

// No memory left.

// What a parse that ran out of memory somewhere may still say: nothing but parts of the truth.
void expectPartOf(const test::PlainAvi& found, const test::PlainAvi& whole, const std::string& what) {
    for (const test::PlainStream& stream : found.streams) {
        const test::PlainStream& expected = whole.streams.at(stream.ordinal);
        EXPECT_EQ(stream.header, expected.header) << what;
        EXPECT_EQ(stream.format, expected.format) << what;
        if (stream.hasOpenDmlIndex) {
            EXPECT_EQ(stream.openDmlEntries, expected.openDmlEntries) << what;
        }
        if (!stream.legacyEntries.empty() && found.streams.size() == whole.streams.size()) {
            EXPECT_EQ(stream.legacyEntries, expected.legacyEntries) << what;
        }
    }
}

TEST(NoMemory, EachAllocationFailingEndsInAReadFailureNotInAnEscape) {
    AviBuilder avi = test::smallClip(20);
    avi.addFilledChunk(0, 0, 0).openDml(OpenDml::kSuperIndex).chunksPerForm(16).entriesPerStandardIndex(3);
    const Bytes bytes = avi.build();
    const test::PlainAvi whole = test::parsePlainly(bytes);
    for (const bool fromThere : {false, true}) {
        bool reachedTheEnd = false;
        for (std::int64_t number = 0; number < 2000 && !reachedTheEnd; ++number) {
            const std::string what = "allocation " + std::to_string(number) + (fromThere ? " and later" : "");
            test::MemoryFile file(bytes);
            AviReader reader;
            bool usable = false;
            test::startCounting();
            test::failAllocation(number, fromThere);
            EXPECT_NO_THROW(usable = reader.parse(file, false)) << what;
            const std::uint64_t calls = test::counted().calls;
            test::failAllocation(-1, false);
            reachedTheEnd = calls <= static_cast<std::uint64_t>(number);
            const test::PlainAvi found = test::asPlain(reader, usable);
            expectPartOf(found, whole, what);
            if (reachedTheEnd) {
                EXPECT_EQ(test::firstDifference(whole, found), "none") << what;
            }
            // The reader is as good as new afterwards.
            file.seek(0);
            usable = reader.parse(file, false);
            EXPECT_EQ(test::firstDifference(whole, test::asPlain(reader, usable)), "none") << what;
        }
        EXPECT_TRUE(reachedTheEnd);
    }
}

TEST(NoMemory, LargeFormatIsAReadFailure) {
    RiffBuilder riff;
    openHeaders(riff);
    riff.beginList("LIST", "strl")
        .chunk("strh", test::streamHeader("vids"))
        .chunk("strf", Bytes(200'000))
        .end();
    const Bytes bytes = riff.take();
    test::MemoryFile file(bytes);
    AviReader reader;
    test::startCounting();
    test::failAllocationsFrom(150'000);
    EXPECT_TRUE(reader.parse(file, false));
    test::failAllocationsFrom(0);
    EXPECT_EQ(reader.errorText(), "stream[0]: strf data read error\n");
}

TEST(NoMemory, LargeFrameIsAFailedReadAndTheNextOneIsServed) {
    AviBuilder avi;
    avi.addStream(test::videoStream("O8Y2", 16, 8, 25, 1));
    for (const std::uint32_t size : {200'000U, 100U}) {
        avi.addFilledChunk(0, size, 7);
    }
    test::MemoryFile file(avi.build());
    AviReader reader;
    ASSERT_TRUE(reader.parse(file, false));
    FrameChunk chunk;
    const AviStream& stream = *reader.streams.at(0);
    test::startCounting();
    test::failAllocationsFrom(150'000);
    const FrameChunkRead large = readFrameChunk(file, stream, 0, 2, chunk);
    EXPECT_EQ(large.outcome, FrameOutcome::kFailed);
    EXPECT_EQ(readFrameChunk(file, stream, 1, 2, chunk).outcome, FrameOutcome::kRead);
    test::failAllocationsFrom(0);
    EXPECT_EQ(large.failure, std::bad_alloc().what());
    EXPECT_EQ(readFrameChunk(file, stream, 0, 2, chunk).outcome, FrameOutcome::kRead);
}

TEST(NoMemory, LargeListIsAReadFailure) {
    AviBuilder avi = test::smallClip(0);
    for (int i = 0; i < 20'000; ++i) {
        avi.addFilledChunk(i % 10 == 0 ? 0 : 1, 2, 1);
    }
    const Bytes bytes = avi.openDml(OpenDml::kSuperIndex).build();
    test::MemoryFile file(bytes);
    AviReader reader;
    test::startCounting();
    // The audio stream's 18,000 entries need more than one segment of blocks; buffers and windows are
    // smaller.
    test::failAllocationsFrom(66'000);
    EXPECT_TRUE(reader.parse(file, false));
    test::failAllocationsFrom(0);
    ASSERT_EQ(reader.streams.size(), 2U);
    EXPECT_TRUE(reader.streams[0]->hasOpenDmlIndex);
    EXPECT_EQ(reader.streams[0]->entries().size(), 2000U);
    EXPECT_FALSE(reader.streams[1]->hasOpenDmlIndex);
    EXPECT_TRUE(reader.streams[1]->entries().empty());
    const AviSuperIndexEntry entry = reader.streams[1]->superIndex.at(0);
    EXPECT_EQ(reader.errorText(), "readIndex: stream[1], pos: " + std::to_string(entry.qwOffset + 8) +
                                      ", size: " + std::to_string(entry.dwSize - 8) +
                                      ": failed to read index data\n");
}

// Memory that was short for a moment only.
TEST(NoMemory, Idx1TakesOverWhereTheOpenDmlListFoundNone) {
    AviBuilder avi = test::smallClip(0);
    for (int i = 0; i < 20'000; ++i) {
        avi.addFilledChunk(i % 10 == 0 ? 0 : 1, 2, 1);
    }
    const Bytes bytes = avi.openDml(OpenDml::kSuperIndex).build();
    const test::PlainAvi whole = test::parsePlainly(bytes);
    int seen = 0;
    for (std::int64_t number = 0; number < 80; ++number) {
        test::MemoryFile file(bytes);
        AviReader reader;
        test::startCounting();
        test::failAllocation(number, false);
        const bool usable = reader.parse(file, false);
        test::failAllocation(-1, false);
        if (reader.errorText().find("readIndex: stream[1]") == std::string::npos) {
            continue;
        }
        ASSERT_TRUE(usable);
        ASSERT_EQ(reader.streams.size(), 2U);
        EXPECT_FALSE(reader.streams[1]->hasOpenDmlIndex);
        ++seen;
        EXPECT_TRUE(test::asPlain(reader, true).streams[1].legacyEntries == whole.streams[1].legacyEntries)
            << number;
    }
    EXPECT_GT(seen, 4);
}

// A part of a list of ordinary and of wide blocks, some of which hold two parts.
template <typename Builder>
void addPart(Builder& builder, std::uint64_t part) {
    const std::uint64_t base = part / 4 % 3 * 0x2'0000'0000;
    const AviStdIndexEntry given[] = {{1, 10}, {20, 30 | kStdIndexDeltaFrame}, {50, 0}};
    for (int i = 0; i < 30; ++i) {
        builder.add(base, given);
    }
    for (std::uint32_t i = 0; i < 30; ++i) {
        builder.add(base, i * 30, part % 5 == 0 ? 0x8000'0000U + i : i, true);
    }
}

TEST(NoMemory, EachAllocationOfAListFailingLeavesWhatWasListedBefore) {
    constexpr std::uint64_t kParts = 90;
    std::uint64_t parts = 0;
    for (std::int64_t number = 0; parts < kParts; ++number) {
        ASSERT_LT(number, 1000);
        ChunkListBuilder builder;
        ChunkListBuilder::Mark mark = builder.mark();
        test::startCounting();
        test::failAllocation(number, false);
        try {
            for (parts = 0; parts < kParts; ++parts) {
                mark = builder.mark();
                addPart(builder, parts);
            }
        } catch (const std::bad_alloc&) {
            builder.backTo(mark);
        }
        test::failAllocation(-1, false);
        PlainChunkListBuilder plain;
        for (std::uint64_t part = 0; part < parts; ++part) {
            addPart(plain, part);
        }
        // It goes on from there, and there may be no memory for the smaller copy at the end.
        builder.add(5, 6, 7, true);
        plain.add(5, 6, 7, true);
        test::failAllocation(0, true);
        const ChunkList list = builder.finish();
        test::failAllocation(-1, false);
        ASSERT_EQ(test::listDifference(plain.finish(), list, 50), "") << number;
    }
}

}  // namespace
}  // namespace orvantis
