// Parts of "importer_host excerpt": what is kept of a file, what counts as a difference, and what is left of
// a new file that does not come to its end.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/memory_file.h"
#include "tests/support/temp_folder.h"
#include "tool/excerpt/excerpt_check.h"
#include "tool/excerpt/excerpt_file.h"
#include "tool/excerpt/structure_map.h"
#include "tool/shared/base/tool_error.h"

namespace {

namespace fs = std::filesystem;
using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using simhost::tool::AviFacts;
using simhost::tool::ExcerptFile;
using simhost::tool::FileRange;
using simhost::tool::StreamFacts;
using testing::ElementsAre;

std::vector<FileRange> structureOfBytes(const Bytes& bytes) {
    orvantis::test::MemoryFile file(bytes);
    return simhost::tool::structureOf(file, [](std::uint64_t) {});
}

bool holds(const std::vector<FileRange>& ranges, std::uint64_t begin, std::uint64_t bytes) {
    return std::ranges::any_of(
        ranges, [&](const FileRange& range) { return range.begin <= begin && begin + bytes <= range.end; });
}

AviBuilder sixFrames() {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    for (int i = 0; i < 6; ++i) {
        avi.addFilledChunk(0, 128, 0xA5);
    }
    return avi;
}

// A recorder that died has left no sizes and no index behind: what it wrote is found chunk by chunk.
TEST(ExcerptStructure, ListsWithoutASizeGoToTheEndOfTheFile) {
    for (const std::uint8_t size : {std::uint8_t{0}, std::uint8_t{4}}) {
        AviBuilder avi = sixFrames();
        Bytes clip = avi.idx1(false).build();
        for (const std::size_t list : {std::size_t{0}, static_cast<std::size_t>(avi.moviOffset())}) {
            std::fill_n(clip.begin() + static_cast<std::ptrdiff_t>(list) + 4, 4, std::uint8_t{0});
            clip[list + 4] = size;
        }
        const auto kept = structureOfBytes(clip);
        for (const auto& place : avi.placements()) {
            EXPECT_TRUE(holds(kept, place.offset - 8, 8)) << place.offset;
            EXPECT_FALSE(holds(kept, place.offset, 1)) << place.offset;
        }
    }
}

// Or sizes of an earlier moment, which may end in the middle of a chunk.
TEST(ExcerptStructure, DataBehindListsThatEndTooSoonIsFound) {
    for (const std::uint32_t behind : {0U, 30U}) {
        AviBuilder avi = sixFrames();
        Bytes clip = avi.idx1(false).build();
        const auto end = static_cast<std::uint32_t>(avi.placements()[2].offset) - 8 + behind;
        for (const std::uint32_t list : {0U, static_cast<std::uint32_t>(avi.moviOffset())}) {
            for (unsigned i = 0; i < 4; ++i) {
                clip[list + 4 + i] = static_cast<std::uint8_t>((end - list - 8) >> (8 * i));
            }
        }
        const auto kept = structureOfBytes(clip);
        for (const auto& place : avi.placements()) {
            EXPECT_TRUE(holds(kept, place.offset - 8, 8)) << place.offset << " " << behind;
            EXPECT_FALSE(holds(kept, place.offset, 1)) << place.offset << " " << behind;
        }
    }
}

// Behind damage in the data only the super index still leads to the indexes.
TEST(ExcerptStructure, AnIndexThatOnlyTheSuperIndexNamesIsKept) {
    AviBuilder avi = sixFrames();
    Bytes clip =
        avi.openDml(orvantis::test::OpenDml::kSuperIndex).entriesPerStandardIndex(3).idx1(false).build();
    const auto first = static_cast<std::ptrdiff_t>(avi.placements()[0].offset);
    std::fill_n(clip.begin() + first - 8, 8, std::uint8_t{0xEE});
    const std::string text(clip.begin(), clip.end());
    const auto kept = structureOfBytes(clip);
    int indexes = 0;
    for (std::size_t at = text.find("ix00", avi.moviOffset()); at != std::string::npos;
         at = text.find("ix00", at + 4)) {
        EXPECT_TRUE(holds(kept, at, 8 + 24 + 3 * 8)) << at;
        ++indexes;
    }
    EXPECT_EQ(indexes, 2);
}

TEST(ExcerptStructure, WhatDescribesTheFileIsKeptWhole) {
    for (const char* code : {"vprp", "ISFT", "dmlh", "indx"}) {
        AviBuilder avi = sixFrames();
        avi.headerTail(
            orvantis::test::RiffBuilder().chunk(code, Bytes(60, 0x37)).chunk("IDIT", Bytes(30, 0x38)).take());
        const Bytes clip = avi.build();
        const std::string text(clip.begin(), clip.end());
        const auto kept = structureOfBytes(clip);
        EXPECT_TRUE(holds(kept, text.find(code), 8 + 60)) << code;
        EXPECT_TRUE(holds(kept, text.find("IDIT"), 8));
        EXPECT_FALSE(holds(kept, text.find("IDIT") + 8, 1)) << "what a user wrote";
    }
}

TEST(ExcerptCheck, EveryDifferenceHasItsWords) {
    AviFacts facts;
    facts.fileSize = 1000;
    facts.usable = true;
    facts.streams.resize(2);
    facts.frameSizes = {10, 20};
    facts.gaps = {{100, 70'000}};
    facts.gapCount = 1;
    EXPECT_THAT(simhost::tool::structureDifferences(facts, facts), ElementsAre());
    const std::pair<const char*, std::function<void(AviFacts&)>> changes[] = {
        {"the size", [](AviFacts& f) { f.fileSize = 1001; }},
        {"what is damaged", [](AviFacts& f) { f.usable = false; }},
        {"what is damaged", [](AviFacts& f) { f.problems = "odd"; }},
        {"the streams", [](AviFacts& f) { f.streams.pop_back(); }},
        {"the streams", [](AviFacts& f) { f.streams[1].kind = StreamFacts::Kind::kAudio; }},
        {"the streams", [](AviFacts& f) { f.streams[1].format = "O8Y2"; }},
        {"the streams", [](AviFacts& f) { f.streams[1].rate = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].scale = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].declaredLength = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].frameBytes = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].samplesPerSecond = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].index = simhost::tool::IndexKind::kLegacy; }},
        {"the streams", [](AviFacts& f) { f.streams[1].openDmlRefused = true; }},
        {"the streams", [](AviFacts& f) { f.streams[1].chunks = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].bytes = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].bytesInFile = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].emptyChunks = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].longestEmptyRun = 1; }},
        {"the streams", [](AviFacts& f) { f.streams[1].chunksPastEnd = 1; }},
        {"the sizes of the frames", [](AviFacts& f) { f.frameSizes[1] = 21; }},
        {"the sizes of the frames", [](AviFacts& f) { f.frameSizes.push_back(0); }},
        {"the stretches that no index mentions", [](AviFacts& f) { f.gaps[0].bytes = 70'001; }},
        {"the stretches that no index mentions", [](AviFacts& f) { f.gaps[0].position = 101; }},
        {"the stretches that no index mentions", [](AviFacts& f) { f.gapCount = 2; }},
        {"the chunks that no index names", [](AviFacts& f) { f.unindexedChunks = 1; }}};
    for (const auto& [words, change] : changes) {
        AviFacts other = facts;
        change(other);
        EXPECT_THAT(simhost::tool::structureDifferences(facts, other), ElementsAre(words));
    }
}

