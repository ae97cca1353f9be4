// Reading a chunk's data through the reader, at any time of its life.
#include <gtest/gtest.h>

#include <array>

#include "avi/avi_stream.h"
#include "tests/unit/avi/avi_test_support.h"

namespace orvantis {
namespace {

using test::Parsed;

/// The main header once more, through the chunk of the tree.
AviMainHeader headerAgain(Parsed& parsed) {
    AviMainHeader header{};
    const RiffChunk* hdrl = findList(parsed.reader.chunks.at(0).children, riffCode("hdrl"));
    const RiffChunk* avih = hdrl != nullptr ? findChunk(hdrl->children, riffCode("avih")) : nullptr;
    EXPECT_NE(avih, nullptr);
    if (avih != nullptr) {
        EXPECT_TRUE(parsed.reader.readChunkData(*avih, &header, sizeof(header)));
    }
    return header;
}

TEST(ChunkData, IsReadBehindAFullParse) {
    Parsed parsed(test::smallClip(3).build());
    ASSERT_TRUE(parsed.usable);
    EXPECT_EQ(headerAgain(parsed).dwTotalFrames, 3U);
    const std::uint64_t reads = parsed.file->counts().reads;
    headerAgain(parsed);
    EXPECT_EQ(parsed.file->counts().reads, reads + 1);
    EXPECT_EQ(parsed.file->counts().largestRead, FileWindow::kWindowBytes);
}

TEST(ChunkData, IsReadBehindARefusal) {
    Parsed parsed(test::smallClip(3).build(), true);
    parsed.reader.dropIndexes();
    EXPECT_EQ(headerAgain(parsed).dwTotalFrames, 3U);
    parsed.reader.readIndexes();
    EXPECT_TRUE(parsed.stream(0).entries().empty()) << "there is no second step any more";
}

TEST(ChunkData, OfManyBytesIsReadBehindAFullParse) {
    test::AviBuilder avi = test::smallClip(3);
    avi.junk(FileWindow::kWindowBytes + 10);
    Parsed parsed(avi.build());
    const RiffChunk* junk = findChunk(parsed.reader.chunks.at(0).children, riffCode("JUNK"));
    ASSERT_NE(junk, nullptr);
    std::vector<std::byte> data(junk->dataSize());
    EXPECT_TRUE(parsed.reader.readChunkData(*junk, data.data(), data.size()));
}

TEST(ChunkData, BeforeAnyParseThereIsNone) {
    AviReader reader;
    const RiffChunk chunk{riffCode("avih"), 56, 24, 0, {}};
    std::array<std::byte, 56> data{};
    EXPECT_FALSE(reader.readChunkData(chunk, data.data(), data.size()));
}

TEST(ChunkData, BehindTheEndOfTheFileThereIsNone) {
    Parsed parsed(test::smallClip(3).build());
    const RiffChunk chunk{riffCode("avih"), 56, parsed.file->bytes().size(), 0, {}};
    std::array<std::byte, 56> data{};
    EXPECT_FALSE(parsed.reader.readChunkData(chunk, data.data(), data.size()));
}

}  // namespace
}  // namespace orvantis
