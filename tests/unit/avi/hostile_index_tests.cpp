// Files made to do harm through their indexes and headers: each bound holds, and says so in the words of a
// failed read.
#include <gtest/gtest.h>

#include <algorithm>

#include "avi/avi_index.h"
#include "avi/avi_stream.h"
#include "avi/error_text.h"
#include "avi/index_input.h"
#include "avi/problems.h"
#include "tests/unit/avi/avi_test_support.h"

namespace orvantis {
namespace {

using test::Bytes;
using test::Parsed;
using test::RiffBuilder;

constexpr std::uint32_t kSuperHeader = 24;
constexpr std::uint32_t kSuperEntry = 16;

RiffBuilder& superHeader(RiffBuilder& riff, std::uint32_t entries) {
    return riff.u16(4).u8(0).u8(0).u32(entries).code("00dc").u64(0).u32(0);
}

RiffBuilder& superEntry(RiffBuilder& riff, std::uint64_t chunk, std::uint32_t dataSize) {
    return riff.u64(chunk).u32(dataSize + 8).u32(0);
}

RiffBuilder& standardHeader(RiffBuilder& riff, std::uint32_t entries) {
    return riff.u16(2).u8(0).u8(1).u32(entries).code("00dc").u64(0).u32(0);
}

// One video stream whose indx chunk holds what `writeIndex` writes. `writeIndex` gets the position of the
// indx data.
template <typename WriteIndex>
Bytes fileWithIndex(WriteIndex writeIndex) {
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
    riff.begin("indx");
    writeIndex(riff, riff.position());
    return riff.take();
}

std::size_t countLines(const std::string& text, const std::string& part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

constexpr const char* kReadFailed = "failed to read index data";

TEST(HostileIndex, SuperIndexThatNamesItselfFails) {
    std::uint64_t position = 0;
    const Parsed parsed(fileWithIndex([&](RiffBuilder& riff, std::uint64_t at) {
        position = at;
        superHeader(riff, 1);
        superEntry(riff, at - 8, kSuperHeader + kSuperEntry);
    }));
    EXPECT_TRUE(parsed.usable);
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).superIndex.size(), 1U);
    EXPECT_EQ(parsed.reader.errorText(), "readIndex: stream[0], pos: " + std::to_string(position) +
                                             ", size: 40: failed to read index data\n");
}

TEST(HostileIndex, SuperIndexesThatNameEachOtherFail) {
    const Parsed parsed(fileWithIndex([](RiffBuilder& riff, std::uint64_t at) {
        superHeader(riff, 1);
        superEntry(riff, at + 40, 40);  // chunk header, then the second one
        riff.fill(8);
        superHeader(riff, 1);
        superEntry(riff, at - 8, 40);
    }));
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).superIndex.size(), 2U);
    EXPECT_EQ(countLines(parsed.reader.errorText(), kReadFailed), 1U);
}

// n super indexes one inside the other, and a standard index in the last.
Bytes nestedSuperIndexes(std::uint32_t levels) {
    return fileWithIndex([levels](RiffBuilder& riff, std::uint64_t) {
        for (std::uint32_t i = 0; i < levels; ++i) {
            superHeader(riff, 1);
            // The next one's data stands 16 bytes of entry and 8 bytes of chunk header further.
            superEntry(riff, riff.position() + kSuperEntry, i + 1 == levels ? 32 : 40);
            riff.fill(8);
        }
        standardHeader(riff, 1).u32(1234).u32(5);
    });
}

TEST(HostileIndex, EightNestedSuperIndexesAreFollowed) {
    const Parsed parsed(nestedSuperIndexes(8));
    EXPECT_EQ(parsed.reader.errorText(), "");
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    ASSERT_EQ(parsed.stream(0).entries().size(), 1U);
    EXPECT_EQ(parsed.stream(0).entries()[0].offset, 1234U);
}

TEST(HostileIndex, OfAFileThatIsParsedAnewIsReadOnce) {
    test::MemoryFile file(fileWithIndex([](RiffBuilder& riff, std::uint64_t) { riff.u32(0); }));
    AviReader reader;
    for (int i = 0; i < 2; ++i) {
        file.seek(0);
        ASSERT_TRUE(reader.parse(file, true));
    }
    reader.readIndexes();
    EXPECT_EQ(countLines(reader.errorText(), "index data size too small"), 1U);
}

