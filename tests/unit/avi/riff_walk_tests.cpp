// The chunk-tree walk: what it collects, where it stops, and that no file makes it stand still or run wild.
#include "avi/riff_walk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "tests/support/avi_builder/riff_builder.h"
#include "tests/support/memory_file.h"

namespace orvantis {
namespace {

using test::Bytes;
using test::RiffBuilder;

constexpr std::array kAviLists = {riffCode("AVI "), riffCode("hdrl"), riffCode("strl"), riffCode("odml")};
constexpr std::array kAviStop = {riffCode("AVI ")};

struct Walked {
    bool sound = false;
    std::vector<RiffChunk> chunks;
    std::uint64_t reads = 0;
};

Walked walkAll(const Bytes& bytes, std::span<const std::uint32_t> descendTypes = kAviLists,
               std::span<const std::uint32_t> stopKeys = kAviStop) {
    test::MemoryFile file(bytes);
    const auto size = static_cast<std::uint64_t>(file.size());
    FileWindow window;
    window.attach(file, size);
    Walked result;
    result.sound = walk(window, {0, size}, {descendTypes, stopKeys}, result.chunks);
    result.reads = file.counts().reads;
    return result;
}

std::size_t countAll(const std::vector<RiffChunk>& list) {
    std::size_t count = list.size();
    for (const RiffChunk& chunk : list) {
        count += countAll(chunk.children);
    }
    return count;
}

std::size_t depthOf(const std::vector<RiffChunk>& list) {
    std::size_t deepest = 0;
    for (const RiffChunk& chunk : list) {
        deepest = std::max(deepest, depthOf(chunk.children));
    }
    return list.empty() ? 0 : deepest + 1;
}

TEST(RiffWalk, KeepsHeadersAsStoredAndWhereTheyLie) {
    RiffBuilder riff;
    riff.begin("JUNK").fill(4).end().beginList("LIST", "hdrl").begin("avih").fill(6).end().end();
    const Walked walked = walkAll(riff.take());
    ASSERT_TRUE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 2U);

    EXPECT_EQ(walked.chunks[0].id, riffCode("JUNK"));
    EXPECT_EQ(walked.chunks[0].type, 0U);
    EXPECT_EQ(walked.chunks[0].size, 4U);
    EXPECT_EQ(walked.chunks[0].offset, 0U);
    EXPECT_EQ(walked.chunks[0].dataSize(), 4U);
    EXPECT_EQ(walked.chunks[0].dataPosition(), 8U);

    const RiffChunk& list = walked.chunks[1];
    EXPECT_EQ(list.id, riffCode("LIST"));
    EXPECT_EQ(list.type, riffCode("hdrl"));
    EXPECT_EQ(list.size, 4U + 8U + 6U);
    EXPECT_EQ(list.offset, 12U);
    EXPECT_EQ(list.dataSize(), 8U + 6U);
    EXPECT_EQ(list.dataPosition(), 24U);

    ASSERT_EQ(list.children.size(), 1U);
    EXPECT_EQ(list.children[0].id, riffCode("avih"));
    EXPECT_EQ(list.children[0].offset, 24U);
}

TEST(RiffWalk, ChunkOfOddSizeIsFollowedByAPadByte) {
    RiffBuilder riff;
    riff.begin("odd1").fill(5, 0xEE).end().begin("next").fill(2).end();
    const Walked walked = walkAll(riff.take());
    ASSERT_TRUE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 2U);
    EXPECT_EQ(walked.chunks[0].size, 5U);
    EXPECT_EQ(walked.chunks[1].id, riffCode("next"));
    EXPECT_EQ(walked.chunks[1].offset, 14U);
}

TEST(RiffWalk, MissingPadByteAtTheEndOfTheFileDoesNoHarm) {
    Bytes bytes = RiffBuilder().begin("odd1").fill(5).end().take();
    bytes.pop_back();
    const Walked walked = walkAll(bytes);
    EXPECT_TRUE(walked.sound);
    EXPECT_EQ(walked.chunks.size(), 1U);
}

