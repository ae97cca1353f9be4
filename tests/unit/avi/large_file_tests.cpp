// Files beyond 4 GiB, whose last frames only the OpenDML index reaches: through the real file layer, on a
// sparse file.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>

#include "avi/avi_stream.h"
#include "avi/frame_chunk.h"
#include "fileio/win_file.h"
#include "tests/support/sparse_file.h"
#include "tests/unit/avi/avi_test_support.h"

namespace orvantis {
namespace {

using test::Bytes;
using test::RiffBuilder;

constexpr std::uint64_t kGibibyte = 1ULL << 30;
// Forms of three frames each; the second one lies across 4 GiB, the third one behind it.
constexpr std::uint64_t kForms[] = {0, 4 * kGibibyte - 700, 5 * kGibibyte + 2};
constexpr std::uint32_t kFrameBytes = 500;
constexpr std::uint32_t kFramesPerForm = 3;

struct Piece {
    std::uint64_t position;
    Bytes bytes;
};

// Frame n is filled with n + 1.
std::vector<Piece> piecesOfLargeClip() {
    std::vector<Piece> pieces;
    RiffBuilder indx;
    indx.u16(4).u8(0).u8(0).u32(std::size(kForms)).code("00dc").u64(0).u32(0);
    std::uint8_t frame = 0;
    for (const std::uint64_t form : kForms) {
        RiffBuilder riff(form);
        std::uint64_t hole = 0;
        if (form == 0) {
            riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
            riff.beginList("LIST", "strl").chunk("strh", test::streamHeader("vids")).chunk("strf", Bytes(40));
            hole = riff.position();
            riff.begin("indx").fill(24 + 16 * std::size(kForms)).end().end().end();
        } else {
            riff.beginList("RIFF", "AVIX");
        }
        const std::uint64_t movi = riff.position();
        riff.beginList("LIST", "movi");
        std::vector<std::uint64_t> frames;
        for (std::uint32_t i = 0; i < kFramesPerForm; ++i) {
            riff.begin("00dc");
            frames.push_back(riff.position());
            riff.fill(kFrameBytes, ++frame).end();
        }
        indx.u64(riff.position()).u32(8 + 24 + 8 * kFramesPerForm).u32(kFramesPerForm);
        riff.begin("ix00").u16(2).u8(0).u8(1).u32(kFramesPerForm).code("00dc").u64(movi).u32(0);
        for (const std::uint64_t at : frames) {
            riff.u32(static_cast<std::uint32_t>(at - movi)).u32(kFrameBytes);
        }
        pieces.push_back(Piece{form, riff.take()});
        if (form == 0) {
            pieces.push_back(Piece{hole + 8, {}});
        }
    }
    pieces[1].bytes = indx.take();  // over the hole
    return pieces;
}

void expectAllFrames(fileio::File& file) {
    AviReader reader;
    ASSERT_TRUE(file.seek(0));
    ASSERT_TRUE(reader.parse(file, false));
    EXPECT_EQ(reader.errorText(), "");
    const AviStream& stream = *reader.streams.at(0);
    EXPECT_TRUE(stream.hasOpenDmlIndex);
    ASSERT_EQ(stream.entries().size(), std::size(kForms) * kFramesPerForm);
    EXPECT_GT(stream.entries()[6].offset, 5 * kGibibyte);
    FrameChunk chunk;
    for (const std::uint64_t frame : {8U, 0U, 5U, 3U, 7U, 4U, 6U, 1U, 2U}) {
        const FrameChunkRead read = readFrameChunk(file, stream, frame, 9, chunk);
        ASSERT_EQ(read.outcome, FrameChunkRead::Outcome::kRead);
        ASSERT_FALSE(read.substitute);
        ASSERT_EQ(chunk.bytes, kFrameBytes);
        for (std::size_t i = 0; i < kFrameBytes; ++i) {
            ASSERT_EQ(std::to_integer<unsigned>(chunk.buffer.data()[i]), frame + 1)
                << "frame " << frame << " byte " << i;
        }
    }
}

TEST(LargeFileIndex, FramesAcrossAndBehindFourGigabytesAreReadThroughTheFileLayer) {
    const std::filesystem::path path = std::filesystem::temp_directory_path() /
                                       ("orvantis_large_" + std::to_string(std::random_device()()) + ".avi");
    const std::u16string name = path.u16string();
    {
        fileio::WinFile out;
        ASSERT_TRUE(out.open(name.c_str(), fileio::kOpenWrite));
        for (const Piece& piece : piecesOfLargeClip()) {
            ASSERT_EQ(out.writeAt(piece.bytes.data(), piece.bytes.size(),
                                  static_cast<std::int64_t>(piece.position)),
                      piece.bytes.size());
        }
    }
    {
        fileio::WinFile file;
        ASSERT_TRUE(file.open(name.c_str(), fileio::kOpenRead | fileio::kOpenShareRead));
        EXPECT_GT(file.size(), static_cast<std::int64_t>(5 * kGibibyte));
        expectAllFrames(file);
    }
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
}

// The same file in memory, and how little of its gigabytes is read.
TEST(LargeFileIndex, OpeningCostsReadsOfTheIndexesOnly) {
    const std::vector<Piece> pieces = piecesOfLargeClip();
    const Piece& last = pieces.back();
    test::SparseFile file(static_cast<std::int64_t>(last.position + last.bytes.size()));
    Bytes first = pieces[0].bytes;
    std::copy(pieces[1].bytes.begin(), pieces[1].bytes.end(),
              first.begin() + static_cast<std::ptrdiff_t>(pieces[1].position));
    file.put(0, std::as_bytes(std::span(first)));
    for (std::size_t i = 2; i < pieces.size(); ++i) {
        file.put(static_cast<std::int64_t>(pieces[i].position), std::as_bytes(std::span(pieces[i].bytes)));
    }

    AviReader reader;
    ASSERT_TRUE(reader.parse(file, false));
    // The headers, and an index for each form behind the first.
    EXPECT_EQ(file.counts().reads, 3U);
    expectAllFrames(file);
}

// A single form may be larger than 4 GiB only by its 32-bit size wrapping; frames at 32-bit offsets near the
// end of what idx1 can say are right all the same.
TEST(LargeFileIndex, Idx1OffsetsUpToFourGigabytesAreUnsigned) {
    constexpr std::uint32_t kOffset = 0xFFFF'FF00;
    RiffBuilder riff;
    riff.beginList("RIFF", "AVI ").beginList("LIST", "hdrl").begin("avih").fill(56).end();
    riff.beginList("LIST", "strl")
        .chunk("strh", test::streamHeader("vids"))
        .chunk("strf", Bytes(40))
        .end()
        .end();
    riff.begin("idx1").code("00dc").u32(0x10).u32(kOffset).u32(kFrameBytes).end();
    const std::uint64_t movi = riff.position();
    riff.beginList("LIST", "movi").endWithSize(0xFFFFFFF0);
    const Bytes head = riff.take();
    test::SparseFile file(static_cast<std::int64_t>(5 * kGibibyte));
    file.put(0, std::as_bytes(std::span(head)));
    const std::uint64_t data = movi + 16 + kOffset;
    const Bytes frame(kFrameBytes, 0x5A);
    file.put(static_cast<std::int64_t>(data), std::as_bytes(std::span(frame)));
    AviReader reader;
    ASSERT_TRUE(reader.parse(file, false));
    ASSERT_EQ(reader.streams.at(0)->entries().size(), 1U);
    EXPECT_EQ(reader.streams[0]->entries()[0].offset, data);
    FrameChunk chunk;
    ASSERT_EQ(readFrameChunk(file, *reader.streams[0], 0, 1, chunk).outcome, FrameChunkRead::Outcome::kRead);
    EXPECT_EQ(chunk.buffer.data()[0], std::byte{0x5A});
    EXPECT_EQ(chunk.buffer.data()[kFrameBytes - 1], std::byte{0x5A});
}

}  // namespace
}  // namespace orvantis
