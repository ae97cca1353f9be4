// What the tool says about the indexes of whole files: where they lead, and what they leave out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "avi/chunk_list_builder.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_folder.h"
#include "tool/shared/media/avi_findings.h"

namespace simhost::tool {
namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using orvantis::test::OpenDml;
using testing::IsEmpty;

AviBuilder builder(std::uint32_t chunks = 8, std::uint32_t size = 640) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addStream(orvantis::test::pcmStream(2, 8000, 16));
    for (std::uint32_t i = 0; i < chunks; ++i) {
        avi.addFilledChunk(0, size, static_cast<std::uint8_t>(i));
        avi.addFilledChunk(1, 1280, static_cast<std::uint8_t>(i));
    }
    return avi;
}

AviFacts factsOf(const Bytes& bytes) {
    const orvantis::test::TempFolder folder;
    orvantis::test::writeFile(folder / "clip.avi",
                              std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    return readAviFacts(orvantis::test::utf8Path(folder / "clip.avi")).value();
}

// Moves every offset of idx1.
Bytes shifted(AviBuilder& avi, std::int32_t by) {
    Bytes bytes = avi.build();
    for (std::size_t at = avi.idx1Offset() + 8; at + 16 <= bytes.size(); at += 16) {
        std::uint32_t offset = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            offset |= std::uint32_t{bytes[at + 8 + i]} << (8 * i);
        }
        offset += static_cast<std::uint32_t>(by);
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + 8 + i] = static_cast<std::uint8_t>(offset >> (8 * i));
        }
    }
    return bytes;
}

TEST(AviIndexBases, ARightIndexIsRight) {
    AviBuilder avi = builder();
    const AviFacts facts = factsOf(avi.build());
    EXPECT_EQ(facts.streams[0].base, IndexBase::kRight);
    EXPECT_THAT(aviFindings(facts), IsEmpty());
}

TEST(AviIndexBases, OffsetsFromTheFilesBeginningAreSeenAndNothingIsCalledCutOff) {
    AviBuilder avi = builder();
    const AviFacts facts = factsOf(avi.absoluteIdx1Offsets(true).build());
    for (const StreamFacts& stream : facts.streams) {
        EXPECT_EQ(stream.base, IndexBase::kFileStart);
        EXPECT_EQ(stream.chunksPastEnd, 0U) << "the chunks are there";
    }
    EXPECT_EQ(facts.gapCount, 0U);
    EXPECT_EQ(aviFindings(facts).size(), 2U);
}

TEST(AviIndexBases, OffsetsFromOtherPlacesNearbyAreSeen) {
    AviBuilder avi = builder();
    for (const std::int32_t shift : {8, -4}) {  // to the data, or from the first chunk
        EXPECT_EQ(factsOf(shifted(avi, shift)).streams[0].base, IndexBase::kOther) << shift;
    }
}

TEST(AviIndexBases, AnIndexThatLeadsToNoChunkIsSeen) {
    AviBuilder avi = builder();
    EXPECT_EQ(factsOf(shifted(avi, 101)).streams[0].base, IndexBase::kNowhere);
}

TEST(AviIndexBases, AWrongSizeInTheIndexIsNoWrongPlace) {
    AviBuilder avi = builder();
    Bytes bytes = avi.build();
    for (std::size_t at = avi.idx1Offset() + 8; at + 16 <= bytes.size(); at += 16) {
        bytes[at + 12] ^= 0x40;
    }
    EXPECT_EQ(factsOf(bytes).streams[0].base, IndexBase::kRight);
}

TEST(AviIndexBases, AFileThatWasCutOffHasARightIndex) {
    AviBuilder avi = builder();
    avi.openDml(OpenDml::kStandardIndex).idx1(false);
    Bytes bytes = avi.build();
    bytes.resize(static_cast<std::size_t>(avi.placementsOf(0)[4].offset));
    const AviFacts facts = factsOf(bytes);
    EXPECT_EQ(facts.streams[0].base, IndexBase::kRight);
    EXPECT_EQ(facts.streams[0].chunksPastEnd, 4U);
}

// However long the index, a few headers tell where it counts from.
TEST(AviIndexBases, AFewHeadersAreEnough) {
    AviBuilder avi = builder(2000);
    orvantis::test::MemoryFile file{std::span<const std::uint8_t>(avi.build())};
    orvantis::ChunkListBuilder entries;
    for (const auto& chunk : avi.placementsOf(0)) {
        entries.add(chunk.offset, 0, chunk.size, true);
    }
    (void)file.open("clip", fileio::kOpenRead);
    EXPECT_EQ(probeIndex(file, entries.finish(), avi.moviOffset()).base, IndexBase::kRight);
    EXPECT_LE(file.counts().reads, kMostLookedAt);
}