TEST(HostileIndex, SuperIndexesBesideEachOtherAreNotNested) {
    constexpr std::uint32_t kNamed = 9;
    constexpr std::uint64_t kSuper = 8 + kSuperHeader + kSuperEntry;
    constexpr std::uint64_t kStandard = 8 + 24 + 8;
    const Parsed parsed(fileWithIndex([](RiffBuilder& riff, std::uint64_t at) {
        const std::uint64_t first = at + kSuperHeader + kNamed * kSuperEntry;
        superHeader(riff, kNamed);
        for (std::uint32_t i = 0; i < kNamed; ++i) {
            superEntry(riff, first + i * (kSuper + kStandard), kSuperHeader + kSuperEntry);
        }
        for (std::uint32_t i = 0; i < kNamed; ++i) {
            superHeader(riff.fill(8), 1);
            superEntry(riff, first + i * (kSuper + kStandard) + kSuper, 24 + 8);
            standardHeader(riff.fill(8), 1).u32(i).u32(4);
        }
    }));
    EXPECT_TRUE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).openDmlEntries.size(), kNamed);
}

TEST(HostileIndex, NinthNestedSuperIndexFails) {
    const Parsed parsed(nestedSuperIndexes(9));
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(parsed.stream(0).superIndex.size(), 8U);
    EXPECT_EQ(countLines(parsed.reader.errorText(), kReadFailed), 1U);
    const Parsed deep(nestedSuperIndexes(5000));
    EXPECT_FALSE(deep.stream(0).hasOpenDmlIndex);
    EXPECT_EQ(deep.stream(0).superIndex.size(), 8U);
}

// Positions one byte apart are different chunks to the chain: levels of a thousand entries each would be read
// a thousand to the power of eight times.
TEST(HostileIndex, FanOutOverLevelsEndsAtTheChunkLimit) {
    constexpr std::uint32_t kFan = 1000;
    constexpr std::uint32_t kData = kSuperHeader + kFan * kSuperEntry;
    const Bytes bytes = fileWithIndex([](RiffBuilder& riff, std::uint64_t at) {
        for (std::uint64_t level = 0; level < 8; ++level) {
            superHeader(riff, kFan);
            for (std::uint32_t i = 0; i < kFan; ++i) {
                superEntry(riff, at + (level + 1) * (kData + 8) - 8, kData);
            }
            riff.fill(8);
        }
        standardHeader(riff, (kData - 24) / 8).fill(kData - 24);
    });
    const Parsed parsed(bytes);
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    EXPECT_LE(parsed.file->counts().reads, bytes.size() / 32 + 1024 + 2);
    EXPECT_LE(parsed.file->counts().bytesRead, 2 * bytes.size() + 1024 * 1024 + 2 * FileWindow::kWindowBytes);
    EXPECT_TRUE(parsed.stream(0).entries().empty());
}

// Many super index entries may name one standard index, which costs its size each time.
TEST(HostileIndex, IndexBytesEndAtTwiceTheFile) {
    constexpr std::uint32_t kNames = 4000;
    constexpr std::uint32_t kData = 24 + 100'000 * 8;
    std::uint64_t superPosition = 0;
    const Bytes bytes = fileWithIndex([&](RiffBuilder& riff, std::uint64_t at) {
        superPosition = at;
        superHeader(riff, kNames);
        const std::uint64_t chunk = at + kSuperHeader + kNames * kSuperEntry;
        for (std::uint32_t i = 0; i < kNames; ++i) {
            superEntry(riff, chunk, kData);
        }
        riff.fill(8);
        standardHeader(riff, 100'000).fill(800'000);
    });
    const Parsed parsed(bytes);
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    const std::uint64_t limit = 2 * bytes.size() + 1024 * 1024;
    EXPECT_LE(parsed.file->counts().bytesRead, limit + 2 * FileWindow::kWindowBytes);
    // The bound is used up. The indx chunk, which reaches to the end of the file, counts too.
    EXPECT_EQ(parsed.stream(0).standardIndexes.size(), (limit - (bytes.size() - superPosition)) / kData);
    EXPECT_EQ(countLines(parsed.reader.errorText(), kReadFailed),
              kNames - parsed.stream(0).standardIndexes.size());
}

