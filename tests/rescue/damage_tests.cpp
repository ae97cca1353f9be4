// What a search makes of damage other than a cut.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/rescue/clip_truth.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/thorough.h"
#include "tool/rescue/index_check.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/new_clip.h"
#include "tool/rescue/rescue_words.h"

namespace simhost::tool {
namespace {

using orvantis::test::AviBuilder;
using orvantis::test::OpenDml;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Damaged {
    AviBuilder avi;
    TestBytes bytes;

    explicit Damaged(std::uint32_t chunks = 10, std::uint32_t growth = 0) {
        avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1))
            .addStream(orvantis::test::pcmStream(1, 8000, 8));
        for (std::uint32_t i = 0; i < chunks; ++i) {
            avi.addFilledChunk(i % 2, 120 + growth * i, static_cast<std::uint8_t>(i + 1));
        }
        bytes = avi.build();
    }
    std::ptrdiff_t chunk(std::size_t i) const {
        return static_cast<std::ptrdiff_t>(avi.placements()[i].offset - 8);
    }
    void set32(std::ptrdiff_t at, std::uint32_t value) {
        for (int i = 0; i < 4; ++i) {
            bytes[static_cast<std::size_t>(at + i)] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }
    void fill(std::ptrdiff_t at, std::ptrdiff_t count, std::uint8_t value) {
        std::fill_n(bytes.begin() + at, count, value);
    }

    ClipScan scan() {
        MemoryStorage file(bytes);
        return scanClip(file);
    }
    /// Which of the chunks are found, by what they are filled with.
    std::vector<int> found() {
        std::vector<int> out;
        const ClipScan result = scan();
        for (std::size_t i = 0; i < result.chunks.size(); ++i) {
            out.push_back(bytes[static_cast<std::size_t>(result.chunks[i].offset())] - 1);
        }
        return out;
    }
};

// A file that still tells its old size when it is asked.
class ShortenedStorage final : public MemoryStorage {
 public:
    ShortenedStorage(std::uint64_t oldSize, TestBytes& bytes) : MemoryStorage(bytes), m_oldSize(oldSize) {}
    std::uint64_t size() override { return m_oldSize; }

