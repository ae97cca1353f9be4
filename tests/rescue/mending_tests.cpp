// Changing a file where it lies: ended at every operation, on a disk that keeps any part of what was not
// flushed.
#include <gtest/gtest.h>

#include "tests/rescue/clip_truth.h"
#include "tests/rescue/crash_disk.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tool/rescue/index_check.h"
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

// A list of data that a recorder gave its size once and then wrote on behind, garbage that has moved the rest
// to odd places, and bytes too few for a chunk: an index behind them stands where none is looked for, and an
// empty chunk has no data of its own that would show where it ends.
TEST(RescueInPlace, TheLastChunkStaysAChunkWhereverTheNewIndexBegins) {
    for (const std::uint32_t last : {0U, 3U, 4U}) {
        for (const std::size_t stray : {0U, 1U, 3U, 7U}) {
            for (const std::size_t garbage : {74U, 75U}) {
                AviBuilder avi = mendBuilder();
                avi.addFilledChunk(0, last, 9);
                TestBytes clip = avi.build();
                const auto place = [&avi](std::size_t i) {
                    return static_cast<std::ptrdiff_t>(avi.placements()[i].offset - 8);
                };
                clip.resize(static_cast<std::size_t>(avi.idx1Offset()));
                clip.insert(clip.begin() + place(6), garbage, 0xEE);
                clip.insert(clip.end(), stray, 0xEE);
                const auto list = static_cast<std::size_t>(avi.moviOffset());
                const auto size = static_cast<std::uint32_t>(place(4)) - static_cast<std::uint32_t>(list) - 8;
                for (std::size_t i = 0; i < 4; ++i) {
                    clip[list + 4 + i] = static_cast<std::uint8_t>(size >> (8 * i));
                }
                TestBytes whole = mended(clip);
                MemoryStorage before(clip);
                MemoryStorage after(whole);
                ClipScan scan = scanClip(after);
                const std::string what = std::to_string(last) + " bytes, " + std::to_string(stray) +
                                         " stray, " + std::to_string(garbage) + " of garbage";
                EXPECT_EQ(foundChunks(scan), foundChunks(scanClip(before))) << what;
                EXPECT_EQ(scan.chunks.size(), 12U) << what;
                EXPECT_FALSE(checkIndexes(after, scan).gains()) << what;
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
