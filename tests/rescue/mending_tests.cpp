// Changing a file where it lies: ended at every operation, on a disk that keeps any part of what was not
// flushed.
#include <gtest/gtest.h>

#include "tests/rescue/clip_truth.h"
#include "tests/rescue/crash_disk.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/temp_folder.h"
#include "tool/rescue/index_check.h"
#include "tool/rescue/mended_view.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/undo_file.h"

namespace simhost::tool {
namespace {

using orvantis::test::AviBuilder;
using orvantis::test::OpenDml;

constexpr CrashDisk::Survive kSurvivals[] = {CrashDisk::Survive::kNothing, CrashDisk::Survive::kEverything,
                                             CrashDisk::Survive::kEveryOther, CrashDisk::Survive::kLast};

AviBuilder mendBuilder(OpenDml kind = OpenDml::kNone) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1))
        .addStream(orvantis::test::pcmStream(1, 8000, 8));
    for (int i = 0; i < 6; ++i) {
        avi.addFilledChunk(0, 128, static_cast<std::uint8_t>(i + 1)).addFilledChunk(1, 101, 7);
    }
    avi.openDml(kind);
    return avi;
}

// The beginning of a file up to the middle of its last but one chunk.
TestBytes cutClip(OpenDml kind = OpenDml::kNone) {
    AviBuilder avi = mendBuilder(kind);
    TestBytes out = avi.build();
    out.resize(static_cast<std::size_t>(avi.placements()[10].offset + 50));
    return out;
}