TEST(RiffWalk, EmptyFileHasNoChunksAndIsSound) {
    const Walked walked = walkAll({});
    EXPECT_TRUE(walked.sound);
    EXPECT_TRUE(walked.chunks.empty());
}

TEST(RiffWalk, GoesDownOnlyIntoTheListsNamed) {
    RiffBuilder riff;
    riff.beginList("LIST", "movi").begin("00dc").fill(2).end().end();
    riff.beginList("LIST", "strl").begin("strh").fill(2).end().end();
    const Walked walked = walkAll(riff.take());
    ASSERT_TRUE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 2U);
    EXPECT_TRUE(walked.chunks[0].children.empty());
    EXPECT_EQ(walked.chunks[1].children.size(), 1U);
}

TEST(RiffWalk, GoesDownIntoEveryListWhenNoneIsNamed) {
    RiffBuilder riff;
    riff.beginList("LIST", "movi").beginList("LIST", "rec ").begin("00dc").fill(2).end().end().end();
    const Walked walked = walkAll(riff.take(), {}, {});
    ASSERT_TRUE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 1U);
    ASSERT_EQ(walked.chunks[0].children.size(), 1U);
    EXPECT_EQ(walked.chunks[0].children[0].children.size(), 1U);
}

TEST(RiffWalk, StopsBehindTheFirstChunkWithAStopKey) {
    // A list counts by its type, a chunk by its id.
    const std::array stop = {riffCode("stop")};
    RiffBuilder lists;
    lists.begin("aaaa").end().beginList("LIST", "stop").end().begin("bbbb").end();
    EXPECT_EQ(walkAll(lists.take(), kAviLists, stop).chunks.size(), 2U);

    RiffBuilder chunks;
    chunks.begin("aaaa").end().begin("stop").end().begin("bbbb").end();
    EXPECT_EQ(walkAll(chunks.take(), kAviLists, stop).chunks.size(), 2U);

    const std::array list = {riffCode("LIST")};
    RiffBuilder byId;
    byId.beginList("LIST", "hdrl").end().begin("bbbb").end();
    EXPECT_EQ(walkAll(byId.take(), kAviLists, list).chunks.size(), 2U);
}

TEST(RiffWalk, StopKeyInsideAListEndsThatListOnly) {
    RiffBuilder riff;
    riff.beginList("LIST", "hdrl").begin("AVI ").end().begin("lost").end().end().begin("next").end();
    const Walked walked = walkAll(riff.take());
    EXPECT_TRUE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 2U);
    EXPECT_EQ(walked.chunks[0].children.size(), 1U);
    EXPECT_EQ(walked.chunks[1].id, riffCode("next"));
}

TEST(RiffWalk, FormBehindTheFirstOneIsNotWalked) {
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").begin("idx1").end().end();
    riff.beginList("RIFF", "AVIX").beginList("LIST", "movi").end().end();
    const Walked walked = walkAll(riff.take());
    EXPECT_TRUE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 1U);
    EXPECT_EQ(walked.chunks[0].type, riffCode("AVI "));
}

TEST(RiffWalk, HeaderCutByTheEndOfTheFileIsDamageAndKeepsWhatCameBefore) {
    for (std::size_t kept = 1; kept < 8; ++kept) {
        Bytes bytes = RiffBuilder().begin("good").fill(2).end().begin("cut ").end().take();
        bytes.resize(10 + kept);
        const Walked walked = walkAll(bytes);
        EXPECT_FALSE(walked.sound) << kept;
        EXPECT_EQ(walked.chunks.size(), 1U) << kept;
    }
}

TEST(RiffWalk, ListCutBeforeTheEndOfItsTypeIsNotKept) {
    for (std::size_t kept = 8; kept < 12; ++kept) {
        Bytes bytes = RiffBuilder().beginList("LIST", "hdrl").end().take();
        bytes.resize(kept);
        const Walked walked = walkAll(bytes);
        EXPECT_FALSE(walked.sound) << kept;
        EXPECT_TRUE(walked.chunks.empty()) << kept;
    }
}