// The bound itself is still read, one byte more is not.
TEST(HostileIndex, IndexBytesEndExactlyAtTwiceTheFileAndAMebibyte) {
    constexpr std::uint32_t kNames = 16;
    constexpr std::uint32_t kData = 24 + 400'000;
    constexpr std::uint32_t kWhole = 3;  // entries that name all of the standard index
    for (const std::uint32_t beyond : {0U, 1U}) {
        const auto build = [&](std::uint32_t lastSize) {
            return fileWithIndex([&](RiffBuilder& riff, std::uint64_t at) {
                superHeader(riff, kNames);
                const std::uint64_t chunk = at + kSuperHeader + kNames * kSuperEntry;
                for (std::uint32_t i = 0; i + 1 < kNames; ++i) {
                    superEntry(riff, chunk, i < kWhole ? kData : 24);
                }
                superEntry(riff, chunk, lastSize);
                riff.fill(8);
                standardHeader(riff, 0).fill(kData - 24);
            });
        };
        // The indx chunk reaches to the end of the file: all of it behind the chunk's position counts.
        std::uint64_t superPosition = 0;
        static_cast<void>(fileWithIndex([&](RiffBuilder&, std::uint64_t at) { superPosition = at; }));
        const std::uint64_t size = build(24).size();
        const std::uint64_t left =
            2 * size + 1024 * 1024 - (size - superPosition) - kWhole * kData - (kNames - 1 - kWhole) * 24;
        const Bytes bytes = build(static_cast<std::uint32_t>(left) + beyond);
        ASSERT_LE(left + beyond, kData) << "the last one lies in the file";
        const Parsed parsed(bytes);
        EXPECT_EQ(parsed.stream(0).standardIndexes.size(), kNames - beyond) << beyond;
        EXPECT_EQ(parsed.stream(0).hasOpenDmlIndex, beyond == 0);
    }
}

TEST(HostileIndex, IndexChunksEndAtOneForEachThirtyTwoBytes) {
    // Each entry names a standard index without entries: 24 bytes.
    constexpr std::uint32_t kNames = 50'000;
    const Bytes bytes = fileWithIndex([](RiffBuilder& riff, std::uint64_t at) {
        superHeader(riff, kNames);
        const std::uint64_t chunk = at + kSuperHeader + kNames * kSuperEntry;
        for (std::uint32_t i = 0; i < kNames; ++i) {
            superEntry(riff, chunk, 24);
        }
        riff.fill(8);
        standardHeader(riff, 0);
    });
    const Parsed parsed(bytes);
    EXPECT_FALSE(parsed.stream(0).hasOpenDmlIndex);
    // The super index is one chunk itself.
    EXPECT_EQ(parsed.stream(0).standardIndexes.size(), bytes.size() / 32 + 1024 - 1);
    EXPECT_EQ(countLines(parsed.reader.errorText(), kReadFailed),
              kNames - parsed.stream(0).standardIndexes.size());
}

TEST(HostileIndex, BoundsCountForAllStreamsTogether) {
    // 300 streams that share one index of half a megabyte.
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    constexpr std::uint32_t kStreams = 300;
    constexpr std::uint32_t kStrl = 12 + 64 + 48 + 8 + 40;
    const std::uint64_t chunk = riff.position() + kStreams * kStrl;
    constexpr std::uint32_t kData = 24 + 65536 * 8;
    for (std::uint32_t i = 0; i < kStreams; ++i) {
        riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
        superEntry(superHeader(riff.begin("indx"), 1), chunk, kData).end().end();
    }
    ASSERT_EQ(riff.position(), chunk);
    standardHeader(riff.begin("ix00"), 65536).fill(65536 * 8);
    const Bytes bytes = riff.take();
    const Parsed parsed(bytes);
    ASSERT_EQ(parsed.reader.streams.size(), kStreams);
    std::size_t complete = 0;
    std::uint64_t indexBytes = 0;
    for (const auto& stream : parsed.reader.streams) {
        complete += stream->hasOpenDmlIndex ? 1U : 0U;
        indexBytes += stream->openDmlEntries.size() * 8;
    }
    EXPECT_GE(complete, 1U);
    EXPECT_LE(indexBytes, 2 * bytes.size() + 1024 * 1024);
    EXPECT_EQ(countLines(parsed.reader.errorText(), kReadFailed), kStreams - complete);
}

