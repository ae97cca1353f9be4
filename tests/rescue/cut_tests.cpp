// Clips of every structure that the builder makes, cut everywhere.
#include <gtest/gtest.h>

#include <vector>

#include "tests/rescue/cut_check.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/thorough.h"

namespace simhost::tool {
namespace {

using orvantis::test::AviBuilder;
using orvantis::test::OpenDml;

// Pictures with empty ones among them, sound of an odd size, and bytes that look like chunks inside the data.
AviBuilder cutBuilder() {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1))
        .addStream(orvantis::test::pcmStream(1, 8000, 8));
    for (std::uint8_t i = 0; i < 12; ++i) {
        TestBytes picture(200, static_cast<std::uint8_t>(i + 1));
        const std::uint8_t fake[] = {'0', '0', 'd', 'c', 8,   0,   0,   0,   1, 2, 3, 4,
                                     5,   6,   7,   8,   '0', '0', 'd', 'c', 4, 0, 0, 0};
        std::copy(std::begin(fake), std::end(fake), picture.begin() + 40);
        avi.addChunk(0, i % 4 == 3 ? TestBytes() : picture, i % 5 == 0).addFilledChunk(1, 101U + i, 7);
    }
    return avi;
}

// Where the builder has put each chunk, which no index is asked for.
std::vector<ChunkFact> builtChunks(const AviBuilder& avi) {
    std::vector<ChunkFact> out;
    for (const auto& chunk : avi.placements()) {
        out.push_back({static_cast<unsigned>(chunk.stream), chunk.offset, chunk.size});
    }
    return out;
}

struct Structure {
    const char* name;
    void (*make)(AviBuilder& avi);
};
const Structure kStructures[] = {
    {"idx1", [](AviBuilder&) {}},
    {"no index", [](AviBuilder& avi) { avi.idx1(false); }},
    {"absolute idx1", [](AviBuilder& avi) { avi.absoluteIdx1Offsets(true); }},
    {"super index", [](AviBuilder& avi) { avi.openDml(OpenDml::kSuperIndex); }},
    {"standard index", [](AviBuilder& avi) { avi.openDml(OpenDml::kStandardIndex); }},
    {"several forms",
     [](AviBuilder& avi) { avi.openDml(OpenDml::kSuperIndex).chunksPerForm(7).indexNumberFirst(true); }},
    {"rec lists", [](AviBuilder& avi) { avi.chunksPerRecList(3).junk(100); }},
};

TEST(RescueCuts, EveryByteOfEveryStructure) {
    for (const Structure& structure : kStructures) {
        AviBuilder avi = cutBuilder();
        structure.make(avi);
        TestBytes whole = avi.build();
        const std::vector<ChunkFact> truth = builtChunks(avi);
        MemoryStorage file(whole);
        for (std::uint64_t size = 0; size <= whole.size(); size += orvantis::test::sampleStep(5)) {
            ASSERT_EQ(wrongInScan(file, truth, size), "") << structure.name << " cut at " << size;
        }
        EXPECT_EQ(file.writes, 0);
    }
}

TEST(RescueCuts, EveryRescueAtEveryStructuralPoint) {
    for (const Structure& structure : kStructures) {
        AviBuilder avi = cutBuilder();
        structure.make(avi);
        TestBytes whole = avi.build();
        const std::vector<ChunkFact> truth = builtChunks(avi);
        MemoryStorage file(whole);
        const std::vector<std::uint64_t> points = structuralPoints(file);
        for (std::size_t i = 0; i < points.size(); i += orvantis::test::sampleStep(5)) {
            ASSERT_EQ(wrongInRescue(whole, truth, points[i]), "")
                << structure.name << " cut at " << points[i];
        }
    }
}

}  // namespace
}  // namespace simhost::tool