// Standard indexes of 8 bytes a chunk, between the chunks of each form.
TEST(AviIndexGaps, IndexChunksAndJunkAreNone) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    for (std::uint32_t i = 0; i < 20'000; ++i) {
        avi.addFilledChunk(0, 8, 1);
    }
    for (const bool numberFirst : {false, true}) {
        avi.openDml(OpenDml::kSuperIndex).chunksPerForm(10'000).indexNumberFirst(numberFirst);
        const AviFacts facts = factsOf(avi.build());
        EXPECT_EQ(facts.streams[0].index, IndexKind::kOpenDml);
        EXPECT_EQ(facts.gapCount, 0U);
    }
}

TEST(AviIndexGaps, ChunksThatNoIndexMentionsAreOne) {
    AviBuilder avi = builder(8, 100'000);
    Bytes bytes = avi.build();
    // The third of the pictures becomes one of the fourth stream, which there is not; then padding.
    const std::size_t entry = avi.idx1Offset() + 8 + 4 * std::size_t{16};
    ASSERT_EQ(bytes[entry], '0');
    bytes[entry + 1] = '3';
    const std::uint64_t chunk = avi.placementsOf(0)[2].offset - 8;
    AviFacts facts = factsOf(bytes);
    ASSERT_EQ(facts.gapCount, 1U);
    EXPECT_EQ(facts.gaps[0].position, chunk);
    EXPECT_EQ(facts.gaps[0].bytes, 100'008U);
    const std::string junk = "JUNK";
    std::copy(junk.begin(), junk.end(), bytes.begin() + static_cast<std::ptrdiff_t>(chunk));
    EXPECT_EQ(factsOf(bytes).gapCount, 0U);
}

TEST(AviUnindexed, ChunksBehindAnIndexAreCounted) {
    AviBuilder avi = builder(8);
    EXPECT_EQ(factsOf(avi.build()).unindexedChunks, 0U);
    EXPECT_EQ(factsOf(avi.chunksPerRecList(3).build()).unindexedChunks, 0U);
    avi.chunksPerRecList(0);
    // idx1 knows the first form only.
    EXPECT_EQ(factsOf(avi.chunksPerForm(6).build()).unindexedChunks, avi.placements().size() - 6);
    EXPECT_EQ(factsOf(avi.openDml(OpenDml::kSuperIndex).build()).unindexedChunks, 0U);
}

TEST(AviUnindexed, ChunksBetweenIndexedOnesAreCounted) {
    AviBuilder avi = builder(8);
    Bytes bytes = avi.build();
    bytes[avi.idx1Offset() + 8 + 4 * std::size_t{16} + 1] = '3';  // now of a stream that there is not
    EXPECT_EQ(factsOf(bytes).unindexedChunks, 1U);
}

TEST(AviUnindexed, WithoutAnIndexAllThatIsWholeIsCounted) {
    AviBuilder avi = builder(8);
    Bytes bytes = avi.idx1(false).build();
    EXPECT_EQ(factsOf(bytes).unindexedChunks, avi.placements().size());
    bytes.resize(static_cast<std::size_t>(avi.placements()[5].offset) + 1);
    EXPECT_EQ(factsOf(bytes).unindexedChunks, 5U);
}

TEST(AviSoundLengths, TheHeaderCountsForSound) {
    AviBuilder avi;
    auto sound = orvantis::test::pcmStream(2, 8000, 16);
    sound.length = 100;  // sample frames, of which the chunks hold 8000
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1)).addStream(sound);
    for (int i = 0; i < 25; ++i) {
        avi.addFilledChunk(0, 128, 1).addFilledChunk(1, 1280, 1);
    }
    const auto findings = aviFindings(factsOf(avi.build()));
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(
        findings[0].text,
        "Stream 1 (sound): the header tells 100 sample frames (0.013 s), the index holds 8000 (1.000 s). "
        "The header is what the host is told, so the last 0.988 s are not heard.");
    EXPECT_EQ(findings[1].text,
              "The sound of stream 1 is much shorter than the pictures: it ends after 0.013 s "
              "of 1.000 s, and the rest is silent.");
}

}  // namespace
}  // namespace simhost::tool