// Zeros behind whole chunks, as a recorder leaves them that takes its room ahead.
TestBytes zeroTailClip() {
    AviBuilder avi = mendBuilder();
    TestBytes out = avi.build();
    out.resize(static_cast<std::size_t>(avi.placements()[10].offset - 8));
    out.resize(out.size() + 50'000);
    return out;
}

void mend(CrashDisk& disk) {
    const auto clip = disk.openToChange("clip");
    ClipScan scan = scanClip(*clip);
    const IndexCheck check = checkIndexes(*clip, scan);
    applyMending(disk, *clip, "clip.undo", "part", planMending(*clip, scan, check));
}

TestBytes mended(const TestBytes& clip) {
    CrashDisk disk(clip);
    mend(disk);
    return disk.bytes("clip");
}

// As before, finished, or the undo works; where there is an undo file it always does.
void expectRecoverable(CrashDisk& disk, const TestBytes& before, const TestBytes& after,
                       const std::string& what) {
    const TestBytes now = disk.bytes("clip");
    const bool undo = disk.exists("clip.undo");
    EXPECT_TRUE(now == before || now == after || undo) << what;
    if (undo) {
        undoMending(disk, "clip", "clip.undo");
        EXPECT_TRUE(disk.bytes("clip") == before) << what;
        EXPECT_FALSE(disk.exists("clip.undo")) << what;
    } else {
        EXPECT_TRUE(now == before) << what << ": without an undo file nothing has changed";
    }
}

// Garbage of an odd length moves all chunks behind it to odd places; what was mended needs no more mending.
TEST(RescueInPlace, DamageOfAnyLengthIsMendedAtOnce) {
    for (const std::size_t garbage : {74U, 75U}) {
        AviBuilder avi = mendBuilder();
        TestBytes clip = avi.build();
        clip.resize(static_cast<std::size_t>(avi.idx1Offset()));
        clip.insert(clip.begin() + static_cast<std::ptrdiff_t>(avi.placements()[6].offset - 8), garbage,
                    0xEE);
        TestBytes whole = mended(clip);
        MemoryStorage before(clip);
        MemoryStorage after(whole);
        ClipScan scan = scanClip(after);
        EXPECT_EQ(foundChunks(scan), foundChunks(scanClip(before))) << garbage;
        EXPECT_EQ(scan.chunks.size(), 11U) << garbage;
        EXPECT_FALSE(checkIndexes(after, scan).gains()) << garbage;
    }
}

// The same in a file that has its old index, and with a header in front of the garbage that promises too
// much.
TEST(RescueInPlace, AnIndexAtAnOddPlaceDoesNotHideTheNewOne) {
    AviBuilder avi = mendBuilder();
    TestBytes clip = avi.build();
    const auto place = [&avi](std::size_t i) {
        return static_cast<std::ptrdiff_t>(avi.placements()[i].offset - 8);
    };
    clip.insert(clip.begin() + place(6) + 60, 75, 0xEE);
    clip[static_cast<std::size_t>(place(6)) + 5] = 0x0A;  // 2,688 bytes
    TestBytes whole = mended(clip);
    MemoryStorage after(whole);
    ClipScan scan = scanClip(after);
    EXPECT_EQ(scan.chunks.size(), 11U);
    const IndexCheck check = checkIndexes(after, scan);
    EXPECT_FALSE(check.gains());
    EXPECT_EQ(check.streams[0].entries + check.streams[1].entries, 11U);
}

// Garbage that moves the rest to odd places, a list of data whose size is that of an earlier moment, and a
// file that ends in any way: bytes too few for a chunk, a chunk of no stream, one that is cut. The new index
// stands at an even place, so that a byte may lie in front of it; still all chunks are found again, and by
// the index.
TEST(RescueInPlace, EveryChunkIsFoundAgainWhereverTheNewIndexBegins) {
    struct Tail {
        const char* code;  // none: garbage
        std::uint32_t size;
        std::size_t bytes;
    };
    constexpr Tail kTails[] = {{"", 0, 0},       {"", 0, 1},       {"", 0, 3},       {"", 0, 7},
                               {"", 0, 40},      {"", 0, 41},      {"idx0", 8, 16},  {"idx0", 8, 17},
                               {"01wb", 99, 40}, {"01wb", 99, 41}, {"idx1", 32, 20}, {"idx1", 32, 21}};
    for (const Tail& tail : kTails) {
        for (const std::uint32_t last : {0U, 3U, 4U}) {
            for (const std::size_t garbage : {0U, 74U, 75U}) {
                for (const std::size_t listEnd : {4U, 13U}) {
                    AviBuilder avi = mendBuilder();
                    avi.addFilledChunk(0, last, 9);
                    TestBytes clip = avi.build();
                    const auto place = [&avi](std::size_t i) {
                        return static_cast<std::ptrdiff_t>(avi.placements()[i].offset - 8);
                    };
                    const auto set32 = [&clip](std::size_t at, std::uint32_t value) {
                        for (std::size_t i = 0; i < 4; ++i) {
                            clip[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
                        }
                    };
                    const auto list = static_cast<std::size_t>(avi.moviOffset());
                    clip.resize(static_cast<std::size_t>(avi.idx1Offset()));
                    if (listEnd < 13) {
                        set32(list + 4, static_cast<std::uint32_t>(place(listEnd)) -
                                            static_cast<std::uint32_t>(list) - 8);
                    }
                    clip.insert(clip.begin() + place(6), garbage, 0xEE);
                    const std::size_t end = clip.size();
                    clip.insert(clip.end(), tail.bytes, 0xEE);
                    if (*tail.code != '\0') {
                        std::copy_n(tail.code, 4, clip.begin() + static_cast<std::ptrdiff_t>(end));
                        set32(end + 4, tail.size);
                    }
                    TestBytes whole = mended(clip);
                    MemoryStorage before(clip);
                    MemoryStorage after(whole);
                    ClipScan scan = scanClip(after);
                    const std::string what = std::string(tail.code) + " " + std::to_string(tail.bytes) +
                                             " behind " + std::to_string(last) + ", garbage " +
                                             std::to_string(garbage) + ", the list ends at " +
                                             std::to_string(listEnd);
                    EXPECT_TRUE(foundChunks(scan) == foundChunks(scanClip(before))) << what;
                    for (const Stretch& stretch : scan.damaged) {  // the rest is padding now
                        EXPECT_TRUE(stretch.kind == Stretch::Kind::kStrangeChunk || stretch.place.bytes() < 3)
                            << what << ", damaged: " << stretch.place.bytes();
                    }
                    EXPECT_FALSE(checkIndexes(after, scan).gains()) << what;
                    EXPECT_TRUE(indexedChunks(after) == foundChunks(scan)) << what;
                }
            }
        }
    }
}

class RescueCrashes : public ::testing::TestWithParam<int> {
 protected:
    TestBytes clip() const {
        switch (GetParam()) {
            case 0:
                return cutClip();
            case 1:
                return cutClip(OpenDml::kSuperIndex);
            default:
                return zeroTailClip();
        }
    }
};
INSTANTIATE_TEST_SUITE_P(Clips, RescueCrashes, ::testing::Values(0, 1, 2));

TEST_P(RescueCrashes, EndedAtAnyOperationNothingIsLost) {
    const TestBytes before = clip();
    const TestBytes after = mended(before);
    ASSERT_NE(before, after);
    std::uint64_t operations = 0;
    for (const CrashDisk::Survive survive : kSurvivals) {
        for (std::uint64_t n = 1;; ++n) {
            CrashDisk disk(before);
            disk.cutAt(n);
            try {
                mend(disk);
                break;  // it was done before the cut
            } catch (const PowerCut&) {
                operations = n;
            }
            disk.restart(survive);
            expectRecoverable(disk, before, after, "cut at " + std::to_string(n));
        }
    }
    EXPECT_GT(operations, 8U);
}

TEST_P(RescueCrashes, AnUndoThatIsEndedCanBeDoneAgain) {
    const TestBytes before = clip();
    for (const CrashDisk::Survive survive : kSurvivals) {
        for (std::uint64_t n = 1;; ++n) {
            CrashDisk disk(before);
            mend(disk);
            disk.restart(CrashDisk::Survive::kEverything);
            disk.cutAt(n);
            try {
                undoMending(disk, "clip", "clip.undo");
                break;
            } catch (const PowerCut&) {
                disk.restart(survive);
            }
            ASSERT_TRUE(disk.exists("clip.undo")) << n;
            undoMending(disk, "clip", "clip.undo");
            EXPECT_TRUE(disk.bytes("clip") == before) << n;
        }
    }
}

TEST_P(RescueCrashes, AWriteThatFailsPutsTheOldBytesBack) {
    const TestBytes before = clip();
    for (std::uint64_t n = 1;; ++n) {
        CrashDisk disk(before);
        disk.failFrom(n, 1);
        bool failed = false;
        try {
            mend(disk);
        } catch (const ToolError& error) {
            failed = true;
            EXPECT_EQ(error.code(), kNoOutput);
        }
        if (!failed) {
            break;
        }
        EXPECT_TRUE(disk.bytes("clip") == before) << n;
        EXPECT_FALSE(disk.exists("clip.undo")) << n;
    }
}

TEST_P(RescueCrashes, WhenPuttingBackFailsTooTheUndoFileIsThere) {
    const TestBytes before = clip();
    const TestBytes after = mended(before);
    for (std::uint64_t n = 1;; ++n) {
        CrashDisk disk(before);
        disk.failFrom(n, 1'000'000);
        try {
            mend(disk);
            break;
        } catch (const ToolError&) {
            disk.failFrom(0, 0);
        }
        expectRecoverable(disk, before, after, "fails from " + std::to_string(n));
    }
}

std::string undoFailure(CrashDisk& disk) {
    try {
        undoMending(disk, "clip", "clip.undo");
        return "none";
    } catch (const ToolError& error) {
        return error.kind();
    }
}

TEST(RescueUndo, RefusesWhatItCannotBringBack) {
    const TestBytes before = cutClip();
    CrashDisk disk(before);
    EXPECT_EQ(undoFailure(disk), "missing-file");
    mend(disk);
    const TestBytes after = disk.bytes("clip");
    const TestBytes undo = disk.bytes("clip.undo");
    for (std::size_t at = 0; at < undo.size();
         ++at) {  // any byte of the undo file changed, and any length of it
        TestBytes wrong = undo;
        wrong[at] ^= 0x20;
        disk.setBytes("clip.undo", wrong);
        ASSERT_EQ(undoFailure(disk), "bad-undo-file") << at;
        disk.setBytes("clip.undo", TestBytes(undo.begin(), undo.begin() + static_cast<std::ptrdiff_t>(at)));
        ASSERT_EQ(undoFailure(disk), "bad-undo-file") << at;
    }
    disk.setBytes("clip.undo", undo);
    TestBytes changed = after;
    changed[4] ^= 0x55;  // the form's size, which was patched
    disk.setBytes("clip", changed);
    EXPECT_EQ(undoFailure(disk), "changed-since");
    EXPECT_TRUE(disk.bytes("clip") == changed);
    TestBytes longer = after;
    longer.push_back(1);
    disk.setBytes("clip", longer);
    EXPECT_EQ(undoFailure(disk), "changed-since");
    disk.setBytes("clip", after);
    EXPECT_EQ(undoFailure(disk), "none");
    EXPECT_TRUE(disk.bytes("clip") == before);
}

TEST(RescueInPlace, ATailOfZerosIsGivenUpAndComesBack) {
    const TestBytes before = zeroTailClip();
    const TestBytes after = mended(before);
    EXPECT_LT(after.size() + 40'000, before.size());
    EXPECT_TRUE(std::equal(before.begin() + 400, before.begin() + 1'000, after.begin() + 400))
        << "no data has moved";
}

TEST(RescueInPlace, DamageInTheMiddleBecomesPadding) {
    AviBuilder avi = mendBuilder();
    TestBytes clip = avi.build();
    const auto at = static_cast<std::size_t>(avi.placements()[4].offset - 8);
    std::fill_n(clip.begin() + static_cast<std::ptrdiff_t>(at), 100, std::uint8_t{0xEE});
    TestBytes after = mended(clip);
    EXPECT_EQ(std::string(after.begin() + static_cast<std::ptrdiff_t>(avi.placements()[3].offset - 8),
                          after.begin() + static_cast<std::ptrdiff_t>(avi.placements()[3].offset - 4)),
              "JUNK")
        << "the chunk before the damage may have lost its end";
    MemoryStorage file(after);
    EXPECT_EQ(scanClip(file).damagedCount, 0U);
    EXPECT_EQ(indexedChunks(file).size(), 10U);
}

// The bytes of `file`, read in pieces of `piece` bytes.
TestBytes readInPieces(Storage& file, std::size_t piece) {
    TestBytes out;
    for (std::size_t count = piece; count == piece;) {
        TestBytes bytes(piece);
        count = file.read(out.size(), bytes);
        out.insert(out.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    }
    return out;
}

TEST(RescueInPlace, TheFileAsItWillBeIsSeenBeforeAByteIsChanged) {
    for (TestBytes clip :
         {cutClip(), cutClip(OpenDml::kStandardIndex), cutClip(OpenDml::kSuperIndex), zeroTailClip()}) {
        const TestBytes after = mended(clip);
        MemoryStorage file(clip);
        ClipScan scan = scanClip(file);
        const IndexCheck check = checkIndexes(file, scan);
        const Mending mending = planMending(file, scan, check);
        MendedView view(file, mending);
        EXPECT_EQ(view.size(), after.size());
        EXPECT_FALSE(mending.patches.empty());
        for (const std::size_t piece : {1U, 7U, 100U, 65536U}) {
            EXPECT_TRUE(readInPieces(view, piece) == after) << piece;
        }
        EXPECT_EQ(file.writes, 0);
    }
}

// Holes of the damaged file stay holes, but for what is written into them.
class WithAHole : public MemoryStorage {
 public:
    WithAHole(TestBytes& bytes, Extent hole) : MemoryStorage(bytes), m_hole(hole) {}
    Extent dataFrom(std::uint64_t at) override {
        if (at < m_hole.begin) {
            return {at, m_hole.begin};
        }
        return {std::min(std::max(at, m_hole.end), size()), size()};
    }

 private:
    Extent m_hole;
};

TEST(RescueInPlace, WhatIsWrittenIntoAHoleIsData) {
    TestBytes bytes(10'000);
    WithAHole file(bytes, {1000, 10'000});
    Mending mending;
    mending.patches = {{500, FileBytes(4, 1)}, {2000, FileBytes(8, 1)}};
    mending.oldSize = 10'000;
    mending.appendAt = 6000;
    mending.append = FileBytes(40, 1);
    mending.newSize = 6040;
    MendedView view(file, mending);
    EXPECT_EQ(view.dataFrom(0), (Extent{0, 1000}));
    EXPECT_EQ(view.dataFrom(1000), (Extent{2000, 2008}));
    EXPECT_EQ(view.dataFrom(2004), (Extent{2004, 2008}));
    EXPECT_EQ(view.dataFrom(2008), (Extent{6000, 6040}));
    EXPECT_EQ(view.dataFrom(6010), (Extent{6010, 6040}));
    EXPECT_EQ(view.dataFrom(6040), (Extent{6040, 6040}));
}

TEST(RescueInPlace, WhereItsChunksWouldNotBeFoundAgainItIsRefused) {
    const std::string clip =
        orvantis::test::readFile(ORVANTIS_FUZZ_FOLDER "/regressions/rescue-two-readings-20261122.avi");
    TestBytes bytes(clip.begin(), clip.end());
    ASSERT_FALSE(bytes.empty());
    MemoryStorage file(bytes);
    ClipScan scan = scanClip(file);
    const IndexCheck check = checkIndexes(file, scan);
    try {
        (void)planMending(file, scan, check);
        FAIL();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.kind(), "not-in-place");
        EXPECT_STREQ(error.what(),
                     "the file cannot be mended where it lies: its damaged stretches can be read in more "
                     "than one way");
    }
    EXPECT_EQ(file.writes, 0);
}

TEST(RescueInPlace, WithoutRoomForTheIndexItIsRefused) {
    AviBuilder avi = mendBuilder();
    avi.chunksPerForm(5);  // several forms, but no OpenDML index
    TestBytes clip = avi.build();
    MemoryStorage file(clip);
    ClipScan scan = scanClip(file);
    const IndexCheck check = checkIndexes(file, scan);
    EXPECT_TRUE(check.gains());
    try {
        (void)planMending(file, scan, check);
        FAIL();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.kind(), "not-in-place");
        EXPECT_EQ(error.advice(), "write a new one, with --out");
    }
    EXPECT_EQ(file.writes, 0);
}

}  // namespace
}  // namespace simhost::tool