 private:
    std::uint64_t m_oldSize;
};

std::vector<Stretch::Kind> kindsOf(const ClipScan& scan) {
    std::vector<Stretch::Kind> out;
    for (const Stretch& stretch : scan.damaged) {
        out.push_back(stretch.kind);
    }
    return out;
}

TEST(RescueDamage, GarbageCostsTheChunksThatItTouchesAndTheOneBefore) {
    Damaged clip;
    clip.fill(clip.chunk(4) + 50, 200, 0xEE);  // in chunk 4, all of the header of 5, up to the middle of it
    EXPECT_THAT(clip.found(), ElementsAre(0, 1, 2, 3, 6, 7, 8, 9));
    const ClipScan scan = clip.scan();
    ASSERT_THAT(kindsOf(scan), ElementsAre(Stretch::Kind::kDamagedChunk));
    EXPECT_EQ(scan.damaged[0].place,
              (Extent{static_cast<std::uint64_t>(clip.chunk(4)), static_cast<std::uint64_t>(clip.chunk(6))}));
    EXPECT_EQ(stretchText(scan.damaged[0]), "a chunk of stream 0 ('00dc') with damage in or behind it");
}

TEST(RescueDamage, BytesThatAreLostOrTooManyAreFoundPastAtAnyPlace) {
    for (const int by : {-3, -1, 1, 5}) {
        Damaged clip;
        const auto place = clip.bytes.begin() + clip.chunk(4) + 60;
        if (by < 0) {
            clip.bytes.erase(place, place - by);
        } else {
            clip.bytes.insert(place, static_cast<std::size_t>(by), std::uint8_t{0xEE});
        }
        EXPECT_THAT(clip.found(), ElementsAre(0, 1, 2, 3, 5, 6, 7, 8, 9)) << by;
    }
}

TEST(RescueDamage, AWrongSizeCostsItsChunk) {
    for (const std::uint32_t size : {0U, 7U, 118U, 122U, 500U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        Damaged clip;
        clip.set32(clip.chunk(4) + 4, size);
        const std::vector<int> found = clip.found();
        EXPECT_EQ(std::count(found.begin(), found.end(), 4), 0) << size;
        EXPECT_TRUE(std::find(found.begin(), found.end(), 5) != found.end()) << size;
        EXPECT_GE(found.size(), 8U) << size;
    }
}

TEST(RescueDamage, ListsOfAnySizeAreEntered) {
    for (const std::uint32_t size : {0U, 1U, 100U, 0xFFFFFFFFU}) {
        Damaged clip;
        clip.set32(4, size);
        clip.set32(static_cast<std::ptrdiff_t>(clip.avi.moviOffset()) + 4, size);
        EXPECT_EQ(clip.found().size(), 10U) << size;
        EXPECT_THAT(clip.scan().damaged, IsEmpty()) << size;
        clip.set32(16, size);  // hdrl
        EXPECT_EQ(clip.found().size(), 10U) << size;
    }
}

TEST(RescueDamage, ATailOfZerosIsOne) {
    Damaged clip;
    clip.bytes.resize(static_cast<std::size_t>(clip.chunk(7)));
    clip.bytes.resize(clip.bytes.size() + 3'000'000);
    EXPECT_THAT(clip.found(), ElementsAre(0, 1, 2, 3, 4, 5, 6));
    EXPECT_THAT(kindsOf(clip.scan()), ElementsAre(Stretch::Kind::kZeros));
}

// The recorder wrote a header, and a part of the data did not come to the disk.
TEST(RescueDamage, AChunkThatEndsInTheTailOfZerosIsNotWhole) {
    Damaged clip;
    clip.bytes.resize(static_cast<std::size_t>(clip.chunk(7) + 40));
    clip.bytes.resize(clip.bytes.size() + 5'000);
    EXPECT_THAT(clip.found(), ElementsAre(0, 1, 2, 3, 4, 5, 6));
    EXPECT_THAT(kindsOf(clip.scan()), ElementsAre(Stretch::Kind::kDamagedChunk, Stretch::Kind::kZeros));
}

TEST(RescueDamage, AStrangeChunkAmongTheDataIsNamedAndPassed) {
    Damaged clip;
    const std::uint8_t strange[] = {'b', 'e', 'x', 't', 6, 0, 0, 0, 1, 2, 3, 4, 5, 6};
    clip.bytes.insert(clip.bytes.begin() + clip.chunk(4), std::begin(strange), std::end(strange));
    EXPECT_EQ(clip.found().size(), 10U);
    const ClipScan scan = clip.scan();
    ASSERT_THAT(kindsOf(scan), ElementsAre(Stretch::Kind::kStrangeChunk));
    EXPECT_EQ(scan.damaged[0].place.bytes(), 14U);
    EXPECT_EQ(stretchText(scan.damaged[0]), "a chunk of no stream ('bext')");
}

TEST(RescueDamage, ADamagedHeaderOfTheDataListHidesNothing) {
    for (int at = 0; at < 12; ++at) {
        for (const char letter : {'x', '\0'}) {
            Damaged clip;
            clip.bytes[clip.avi.moviOffset() + static_cast<std::size_t>(at)] =
                static_cast<std::uint8_t>(letter);
            EXPECT_EQ(clip.found().size(), 10U) << at;
        }
    }
}

// A list that begins a second time, or the only one of two whose beginning is sound. The indexes count from
// it, so nothing in front of it can be named by them where it lies.
TEST(RescueDamage, DataInFrontOfItsListIsFoundAndComesIntoANewFile) {
    for (const std::size_t garbage : {0U, 20U}) {
        Damaged clip;
        const auto list = static_cast<std::ptrdiff_t>(clip.avi.moviOffset());
        const TestBytes chunk(clip.bytes.begin() + clip.chunk(3), clip.bytes.begin() + clip.chunk(4));
        clip.bytes.insert(clip.bytes.begin() + list, chunk.begin(), chunk.end());
        clip.bytes.insert(clip.bytes.begin() + list, garbage, std::uint8_t{0xEE});
        EXPECT_THAT(clip.found(), ElementsAre(3, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9)) << garbage;
        MemoryStorage file(clip.bytes);
        ClipScan scan = scanClip(file);
        TestBytes out;
        MemoryStorage target(out);
        writeNewClip(file, scan, layOutNewClip(scan), target);
        EXPECT_EQ(dataOf(target, indexedChunks(target), 2), dataOf(file, foundChunks(scan), 2)) << garbage;
        const IndexCheck check = checkIndexes(file, scan);
        try {
            (void)planMending(file, scan, check);
            ADD_FAILURE() << garbage;
        } catch (const ToolError& error) {
            EXPECT_EQ(error.kind(), "not-in-place") << garbage;
        }
    }
}

TEST(RescueDamage, ChunksWithoutPaddingAreFound) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    for (int i = 0; i < 6; ++i) {
        avi.addFilledChunk(0, 121, 1);
    }
    TestBytes bytes = avi.idx1(false).build();
    for (int i = 5; i >= 0; --i) {
        bytes.erase(bytes.begin() +
                    static_cast<std::ptrdiff_t>(avi.placements()[static_cast<std::size_t>(i)].offset + 121));
    }
    MemoryStorage file(bytes);
    const ClipScan scan = scanClip(file);
    EXPECT_EQ(scan.chunks.size(), 6U);
    EXPECT_EQ(scan.damagedCount, 0U);
}

TEST(RescueDamage, AFileWithADamagedBeginningKeepsItsChunks) {
    Damaged clip;
    clip.fill(0, 12, 0);
    EXPECT_EQ(clip.found().size(), 10U);
    clip.fill(12, 8, 0xEE);
    EXPECT_EQ(clip.scan().headers.fault, "it does not begin like an AVI file");
}

TEST(RescueDamage, HeadersThatDescribeAStreamHalfServeNobody) {
    Damaged clip;
    const auto strl = static_cast<std::ptrdiff_t>(clip.avi.strlOffset(1));
    clip.fill(strl + 12, 4, 'x');  // strh
    EXPECT_EQ(clip.scan().headers.fault,
              "its headers are cut off or damaged: stream 1 is not described whole");
}

// Any single byte of a file: never a chunk that there is not. (A size that by chance leads to a later header
// cannot be told from a right one: chunks of equal sizes would have such.)
TEST(RescueDamage, NoByteMakesAChunkOutOfNothing) {
    Damaged clip(6, 2);
    MemoryStorage file(clip.bytes);
    const std::vector<ChunkFact> truth = indexedChunks(file);
    const auto movi = static_cast<std::size_t>(clip.avi.moviOffset());
    for (std::size_t at = movi; at < clip.bytes.size(); at += orvantis::test::sampleStep(5)) {
        for (const std::uint8_t flip : std::initializer_list<std::uint8_t>{1, 0x80, 0xFF}) {
            clip.bytes[at] ^= flip;
            const std::vector<ChunkFact> found = foundChunks(clip.scan());
            EXPECT_GE(found.size(), 4U) << at;
            for (ChunkFact chunk : found) {
                chunk.size += chunk.size %
                              2;  // of two sizes that padding makes the same, neither is wrong by its place
                ASSERT_TRUE(std::find(truth.begin(), truth.end(), chunk) != truth.end())
                    << at << " flipped by " << int{flip};
            }
            clip.bytes[at] ^= flip;
        }
    }
}

// Headers of any kind harm nobody: what serves is written and mended, the rest is refused.
TEST(RescueDamage, AnyByteOfTheHeadersMayBeWrong) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addStream(orvantis::test::pcmStream(1, 8000, 8));
    for (int i = 0; i < 4; ++i) {
        avi.addFilledChunk(0, 64, 1).addFilledChunk(1, 33, 2);
    }
    TestBytes bytes = avi.openDml(OpenDml::kSuperIndex).idx1(false).build();
    std::uint64_t served = 0;
    const std::uint64_t step = orvantis::test::sampleStep(5);
    for (std::size_t at = 0; at < avi.moviOffset(); at += step) {
        for (const std::uint8_t flip : std::initializer_list<std::uint8_t>{1, 0x80, 0xFF}) {
            bytes[at] ^= flip;
            MemoryStorage file(bytes);
            ClipScan scan = scanClip(file);
            if (scan.headers.fault.empty() && !scan.chunks.empty()) {
                ++served;
                const IndexCheck check = checkIndexes(file, scan);
                TestBytes out;
                MemoryStorage target(out);
                writeNewClip(file, scan, layOutNewClip(scan), target);
                EXPECT_EQ(foundChunks(scanClip(target)).size(), scan.chunks.size()) << at;
                try {
                    (void)planMending(file, scan, check);
                } catch (const ToolError& error) {
                    EXPECT_EQ(error.kind(), "not-in-place") << at;
                }
            }
            bytes[at] ^= flip;
        }
    }
    EXPECT_GT(served, 500 / step);
}

TEST(RescueDamage, ManyStretchesAreCountedAndTheFirstAreListed) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    constexpr std::size_t kChunks = 30'000;
    for (std::size_t i = 0; i < kChunks; ++i) {
        avi.addFilledChunk(0, 4, 1);
    }
    TestBytes bytes = avi.idx1(false).build();
    for (std::size_t i = 3; i < kChunks; i += 5) {
        bytes[static_cast<std::size_t>(avi.placements()[i].offset - 8)] = 0xEE;
    }
    MemoryStorage file(bytes);
    const ClipScan scan = scanClip(file);
    EXPECT_EQ(scan.damagedCount, kChunks / 5);
    EXPECT_EQ(scan.damaged.size(), ClipScan::kMostStretches);
    EXPECT_EQ(scan.chunks.size(), kChunks - 2 * (kChunks / 5));
}