TEST(HostileIndex, ErrorTextStopsAtSixteenMebibytes) {
    // Half a million entries that name nothing: some 60 bytes of text each.
    constexpr std::uint32_t kNames = 500'000;
    const Parsed parsed(fileWithIndex(
        [](RiffBuilder& riff, std::uint64_t) { superHeader(riff, kNames).fill(kNames * kSuperEntry); }));
    constexpr std::size_t kSixteenMebibytes = 16 * 1024 * 1024;
    EXPECT_LE(parsed.reader.errorText().size(), kSixteenMebibytes);
    EXPECT_GT(parsed.reader.errorText().size(), kSixteenMebibytes - 200);
    EXPECT_EQ(parsed.reader.errorText().back(), '\n') << "lines are whole or not there";
}

TEST(HostileIndex, WithoutRoomForAWordNothingIsWrittenAndTheIndexStillFails) {
    test::MemoryFile file(Bytes(64));
    FileWindow window;
    window.attach(file, 64);
    IndexInput input(window);
    Problems problems;
    problems.add({ProblemPlace::Part::kStructure}, std::string(kMaxErrorText, 'x'));
    OpenDmlIndexReader reader(input, problems);
    AviStream stream(0);
    EXPECT_FALSE(reader.readOpenDmlIndex(8, 3, stream));
    EXPECT_EQ(problems.text(), std::string(kMaxErrorText, 'x'));
}

TEST(HostileIndex, ErrorTextKeepsLinesWholeAtItsEnd) {
    std::string text(kMaxErrorText - 5, 'x');
    appendBounded(text, "123456");
    EXPECT_EQ(text.size(), kMaxErrorText - 5);
    appendBounded(text, "12345");
    EXPECT_EQ(text.size(), kMaxErrorText);
    appendBounded(text, "1");
    EXPECT_EQ(text.size(), kMaxErrorText);
    EXPECT_FALSE(hasRoomFor(text, 1));
}

// Headers.

TEST(HostileHeaders, FormatsThatOverlapEndAtTheFilesSize) {
    // Each strf claims the rest of the file: a thousand streams would keep a thousand copies.
    constexpr std::uint32_t kStreams = 1000;
    constexpr std::uint32_t kTail = 2'000'000;
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    for (std::uint32_t i = 0; i < kStreams; ++i) {
        // The list ends with the header of strf, whose data reaches behind it.
        riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).begin("strf");
        riff.endWithSize(kTail).end();
    }
    riff.end().begin("JUNK").fill(kTail + 100);
    const Bytes bytes = riff.take();
    const Parsed parsed(bytes);
    ASSERT_TRUE(parsed.usable);
    std::uint64_t kept = 0;
    for (const auto& stream : parsed.reader.streams) {
        kept += stream->format.size();
    }
    EXPECT_LE(kept, bytes.size() + 1024 * 1024);
    EXPECT_EQ(parsed.reader.streams.size(), 1U);
    EXPECT_EQ(countLines(parsed.reader.errorText(), "strf data read error\n"), kStreams - 1);
}

