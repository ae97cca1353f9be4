// The compact chunk list against a vector of whole entries: whatever an index holds, both answer the same.
#include "avi/chunk_list.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <stdexcept>

#include "avi/chunk_list_builder.h"
#include "tests/support/thorough.h"
#include "tests/unit/avi/same_lists.h"

namespace orvantis {
namespace {

constexpr std::size_t kBlock = ChunkBlock::kChunks;
constexpr std::size_t kSegment = 128 * kBlock;
constexpr std::uint64_t kListGibibyte = std::uint64_t{1} << 30;

// Both lists, made by the same calls.
struct Pair {
    ChunkListBuilder builder;
    PlainChunkListBuilder plainBuilder;

    void add(std::uint64_t base, std::uint32_t offset, std::uint32_t size, bool keyFrame = true) {
        builder.add(base, offset, size, keyFrame);
        plainBuilder.add(base, offset, size, keyFrame);
    }
    void add(std::uint64_t base, const std::vector<AviStdIndexEntry>& entries) {
        builder.add(base, entries);
        plainBuilder.add(base, entries);
    }
    std::string difference(std::size_t lookupStep = 1) {
        return test::listDifference(plainBuilder.finish(), builder.finish(), lookupStep);
    }
};

std::vector<AviStdIndexEntry> entries(std::size_t count, std::uint32_t size, std::uint32_t stride) {
    std::vector<AviStdIndexEntry> result;
    for (std::size_t i = 0; i < count; ++i) {
        result.push_back({static_cast<std::uint32_t>(i) * stride, size});
    }
    return result;
}

TEST(ChunkList, IsEmptyAtFirst) {
    const ChunkList list;
    EXPECT_TRUE(list.empty());
    EXPECT_EQ(list.begin(), list.end());
    EXPECT_EQ(list.totalBytes(), 0U);
    EXPECT_EQ(list.findByPosition(0), list.end());
    EXPECT_THROW((void)list.at(0), std::out_of_range);
    EXPECT_EQ(Pair().difference(), "");
}

TEST(ChunkList, MovedFromListIsEmpty) {
    ChunkListBuilder builder;
    builder.add(0, 0, 5, true);
    ChunkList first = builder.finish();
    ChunkList second = std::move(first);
    EXPECT_EQ(second.size(), 1U);
    EXPECT_TRUE(first.empty());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
    first = std::move(second);
    EXPECT_EQ(first.size(), 1U);
    EXPECT_TRUE(second.empty());  // NOLINT(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
}

TEST(ChunkList, BuilderStartsAnewAfterAList) {
    ChunkListBuilder builder;
    for (int i = 0; i < 200; ++i) {
        builder.add(0, 0, 5, true);
    }
    (void)builder.finish();
    builder.add(1000, 1, 7, false);
    const ChunkList list = builder.finish();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_TRUE(test::sameEntry(list[0], IndexEntry{1001, 7, 0, 0, false}));
}

// One chunk fewer than a block and a segment hold, as many, and one more.
TEST(ChunkList, BordersOfBlocksAndSegments) {
    for (const std::size_t border : {std::size_t{0}, kBlock, 2 * kBlock, 4 * kBlock, 16 * kBlock, 64 * kBlock,
                                     kSegment, 2 * kSegment, 3 * kSegment}) {
        for (const std::size_t count : {border - 1, border, border + 1}) {
            if (count > 4 * kSegment) {
                continue;  // one fewer than none
            }
            Pair single;
            for (std::size_t i = 0; i < count; ++i) {
                single.add(5000, static_cast<std::uint32_t>(40 * i), static_cast<std::uint32_t>(i % 37),
                           i % 3 == 0);
            }
            EXPECT_EQ(single.difference(7), "") << count;
            Pair atOnce;
            atOnce.add(5000, entries(count, 30, 40));
            EXPECT_EQ(atOnce.difference(7), "") << count;
        }
    }
}

TEST(ChunkList, NumberBehindTheListThrows) {
    for (const std::size_t count : {std::size_t{1}, kBlock, kBlock + 1}) {
        ChunkListBuilder builder;
        builder.add(0, entries(count, 1, 1));
        const ChunkList list = builder.finish();
        EXPECT_EQ(list.at(count - 1).start, count - 1);
        EXPECT_THROW((void)list.at(count), std::out_of_range);
        EXPECT_THROW((void)list.at(~std::size_t{0}), std::out_of_range);
    }
}

TEST(ChunkList, SizesWithAllTheirBits) {
    for (std::size_t at = 0; at < 2 * kBlock; at += 9) {
        Pair pair;
        for (std::size_t i = 0; i < 2 * kBlock + 3; ++i) {
            pair.add(100, static_cast<std::uint32_t>(i), i == at ? 0x8000'0000U : 20, i % 2 == 0);
        }
        EXPECT_EQ(pair.difference(), "") << at;
    }
    Pair all;
    for (std::uint32_t i = 0; i < 300; ++i) {
        all.add(100, i, 0xFFFF'FFFFU - i, i % 5 != 0);
    }
    EXPECT_EQ(all.difference(), "");
}

// The sums within a block and over the list exceed 32 bits.
TEST(ChunkList, SumsBeyond32Bits) {
    Pair pair;
    pair.add(0, entries(1000, 0x7FFF'FFFF, 1));
    EXPECT_EQ(pair.difference(), "");
    Pair mixed;
    for (std::uint32_t i = 0; i < 500; ++i) {
        mixed.add(0, i, i % 70 == 0 ? 0xFFFF'FFFFU : i % 2);
    }
    EXPECT_EQ(mixed.difference(), "");
}

TEST(ChunkList, OffsetsThatCross4GiB) {
    // A capture with frames of 50 MiB, given as whole positions and as parts of 1 GiB.
    Pair absolute;
    for (std::uint64_t i = 0; i < 1000; ++i) {
        absolute.add(i * 50 * 1024 * 1024, 0, 50 * 1024 * 1024);
    }
    EXPECT_EQ(absolute.difference(), "");
    Pair parts;
    for (std::uint64_t part = 0; part < 40; ++part) {
        parts.add(part * kListGibibyte, entries(20, 50 * 1024 * 1024, 50 * 1024 * 1024));
    }
    EXPECT_EQ(parts.difference(), "");
    Pair large;
    for (std::uint64_t i = 0; i < 300; ++i) {
        large.add(i * 100 * 1024 * 1024, 0, 100 * 1024 * 1024);
    }
    EXPECT_EQ(large.difference(), "");
}

TEST(ChunkList, OffsetsThatGoBackwards) {
    Pair pair;
    for (std::uint64_t i = 0; i < 500; ++i) {
        pair.add((500 - i) * 1000, static_cast<std::uint32_t>(i), 900);
    }
    EXPECT_EQ(pair.difference(), "");
    Pair far;
    for (std::uint64_t i = 0; i < 500; ++i) {
        far.add((500 - i) * kListGibibyte, static_cast<std::uint32_t>(i), 900);
    }
    EXPECT_EQ(far.difference(), "");
}

TEST(ChunkList, OffsetsAtTheEdgeOfWhatABlockHolds) {
    for (const std::uint64_t spread : {0xFFFF'FFFEULL, 0xFFFF'FFFFULL, 0x1'0000'0000ULL, 0x1'0000'0001ULL}) {
        for (const bool backwards : {false, true}) {
            Pair pair;
            for (std::size_t i = 0; i < 3 * kBlock; ++i) {
                const bool high = (i % 10 == 9) != backwards;
                pair.add(high ? 5000 + spread : 5000, 0, static_cast<std::uint32_t>(i), i % 4 == 0);
            }
            EXPECT_EQ(pair.difference(), "") << spread << backwards;
        }
    }
}

TEST(ChunkList, OffsetsThatWrap) {
    Pair pair;
    pair.add(0xFFFF'FFFF'FFFF'FFF0, {{0x20, 1}, {0x8, 2}, {0x8, 2}});
    for (std::uint32_t i = 0; i < 100; ++i) {
        pair.add(~std::uint64_t{0} - 50, i, i);
    }
    pair.add(0xFFFF'FFFF'FFFF'FFF0, entries(200, 3, 1));
    EXPECT_EQ(pair.difference(), "");
}

// Indexes of a few chunks each share blocks.
TEST(ChunkList, ManyBasesInABlock) {
    for (const std::uint64_t step : {std::uint64_t{1000}, kListGibibyte, 5 * kListGibibyte}) {
        Pair pair;
        for (std::uint64_t part = 0; part < 200; ++part) {
            pair.add(part * step, entries(part % 7, static_cast<std::uint32_t>(part), 10));
        }
        EXPECT_EQ(pair.difference(), "") << step;
    }
}

TEST(ChunkList, DeltaFrames) {
    Pair pair;
    std::vector<AviStdIndexEntry> given = entries(300, 10, 20);
    for (std::size_t i = 0; i < given.size(); i += 3) {
        given[i].dwSize |= kStdIndexDeltaFrame;
    }
    pair.add(7, given);
    pair.add(100 * kListGibibyte, given);
    EXPECT_EQ(pair.difference(), "");
}

TEST(ChunkList, EmptyChunksByTheThousand) {
    Pair pair;
    for (std::uint32_t i = 0; i < 20'000; ++i) {
        pair.add(0, i, i % 5000 == 4999 ? 3 : 0);
    }
    EXPECT_EQ(pair.difference(), "");
    Pair all;
    all.add(0, entries(1000, 0, 1));
    EXPECT_EQ(all.difference(), "");
}

TEST(ChunkListBuilder, TakesBackWhatWasAdded) {
    std::mt19937 random(7);
    for (const std::uint64_t base : {std::uint64_t{500}, 40 * kListGibibyte}) {
        for (std::size_t kept = 0; kept < 3 * kBlock; kept += 13) {
            Pair pair;
            for (std::uint32_t i = 0; i < kept; ++i) {
                pair.add(500, i, i, i % 3 == 0);
            }
            const ChunkListBuilder::Mark mark = pair.builder.mark();
            const PlainChunkListBuilder::Mark plainMark = pair.plainBuilder.mark();
            // Wide, based elsewhere, and further than one segment.
            pair.add(base, entries(random() % (kSegment + 100), 9, 10));
            pair.add(base + 100 * kListGibibyte, 0, 0xFFFF'FFFF, false);
            pair.builder.backTo(mark);
            pair.plainBuilder.backTo(plainMark);
            for (std::uint32_t i = 0; i < 2 * kBlock; ++i) {
                pair.add(500, i, 2 * i, i % 2 == 0);
            }
            EXPECT_EQ(pair.difference(), "") << kept;
        }
    }
}

TEST(ChunkListBuilder, TakesBackEverything) {
    ChunkListBuilder builder;
    const ChunkListBuilder::Mark mark = builder.mark();
    builder.add(0, entries(1000, 1, 1));
    builder.backTo(mark);
    EXPECT_TRUE(builder.finish().empty());
}

// A generated list: regular for a while, then otherwise.
void generate(Pair& pair, std::mt19937_64& random) {
    const auto below = [&](std::uint64_t limit) { return random() % limit; };
    const std::size_t parts = 1 + below(6);
    std::uint64_t base = below(20 * kListGibibyte);
    std::uint64_t offset = 0;
    for (std::size_t part = 0; part < parts; ++part) {
        const std::size_t count = below(8) == 0 ? below(300) : below(30);
        const std::uint64_t kind = below(10);
        if (below(3) == 0) {
            base = below(4) == 0 ? random() : base + below(6 * kListGibibyte);
        }
        if (kind < 4) {
            std::vector<AviStdIndexEntry> given;
            for (std::size_t i = 0; i < count; ++i) {
                const auto size = static_cast<std::uint32_t>(kind == 3 ? random() : below(3000));
                given.push_back({static_cast<std::uint32_t>(kind == 2 ? random() : offset), size});
                offset += size & ~kStdIndexDeltaFrame;
            }
            pair.add(base, given);
            continue;
        }
        for (std::size_t i = 0; i < count; ++i) {
            std::uint32_t size = static_cast<std::uint32_t>(below(5000));
            if (kind == 5 || (kind == 6 && below(4) != 0)) {
                size = 0;
            }
            if (kind == 7 && below(20) == 0) {
                size = static_cast<std::uint32_t>(random());
            }
            if (kind == 8) {
                base = random();
            }
            pair.add(base, static_cast<std::uint32_t>(offset), size, below(3) != 0);
            offset += size;
        }
    }
}

TEST(ChunkList, GeneratedLists) {
    std::mt19937_64 random(20'240'817);
    std::size_t wide = 0;
    const int lists = test::howManyOfSample(1'500, 10'000);
    for (int number = 0; number < lists; ++number) {
        Pair pair;
        generate(pair, random);
        const ChunkList list = pair.builder.finish();
        const PlainChunkList plain = pair.plainBuilder.finish();
        ASSERT_EQ(test::listDifference(plain, list, 5), "") << number;
        for (int i = 0; i < 3 && plain.totalBytes() != 0; ++i) {
            ASSERT_EQ(test::lookupDifference(plain, list, random() % plain.totalBytes()), "") << number;
        }
        wide += plain.size() > 1 && plain[1].offset - plain[0].offset > 0x1'0000'0000U ? 1U : 0U;
    }
    EXPECT_GT(wide, static_cast<std::size_t>(lists) / 100) << "far too regular to show anything";
}

}  // namespace
}  // namespace orvantis