// A bad disk damages here and there; what is read for each stretch is a few times the stretch.
TEST(RescueDamage, ManyStretchesCostNoMoreThanTheyTouch) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    constexpr std::size_t kSmall = 4'000;
    for (std::size_t i = 0; i < kSmall; ++i) {
        avi.addFilledChunk(0, 100, 1);
    }
    avi.addFilledChunk(0, 6'000'000, 1);
    TestBytes bytes = avi.idx1(false).build();
    for (std::size_t i = 3; i < kSmall; i += 5) {
        bytes[static_cast<std::size_t>(avi.placements()[i].offset - 8)] = 0xEE;
    }
    MemoryStorage file(bytes);
    EXPECT_EQ(scanClip(file).damagedCount, kSmall / 5);
    EXPECT_LT(file.bytesRead, 4 * bytes.size());
}

TEST(RescueNew, ChunksThatTheDiskCannotReadAreNamed) {
    Damaged clip;
    MemoryStorage file(clip.bytes);
    ClipScan scan = scanClip(file);
    file.makeUnreadable(static_cast<std::uint64_t>(clip.chunk(5) + 60),
                        static_cast<std::uint64_t>(clip.chunk(6) + 20));
    TestBytes out;
    MemoryStorage target(out);
    try {
        writeNewClip(file, scan, layOutNewClip(scan), target);
        FAIL();
    } catch (const UnreadableChunks& chunks) {
        EXPECT_THAT(chunks.numbers(), ElementsAre(5U, 6U)) << "all that there are, by one look at the disk";
        EXPECT_STREQ(chunks.what(), "bad sector");
    }
    // Without them, byte for byte.
    scan.chunks.remove(std::vector<std::size_t>{5, 6});
    ASSERT_EQ(scan.chunks.size(), 8U);
    out.clear();
    writeNewClip(file, scan, layOutNewClip(scan), target);
    EXPECT_EQ(dataOf(target, indexedChunks(target), 2), dataOf(file, foundChunks(scan), 2));
}