TEST(RiffWalk, WalkGoesOnBehindADamagedList) {
    // The padded length of strh is 0: the inner walk ends there.
    RiffBuilder riff;
    riff.beginList("LIST", "strl").begin("strh").endWithSize(0xFFFFFFF7).fill(8).end();
    riff.begin("next").end();
    const Walked walked = walkAll(riff.take());
    EXPECT_FALSE(walked.sound);
    ASSERT_EQ(walked.chunks.size(), 2U);
    EXPECT_EQ(walked.chunks[0].children.size(), 1U);
    EXPECT_EQ(walked.chunks[1].id, riffCode("next"));
}

TEST(RiffWalk, ListTooSmallForItsTypeHasNoChildren) {
    for (std::uint32_t size = 0; size <= 4; ++size) {
        RiffBuilder riff;
        riff.beginList("LIST", "hdrl").endWithSize(size).begin("next").end();
        const Walked walked = walkAll(riff.take());
        ASSERT_FALSE(walked.chunks.empty()) << size;
        EXPECT_TRUE(walked.chunks[0].children.empty()) << size;
        EXPECT_EQ(walked.chunks[0].dataSize(), 0U) << size;
    }
}

// 8 bytes of header and the pad byte carry these sizes over the end of 32 bits to a length of 0.
TEST(RiffWalk, SizeWhosePaddedLengthIsZeroEndsTheWalk) {
    for (const std::uint32_t size : {0xFFFFFFF7U, 0xFFFFFFF8U}) {
        RiffBuilder riff;
        riff.begin("good").end().begin("bad ").endWithSize(size).begin("next").end();
        const Walked walked = walkAll(riff.take());
        EXPECT_FALSE(walked.sound) << size;
        ASSERT_EQ(walked.chunks.size(), 2U) << size;
        EXPECT_EQ(walked.chunks[1].size, size);
    }
}

TEST(RiffWalk, SizesThatWrapToAFewBytesMakeSmallSteps) {
    const std::pair<std::uint32_t, std::uint64_t> cases[] = {
        {0xFFFFFFF9, 2}, {0xFFFFFFFA, 2}, {0xFFFFFFFB, 4}, {0xFFFFFFFC, 4},
        {0xFFFFFFFD, 6}, {0xFFFFFFFE, 6}, {0xFFFFFFFF, 8}};
    for (const auto& [size, step] : cases) {
        RiffBuilder riff;
        riff.begin("wrap").endWithSize(size).fill(8);
        const Walked walked = walkAll(riff.take());
        ASSERT_GE(walked.chunks.size(), 2U) << size;
        EXPECT_EQ(walked.chunks[1].offset, step) << size;
    }
}

TEST(RiffWalk, NestingBelowTheLimitIsDamageAndNotEntered) {
    RiffBuilder riff;
    for (int i = 0; i < 500; ++i) {
        riff.beginList("LIST", "strl");
    }
    const Walked walked = walkAll(riff.take());
    EXPECT_FALSE(walked.sound);
    // The lists of level 64 are kept, their children are not.
    EXPECT_EQ(depthOf(walked.chunks), 65U);
}

TEST(RiffWalk, NestingUpToTheLimitIsSound) {
    RiffBuilder riff;
    for (int i = 0; i < kMaxListDepth; ++i) {
        riff.beginList("LIST", "strl");
    }
    riff.begin("last").end();
    const Walked walked = walkAll(riff.take());
    EXPECT_TRUE(walked.sound);
    EXPECT_EQ(depthOf(walked.chunks), 65U);
}