TEST(HostileHeaders, FormatsMayTakeTheFilesSizeAndAMebibyteAndNoByteMore) {
    constexpr std::uint32_t kTail = 4'000'000;
    constexpr std::uint32_t kFirst = 3'000'000;
    for (const std::uint32_t beyond : {0U, 1U}) {
        const auto build = [&](std::uint32_t second) {
            RiffBuilder riff;
            riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
            for (const std::uint32_t size : {kFirst, second}) {
                riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).begin("strf");
                riff.endWithSize(size).end();
            }
            riff.end().begin("JUNK").fill(kTail + 100);
            return riff.take();
        };
        const std::size_t left = build(0).size() + 1024 * 1024 - kFirst;
        const Parsed parsed(build(static_cast<std::uint32_t>(left) + beyond));
        ASSERT_TRUE(parsed.usable);
        ASSERT_EQ(parsed.reader.streams.size(), 2U - beyond);
        EXPECT_EQ(parsed.reader.streams.front()->format.size(), kFirst);
        if (beyond == 0) {
            EXPECT_EQ(parsed.reader.streams.back()->format.size(), left);
        }
    }
}

// Stream lists of 20 bytes each: each thousand share one strh and one strf behind them.
TEST(HostileHeaders, StreamsThatOverlapEndAtOneForEachSixtyFourBytes) {
    constexpr std::uint32_t kGroups = 60;
    constexpr std::uint32_t kLists = 1000;
    constexpr std::uint32_t kShared = 64 + 48 + 8;
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    for (std::uint32_t group = 0; group < kGroups; ++group) {
        const std::uint64_t shared = riff.position() + kLists * 20ULL;
        for (std::uint32_t i = 1; i <= kLists; ++i) {
            // The list claims 4 GiB, so its first child is read behind the type: a chunk whose size leads to
            // what is shared. The padded length of such a list is 8, which leads its parent into the type:
            // there the chunk "strl" leads to the next list, the last one over what is shared.
            riff.code("LIST").u32(0xFFFFFFFF).code("strl").u32(i == kLists ? 4 + kShared : 4);
            riff.u32(static_cast<std::uint32_t>(shared - (riff.position() + 4)));
        }
        riff.chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
        riff.begin("stop").endWithSize(0xFFFFFFF7);
    }
    const Bytes bytes = riff.take();
    const Parsed parsed(bytes);
    EXPECT_TRUE(parsed.usable);
    EXPECT_EQ(parsed.reader.streams.size(), bytes.size() / 64 + 1024);
    EXPECT_GT(countLines(parsed.reader.errorText(), "]: strh data read error\n"), 100U);
}

TEST(HostileHeaders, HugeTreesAreGivenUpBeforeTheIndexesAreRead) {
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    for (int i = 0; i < 70'000; ++i) {
        riff.begin("JUNK").end();
    }
    const Bytes bytes = riff.take();
    Parsed parsed(bytes, true);
    ASSERT_TRUE(parsed.usable);
    EXPECT_FALSE(parsed.reader.chunks.empty());
    parsed.reader.readIndexes();
    EXPECT_TRUE(parsed.reader.chunks.empty());

    // With the form, the header list and its first chunk as many as are kept, and one more.
    for (const std::uint32_t chunks : {65'536U, 65'537U}) {
        RiffBuilder tree;
        tree.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
        for (std::uint32_t i = 3; i < chunks; ++i) {
            tree.begin("JUNK").end();
        }
        const Parsed whole(tree.take());
        ASSERT_TRUE(whole.usable);
        EXPECT_EQ(whole.reader.chunks.empty(), chunks > 65'536U) << chunks;
    }

    Parsed regular(test::smallClip().build());
    EXPECT_EQ(regular.reader.chunks.size(), 1U);
}

// A file that claims an index of any size and holds nothing of it must not cost memory or reads.
TEST(HostileHeaders, ClaimsFarBeyondTheFileAreRefusedUnread) {
    for (const std::uint32_t claim : {1'000'000U, 0x7FFFFFFFU, 0xFFFFFFF0U}) {
        RiffBuilder riff;
        riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
        riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
        riff.begin("indx").endWithSize(claim).end().end();
        riff.beginList("LIST", "movi").end().begin("idx1").endWithSize(claim);
        const Parsed parsed(riff.take());
        EXPECT_TRUE(parsed.usable);
        EXPECT_EQ(countLines(parsed.reader.errorText(), kReadFailed), 1U);
        EXPECT_EQ(parsed.file->counts().reads, 1U);
    }
}

}  // namespace
}  // namespace orvantis