std::vector<std::string> namesOfFolder(const fs::path& path) {
    std::vector<std::string> out;
    for (const auto& each : fs::directory_iterator(path)) {
        out.push_back(each.path().filename().string());
    }
    return out;
}

TEST(ExcerptOutput, NothingIsLeftOfOneThatDoesNotComeToItsEnd) {
    const orvantis::test::TempFolder folder;
    const std::string path = orvantis::test::utf8Path(folder / "small.avi");
    {
        ExcerptFile out(path, 100);
        out.write(7, Bytes{1, 2, 3});
        EXPECT_EQ(namesOfFolder(folder.path()).size(), 1U);
    }
    EXPECT_THAT(namesOfFolder(folder.path()), ElementsAre());
    {
        ExcerptFile out(path, 100);
        out.close();
        orvantis::test::writeFile(folder / "small.avi", "another program's");
        try {
            out.finish();
            ADD_FAILURE() << "a file was replaced";
        } catch (const simhost::tool::ToolError& error) {
            EXPECT_EQ(error.code(), simhost::tool::kNoOutput);
        }
    }
    EXPECT_THAT(namesOfFolder(folder.path()), ElementsAre("small.avi"));
    EXPECT_EQ(orvantis::test::readFile(folder / "small.avi"), "another program's");
}

TEST(ExcerptOutput, WhatIsNotWrittenIsNoughts) {
    const orvantis::test::TempFolder folder;
    const std::string path = orvantis::test::utf8Path(folder / "small.avi");
    {
        ExcerptFile out(path, 20);
        out.write(7, Bytes{'a', 'b', 'c'});
        out.close();
        out.finish();
    }
    EXPECT_EQ(orvantis::test::readFile(folder / "small.avi"),
              std::string(7, '\0') + "abc" + std::string(10, '\0'));
    EXPECT_THAT(namesOfFolder(folder.path()), ElementsAre("small.avi"));
}

}  // namespace