// Another program shortens the file between the search and the writing: bytes that are gone are not made up.
TEST(RescueNew, ChunksThatAreGoneMeanwhileAreNamed) {
    Damaged clip;
    MemoryStorage file(clip.bytes);
    const ClipScan scan = scanClip(file);
    TestBytes shorter = clip.bytes;
    shorter.resize(static_cast<std::size_t>(clip.chunk(8) + 60));
    ShortenedStorage source(clip.bytes.size(), shorter);
    TestBytes out;
    MemoryStorage target(out);
    try {
        writeNewClip(source, scan, layOutNewClip(scan), target);
        FAIL();
    } catch (const UnreadableChunks& chunks) {
        EXPECT_THAT(chunks.numbers(), ElementsAre(8U, 9U));
        EXPECT_THAT(chunks.what(), ::testing::HasSubstr("the file ended while it was read"));
    }
}

// Headers: all bytes but those of counts, lengths and the index.
TEST(RescueNew, SoundHeadersAreKeptByteForByte) {
    AviBuilder avi;
    const std::uint8_t extra[] = {1, 2, 3, 4, 5};
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 30000, 1001, 24, extra));
    avi.addStream(orvantis::test::extensibleStream(2, 48000, 24, 1, 3));
    orvantis::test::RiffBuilder tail;
    tail.begin("IDIT").u32(0x12345678).u8(9).end();
    avi.headerTail(tail.take()).openDml(OpenDml::kSuperIndex).junk(333);
    for (int i = 0; i < 8; ++i) {
        avi.addFilledChunk(0, 99, 1).addFilledChunk(1, 600, 2);
    }
    const TestBytes whole = avi.build();
    TestBytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(avi.placements()[9].offset));
    MemoryStorage file(cut);
    const ClipScan scan = scanClip(file);
    TestBytes out;
    MemoryStorage target(out);
    writeNewClip(file, scan, layOutNewClip(scan), target);
    const ClipHeaders& headers = scan.headers;
    std::vector<std::size_t> changing = {4, headers.mainAt + 16 + static_cast<std::size_t>(headers.at),
                                         headers.extendedAt + static_cast<std::size_t>(headers.at)};
    for (std::size_t stream = 0; stream < 2; ++stream) {
        changing.push_back(headers.streams[stream].headerAt + 32 + static_cast<std::size_t>(headers.at));
        const auto entry = static_cast<std::size_t>(avi.indxOffset(stream)) + 8 + 24;
        changing.insert(changing.end(), {entry, entry + 8, entry + 12});
    }
    for (std::size_t at = 0; at < avi.moviOffset(); ++at) {
        const bool mayChange = std::any_of(changing.begin(), changing.end(),
                                           [at](std::size_t word) { return at >= word && at < word + 4; });
        EXPECT_TRUE(mayChange || cut[at] == out[at]) << at;
    }
    for (const std::size_t word : changing) {
        EXPECT_FALSE(std::equal(cut.begin() + static_cast<std::ptrdiff_t>(word),
                                cut.begin() + static_cast<std::ptrdiff_t>(word) + 4,
                                out.begin() + static_cast<std::ptrdiff_t>(word)))
            << word;
    }
}