// 20 bytes that are read in two ways. A list that claims 4 GiB has a padded length of 8, so that its parent
// goes on 8 bytes further, in the list's own type: the chunk "strl" of 4 bytes. The list's first child lies
// behind the type: the chunk 4 of no bytes. Both ways lead to the next 20 bytes, so n of them are walked 2 to
// the power of n times.
RiffBuilder& addDoubleList(RiffBuilder& riff) {
    return riff.code("LIST").u32(0xFFFFFFFF).code("strl").u32(4).u32(0);
}

TEST(RiffWalk, OverlappingListsEndTheWalkAtTheChunkLimit) {
    RiffBuilder riff;
    for (int i = 0; i < 60; ++i) {
        addDoubleList(riff);
    }
    const Bytes bytes = riff.take();
    const Walked walked = walkAll(bytes);
    EXPECT_FALSE(walked.sound);
    EXPECT_EQ(countAll(walked.chunks), bytes.size() / 8 + 1024);
}

TEST(RiffWalk, FileFullOfSmallestChunksIsSound) {
    const Bytes bytes(8 * 10000);  // id 0, size 0
    const Walked walked = walkAll(bytes);
    EXPECT_TRUE(walked.sound);
    EXPECT_EQ(walked.chunks.size(), 10000U);
}

TEST(RiffWalk, NoFileGivesMoreThanFourMillionChunks) {
    const Bytes bytes(8 * (kMaxChunks + 5));
    const Walked walked = walkAll(bytes);
    EXPECT_FALSE(walked.sound);
    EXPECT_EQ(walked.chunks.size(), 4'194'304U);
}

// Lists over one another can send the walk from one end of the file to the other for each chunk. A way
// forward needs no more than one window after the other.
TEST(RiffWalk, JumpingToAndFroIsEndedAfterSomeThousandReads) {
    constexpr std::uint32_t kLists = 20000;
    constexpr std::uint32_t kFar = 1'000'000;
    RiffBuilder riff;
    riff.begin("fill").fill(FileWindow::kWindowBytes).end();  // what follows is not in the first window
    for (std::uint32_t i = 0; i < kLists; ++i) {
        // As addDoubleList(), but the first way leads to kFar, where it ends.
        riff.code("LIST").u32(0xFFFFFFFF).code("strl").u32(4);
        riff.u32(static_cast<std::uint32_t>(kFar - (riff.position() + 4)));
    }
    riff.fill(kFar - riff.position()).code("stop").u32(0xFFFFFFF7).fill(1'000'000);
    const Bytes bytes = riff.take();
    const Walked walked = walkAll(bytes);
    EXPECT_FALSE(walked.sound);
    EXPECT_GT(countAll(walked.chunks), 1000U);
    EXPECT_LE(walked.reads, 2U * (bytes.size() / FileWindow::kWindowBytes) + 2048U);
}

TEST(RiffWalk, WindowIsReadOnceForManySmallChunks) {
    RiffBuilder riff;
    for (int i = 0; i < 1000; ++i) {
        riff.begin("smal").fill(8).end();
    }
    const Walked walked = walkAll(riff.take());
    EXPECT_TRUE(walked.sound);
    EXPECT_EQ(walked.chunks.size(), 1000U);
    EXPECT_EQ(walked.reads, 1U);
}

TEST(RiffWalk, HeaderAcrossTheWindowsEndIsReadWhole) {
    // The last header of the first window lies half inside, for each way to cut it.
    for (std::uint32_t cut = 1; cut < 12; ++cut) {
        RiffBuilder riff;
        const auto size = static_cast<std::uint32_t>(FileWindow::kWindowBytes - 8 - cut) / 2 * 2;
        riff.begin("fill").fill(size).end();
        riff.beginList("LIST", "hdrl").begin("avih").fill(2).end().end();
        const Walked walked = walkAll(riff.take());
        ASSERT_TRUE(walked.sound) << cut;
        ASSERT_EQ(walked.chunks.size(), 2U) << cut;
        EXPECT_EQ(walked.chunks[1].type, riffCode("hdrl")) << cut;
        ASSERT_EQ(walked.chunks[1].children.size(), 1U) << cut;
    }
}

}  // namespace
}  // namespace orvantis