// Padding of any size may stand before the data; the new form's size has 32 bits.
TEST(RescueNew, EndlessPaddingBeforeTheDataIsLeftOut) {
    Damaged clip;
    ClipScan scan = clip.scan();
    const std::uint64_t before = scan.headers.moviAt - scan.headers.end();
    EXPECT_EQ(layOutNewClip(scan).between.bytes(), before - scan.headers.bytes.size() % 2);
    scan.headers.moviAt += std::uint64_t{5} << 30;
    const NewClipLayout layout = layOutNewClip(scan);
    EXPECT_EQ(layout.between, Extent{});
    EXPECT_LT(layout.size, clip.bytes.size() + 1000);
}

TEST(RescueNew, KeyFramesAreThoseOfTheOldIndex) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    for (int i = 0; i < 6; ++i) {
        avi.addFilledChunk(0, 64, 1, i % 3 == 0);
    }
    for (const bool absolute : {false, true}) {
        TestBytes bytes = avi.absoluteIdx1Offsets(absolute).build();
        MemoryStorage file(bytes);
        ClipScan scan = scanClip(file);
        const IndexCheck check = checkIndexes(file, scan);
        EXPECT_EQ(check.gains(), absolute);
        std::vector<bool> deltas;
        for (std::size_t i = 0; i < scan.chunks.size(); ++i) {
            deltas.push_back(scan.chunks[i].isDelta());
        }
        EXPECT_THAT(deltas, ElementsAre(false, true, true, false, true, true)) << absolute;
    }
}

TEST(RescueWords, WhatIsThereIsSaid) {
    Damaged clip;
    clip.bytes.resize(static_cast<std::size_t>(clip.chunk(9) + 20));
    MemoryStorage file(clip.bytes);
    ClipScan scan = scanClip(file);
    const IndexCheck check = checkIndexes(file, scan);
    const std::string offsets[] = {std::to_string(clip.chunk(8) + 8), std::to_string(clip.chunk(7) + 8),
                                   std::to_string(clip.chunk(9))};
    EXPECT_EQ(foundText(scan, check),
              "size: 1.5 KiB\nheaders: whole, 2 streams, 1 part (RIFF form)\n"
              "stream 0 (pictures, O8Y2): 5 whole chunks, 00:00:00.200; the last one has 120 bytes at " +
                  offsets[0] +
                  "\n  index: none; it leaves out 5 whole chunks\n"
                  "stream 1 (sound, PCM): 4 whole chunks, 00:00:00.060; the last one has 120 bytes at " +
                  offsets[1] +
                  "\n  index: none; it leaves out 4 whole chunks\n  length in the header: 600, found: 480\n"
                  "damage: 1 stretch, 20 bytes\n  20 bytes at " +
                  offsets[2] + ": a chunk of stream 1 ('01wb') that the end of the file cuts off\n");
    EXPECT_EQ(verdictText(check), "A rescue would gain: 9 whole chunks that no index names come back.");
}

}  // namespace
}  // namespace simhost::tool
