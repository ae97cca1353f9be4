// From a request to a decoded host frame: each step's results and log lines, every failure, and the running
// session.
#include "avi/avi_stream.h"
#include "video/frame_import.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "diag/format.h"
#include "diag/log.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/captured_log.h"
#include "tests/support/chunk_lists.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/support/fake_host/fake_host.h"
#include "tests/support/memory_file.h"
#include "video/video_info.h"

namespace orvantis {
namespace {

using fakecodec::Call;
using fakecodec::FakeCodec;
using fakecodec::Function;
using test::CapturedLog;
using test::FakeHost;

using Lines = std::vector<std::string>;

constexpr std::int32_t kWidth = 8;
constexpr std::int32_t kHeight = 4;
constexpr std::uint32_t kBgra = host::PrPixelFormat_BGRA_4444_8u;
constexpr std::uint32_t kYuy2 = host::PrPixelFormat_YUYV_422_8u_601;
constexpr std::uint32_t kBgra16 = host::PrPixelFormat_BGRA_4444_16u;
constexpr std::int64_t kFrameTicks = 40;  // 25 frames at 1000 ticks a second

// Ten frames of 8 x 4 RGBA; frame i is a chunk of i + 1 bytes with the value i.
class FrameImport : public testing::Test {
 protected:
    static constexpr int kFrames = 10;

    FrameImport() : suites(host.basicSuite()), stream(0) {
        host.ticksPerSecond = 1000;
        buildFormatTables(host.basicSuite());
        library.coded = {kWidth, kHeight, 254, 1, 102, 0, 2, 2, 0};
        // The "decoder" writes the chunk's first byte over the pixels of every row, in the order of the rows'
        // memory.
        library.onDecompress = [](std::span<const std::byte> frame, const OrvantisOutputBuffer& out,
                                  const OrvantisFrameFormat&) {
            char* row = static_cast<char*>(out.pixels);
            const auto pitch = static_cast<std::int32_t>(out.rowPitch);
            for (std::int32_t y = 0; y < kHeight; ++y, row += pitch) {
                std::memset(row, std::to_integer<int>(frame[0]) + 16 * y, kWidth * 4);
            }
        };
        stream.header.dwRate = 25;
        stream.header.dwScale = 1;
        stream.format.assign(40, 0);
        for (int i = 0; i < kFrames; ++i) {
            addFrame(i + 1, static_cast<std::uint8_t>(i));
        }
        open();
    }

    void addFrame(int size, std::uint8_t value) {
        const std::uint64_t offset = file.bytes().size();
        test::appendChunk(stream.legacyEntries, {offset, static_cast<std::uint32_t>(size), 0, 0, true});
        file.bytes().insert(file.bytes().end(), static_cast<std::size_t>(size), std::byte{value});
    }

    void open() {
        video.reset();
        video.emplace(suites);
        ASSERT_EQ(video->analyseFormat(stream), host::ImporterResult::imNoErr);
        video->analyseTiming();
        library.forgetCalls();
    }

    void ask(std::int64_t time, std::uint32_t pixelFormat, std::int32_t width = 0, std::int32_t height = 0) {
        const host::imFrameFormat wanted{width, height, pixelFormat};
        request.assign(time, &wanted, 1, host.ppixSuite());
    }

    host::ImporterResult run() {
        host::ImporterResult result = prepareFrame(*video, request);
        if (result == host::ImporterResult::imNoErr) {
            result = readFrame(*video, file, request);
        }
        if (result == host::ImporterResult::imNoErr) {
            result = decodeFrame(*video, suites.get(), request);
        }
        return result;
    }

    host::ImporterResult frame(int number, std::uint32_t pixelFormat) {
        ask(number * kFrameTicks, pixelFormat);
        return run();
    }

    FakeHost host;
    FakeCodec library;
    LazyImporterSuites suites;
    AviStream stream;
    test::MemoryFile file;
    std::optional<VideoInfo> video;
    FrameRequest request;
};

// Prepare.

TEST_F(FrameImport, PrepareTurnsTheTimeIntoTheIndex) {
    CapturedLog log;
    ask(3 * kFrameTicks + 39, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(request.frameIndex, 3U);
    EXPECT_EQ(log.lines(), (Lines{"inFrameTime: 159", "frameIndex:  3 (total: 10)", "inNumFrameFormats: 1",
                                  "inFrameFormats[0]: 0 0 PrPixelFormat_BGRA_4444_8u [bgra]"}));
}

TEST_F(FrameImport, StartOfTheLastFrameIsTheLastIndex) {
    ask(9 * kFrameTicks, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(request.frameIndex, 9U);
    ask(10 * kFrameTicks - 1, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(request.frameIndex, 9U);
}

TEST_F(FrameImport, FrameTimeOnePastTheEndIsRefused) {
    CapturedLog log;
    ask(10 * kFrameTicks, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
    EXPECT_EQ(log.lines(),
              (Lines{"inFrameTime: 400", "frameIndex:  10 (total: 10)", "frameIndex out of bounds"}));
    EXPECT_EQ(request.frameIndex, 0U) << "not stored";
}

TEST_F(FrameImport, TimeOfMinusOneFrameIsRefused) {
    CapturedLog log;
    ask(-kFrameTicks, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
    EXPECT_EQ(log.lines(),
              (Lines{"inFrameTime: -40", "frameIndex:  4294967295 (total: 10)", "frameIndex out of bounds"}));
}

TEST_F(FrameImport, TimeLessThanOneFrameBeforeTheStartIsFrame0) {
    ask(-kFrameTicks + 1, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(request.frameIndex, 0U);
}

TEST_F(FrameImport, LargestAndSmallestTimesAreLoggedWhole) {
    CapturedLog log;
    ask(INT64_MAX, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
    EXPECT_EQ(log.lines().at(0), "inFrameTime: 9223372036854775807");
    log.clear();
    ask(INT64_MIN, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
    EXPECT_EQ(log.lines().at(0), "inFrameTime: -9223372036854775808");
}

TEST_F(FrameImport, RateThatRoundedToZeroHasNoFrames) {
    CapturedLog log;
    stream.header.dwRate = 1;
    stream.header.dwScale = 200;
    open();
    log.clear();
    ask(0, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
    EXPECT_EQ(log.lines(),
              (Lines{"inFrameTime: 0", "frameIndex:  4294967295 (total: 10)", "frameIndex out of bounds"}));
}

TEST_F(FrameImport, TimeBaseCoarserThanAFrameHasNoFrames) {
    host.ticksPerSecond = 24;  // 24 / 25 ticks a frame
    open();
    ask(0, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
}

TEST_F(FrameImport, StreamWithoutFramesIsRefused) {
    stream.legacyEntries = {};
    open();
    ask(0, kBgra);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imFrameNotFound);
}

TEST_F(FrameImport, EmptyListOfFormatsIsAnotherError) {
    CapturedLog log;
    request.assign(0, nullptr, 0, host.ppixSuite());
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imOtherErr);
    EXPECT_EQ(log.lines(), (Lines{"inFrameTime: 0", "frameIndex:  0 (total: 10)", "inNumFrameFormats: 0",
                                  "ERROR: frameFormats is empty"}));
}

TEST_F(FrameImport, SizeOfZeroIsTheVideosSize) {
    ask(0, kBgra, 0, 0);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameWidth}, kWidth);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameHeight}, kHeight);
    ask(0, kBgra, kWidth, 0);
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(std::int32_t{request.frameFormats[0].inFrameHeight}, kHeight);
}

TEST_F(FrameImport, OtherSizesAreRefused) {
    CapturedLog log;
    const std::int32_t sizes[][2]{{4, 2}, {kWidth, kHeight + 1}, {-kWidth, kHeight}, {0, 1}};
    const char* const texts[]{"(4, 2)", "(8, 5)", "(-8, 4)", "(8, 1)"};
    for (int i = 0; i < 4; ++i) {
        ask(0, kBgra, sizes[i][0], sizes[i][1]);
        EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imOtherErr);
        EXPECT_EQ(log.lines().back(), std::string("ERROR: frame size mismatch ") + texts[i] + " != (8, 4)");
    }
}

TEST_F(FrameImport, OnlyTheFirstFormatCounts) {
    CapturedLog log;
    const host::imFrameFormat wanted[]{{kWidth, kHeight, kBgra}, {3, 3, 0x41414100}};
    request.assign(0, wanted, 2, host.ppixSuite());
    EXPECT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(log.lines().at(2), "inNumFrameFormats: 2");
    EXPECT_EQ(log.lines().at(3), "inFrameFormats[0]: 8 4 PrPixelFormat_BGRA_4444_8u [bgra]");
    EXPECT_EQ(log.lines().at(4), "inFrameFormats[1]: 3 3 ???? [[0]AAA]");
}

// Read.

TEST_F(FrameImport, ReadFetchesTheFramesChunk) {
    ask(4 * kFrameTicks, kBgra);
    static_cast<void>(prepareFrame(*video, request));
    EXPECT_EQ(readFrame(*video, file, request), host::ImporterResult::imNoErr);
    ASSERT_EQ(request.chunk.bytes, 5U);
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(request.chunk.buffer.data()[i], std::byte{4});
    }
}

TEST_F(FrameImport, ReadOfAStreamWithoutDataFindsNoFrame) {
    stream.legacyEntries = test::chunkListOf(std::vector<IndexEntry>(3, {0, 0, 0, 0, true}));
    open();
    ask(kFrameTicks, kBgra);
    static_cast<void>(prepareFrame(*video, request));
    CapturedLog log;
    EXPECT_EQ(readFrame(*video, file, request), host::ImporterResult::imFrameNotFound);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FrameImport, EmptyFrameIsServedFromTheOneBefore) {
    CapturedLog log;
    test::resizeChunk(stream.legacyEntries, 5, 0);
    open();
    log.clear();
    EXPECT_EQ(frame(5, kBgra), host::ImporterResult::imNoErr);
    EXPECT_EQ(host.frameOf(request.frame.get()).memory[0], 4);
    const Lines lines = log.lines();
    EXPECT_NE(std::ranges::find(lines, "Empty frame: 5, frame read: 4"), lines.end());
}

TEST_F(FrameImport, ReadFrameIsNotLogged) {
    ask(9 * kFrameTicks, kBgra);
    static_cast<void>(prepareFrame(*video, request));
    CapturedLog log;
    EXPECT_EQ(readFrame(*video, file, request), host::ImporterResult::imNoErr);
    EXPECT_EQ(log.lines(), Lines{});
}

TEST_F(FrameImport, TruncatedFileFailsTheRead) {
    file.bytes().resize(file.bytes().size() - 1);
    ask(9 * kFrameTicks, kBgra);
    static_cast<void>(prepareFrame(*video, request));
    CapturedLog log;
    EXPECT_EQ(readFrame(*video, file, request), host::ImporterResult::imFileReadFailed);
    EXPECT_EQ(log.lines(), Lines{"Failed to read frame from AVI: Read error: size: 10, read: 9"});
}

TEST_F(FrameImport, FailedReadOfASubstituteLogsBothInOrder) {
    file.bytes().resize(file.bytes().size() - 11);  // frame 9, and the last byte of frame 8
    test::resizeChunk(stream.legacyEntries, 9, 0);
    open();
    ask(9 * kFrameTicks, kBgra);
    static_cast<void>(prepareFrame(*video, request));
    CapturedLog log;
    EXPECT_EQ(readFrame(*video, file, request), host::ImporterResult::imFileReadFailed);
    EXPECT_EQ(log.lines(), (Lines{"Empty frame: 9, frame read: 8",
                                  "Failed to read frame from AVI: Read error: size: 9, read: 8"}));
}

// Decode.

TEST_F(FrameImport, FirstFrameBeginsTheSessionAndFillsTheHostsFrame) {
    CapturedLog log;
    library.setString(kOrvantisStringTypeName, 102, "RGBA");
    library.setString(kOrvantisStringTypeName, 2, "BGRA");
    library.setString(kOrvantisStringColorSpaceName, 2, "Rec.709");
    ask(3 * kFrameTicks, kBgra);
    ASSERT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    ASSERT_EQ(readFrame(*video, file, request), host::ImporterResult::imNoErr);
    log.clear();
    ASSERT_EQ(decodeFrame(*video, suites.get(), request), host::ImporterResult::imNoErr);
    EXPECT_EQ(log.lines(), Lines{"Starting decompression: RGBA [Rec.709] [FULL] -> BGRA [Rec.709] (pr: "
                                 "PrPixelFormat_BGRA_4444_8u [bgra]) [flipped]"});
    EXPECT_EQ(library.callNames(), (Lines{"orvantis_decompress_begin", "orvantis_decompress"}));

    FakeHost::Frame& made = host.frameOf(request.frame.get());
    EXPECT_EQ(made.access, 1);
    EXPECT_EQ(made.pixelFormat, kBgra);
    EXPECT_EQ(made.bounds.left, 0);
    EXPECT_EQ(made.bounds.top, 0);
    EXPECT_EQ(made.bounds.right, kWidth);
    EXPECT_EQ(made.bounds.bottom, kHeight);
    EXPECT_EQ(host.pixelAccesses, std::vector<std::int32_t>{1});
    for (std::int32_t y = 0; y < kHeight; ++y) {
        for (std::int32_t x = 0; x < made.rowBytes; ++x) {
            const int expected = x < kWidth * 4 ? 3 + 16 * y : FakeHost::kPoison;
            ASSERT_EQ(made.memory[static_cast<std::size_t>(y * made.rowBytes + x)], expected)
                << x << "," << y;
        }
    }
    host.take(request.frame.release());
}

TEST_F(FrameImport, BeginIsAskedForTheRowsOutput) {
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    const Call begin = library.callsOf(Function::kDecompressBegin).at(0);
    EXPECT_EQ(begin.handle, video->decoder().mainSession().codec.handle());
    EXPECT_EQ(begin.data, video->formatData().data());
    EXPECT_EQ(begin.bytes, 40U);
    EXPECT_EQ(begin.output->type, 2U);
    EXPECT_EQ(begin.output->flags, 1U) << "the host stores bgra bottom row first";
    EXPECT_EQ(begin.output->colorSpace, 2U);
    EXPECT_EQ(begin.output->range, 2U);
    const DecodeSession& session = video->decoder().mainSession();
    EXPECT_TRUE(session.begun);
    EXPECT_EQ(session.pixelFormat, kBgra);
    EXPECT_EQ(session.output.width, static_cast<std::uint32_t>(kWidth)) << "what the library produces";
}

TEST_F(FrameImport, StartLineTellsRangeOrderAndSixteenBits) {
    CapturedLog log;
    ASSERT_EQ(frame(0, kYuy2), host::ImporterResult::imNoErr);
    Lines lines = log.lines();
    EXPECT_EQ(std::ranges::count(lines,
                                 "Starting decompression: type102 [space2] [FULL] -> type4 [space1] (pr: "
                                 "PrPixelFormat_YUYV_422_8u_601 [yuy2])"),
              1);
    library.coded.range = 1;
    open();
    log.clear();
    ASSERT_EQ(frame(0, kBgra16), host::ImporterResult::imNoErr);
    lines = log.lines();
    EXPECT_EQ(std::ranges::count(lines,
                                 "Starting decompression: type102 [space2] [LIMITED] -> type31 [space2] (pr: "
                                 "PrPixelFormat_BGRA_4444_16u [Bgra]) [flipped] [0-32768]"),
              1);
    // Any other range word reads as limited.
    library.coded.range = 0;
    open();
    log.clear();
    ASSERT_EQ(frame(0, kYuy2), host::ImporterResult::imNoErr);
    EXPECT_NE(log.lines().at(4).find(" [LIMITED] -> "), std::string::npos) << log.lines().at(4);
}

TEST_F(FrameImport, HostWithTheOppositeOrderIsNotFlipped) {
    host.answer = [](FakeHost::Question, std::uint32_t) { return true; };
    buildFormatTables(host.basicSuite());
    ASSERT_EQ(frame(0, kBgra16), host::ImporterResult::imNoErr);
    EXPECT_EQ(library.callsOf(Function::kDecompressBegin).at(0).output->flags, 2U);
}

TEST_F(FrameImport, SecondFrameOfTheFormatOnlyDecodes) {
    CapturedLog log;
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    library.forgetCalls();
    log.clear();
    ASSERT_EQ(frame(1, kBgra), host::ImporterResult::imNoErr);
    EXPECT_EQ(library.callNames(), Lines{"orvantis_decompress"});
    EXPECT_FALSE(request.formatChanged);
    EXPECT_EQ(log.lines().size(), 4U) << "prepare's lines alone";
}

TEST_F(FrameImport, DecodeHandsOverTheChunkAndTheFramesRows) {
    ASSERT_EQ(frame(6, kBgra), host::ImporterResult::imNoErr);
    const FakeHost::Frame& made = host.frameOf(request.frame.get());
    const Call decode = library.callsOf(Function::kDecompress).at(0);
    EXPECT_EQ(decode.handle, video->decoder().mainSession().codec.handle());
    EXPECT_EQ(decode.data, request.chunk.buffer.data());
    EXPECT_EQ(decode.bytes, 7U);
    EXPECT_EQ(decode.buffer.pixels, made.pixels);
    EXPECT_EQ(decode.buffer.rowPitch, static_cast<std::uint32_t>(made.rowBytes));
    EXPECT_EQ(decode.buffer.totalBytes, static_cast<std::uint32_t>(made.rowBytes * kHeight));
}

TEST_F(FrameImport, NegativeRowBytesKeepTheirBitPatternAndTheSizeWraps) {
    host.negativeRowBytes = true;
    ASSERT_EQ(frame(2, kBgra), host::ImporterResult::imNoErr);
    const FakeHost::Frame& made = host.frameOf(request.frame.get());
    ASSERT_EQ(made.rowBytes, -80);
    const Call decode = library.callsOf(Function::kDecompress).at(0);
    EXPECT_EQ(decode.buffer.rowPitch, 4294967216U);
    EXPECT_EQ(decode.buffer.totalBytes, 4294966976U);  // -320
    // The first row written is the last in memory, and nothing outside the frame was touched (ASan watches).
    EXPECT_EQ(made.memory[static_cast<std::size_t>(3 * 80)], 2);
    EXPECT_EQ(made.memory[0], 2 + 16 * 3);
}

TEST_F(FrameImport, FormatChangeEndsAndBegins) {
    CapturedLog log;
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    library.forgetCalls();
    log.clear();
    ASSERT_EQ(frame(1, kYuy2), host::ImporterResult::imNoErr);
    EXPECT_TRUE(request.formatChanged);
    EXPECT_EQ(library.callNames(),
              (Lines{"orvantis_decompress_end", "orvantis_decompress_begin", "orvantis_decompress"}));
    const Lines lines = log.lines();
    ASSERT_EQ(lines.size(), 6U);
    EXPECT_EQ(lines[4], "Pixel format changed, ending decompression");
    EXPECT_TRUE(lines[5].starts_with("Starting decompression: "));
}

TEST_F(FrameImport, FailedEndIsLoggedAndOtherwiseIgnored) {
    CapturedLog log;
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    library.failAll(Function::kDecompressEnd, 31);
    log.clear();
    EXPECT_EQ(frame(1, kYuy2), host::ImporterResult::imNoErr);
    EXPECT_TRUE(request.formatChanged);
    EXPECT_EQ(log.lines().at(5),
              "Internal error: decompressEnd() failed: Orvantis error (31): error31: decompressEnd()");
    EXPECT_EQ(video->decoder().mainSession().pixelFormat, kYuy2);
}

TEST_F(FrameImport, FailedBeginLeavesTheSessionNotRunningAndIsTriedAgain) {
    CapturedLog log;
    library.failCall(Function::kDecompressBegin, 1, 32);
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imBadCompression);
    EXPECT_FALSE(video->decoder().mainSession().begun);
    EXPECT_EQ(video->decoder().mainSession().pixelFormat, host::PrPixelFormat_Invalid);
    EXPECT_FALSE(request.frame);
    EXPECT_EQ(host.created, 0);
    EXPECT_TRUE(log.lines().back().starts_with(
        "Decompress begin failed: Orvantis error (32): error32: decompressBegin({0x"))
        << log.lines().back();

    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    EXPECT_EQ(library.count(Function::kDecompressBegin), 2);
    EXPECT_EQ(library.count(Function::kDecompressEnd), 0);
}

TEST_F(FrameImport, FrameThatMeetsAnotherOneDecodesWithASessionOfItsOwn) {
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    {
        const FrameDecoder::Use other(video->decoder());
        EXPECT_EQ(frame(1, kYuy2), host::ImporterResult::imNoErr);
        EXPECT_FALSE(request.formatChanged);
        EXPECT_EQ(other.session().pixelFormat, kBgra) << "the other call's session is left alone";
    }
    EXPECT_EQ(library.count(Function::kDecompressBegin), 2);
    EXPECT_EQ(library.count(Function::kDecompressEnd), 0);
    EXPECT_EQ(frame(2, kBgra), host::ImporterResult::imNoErr);
    EXPECT_EQ(library.count(Function::kDecompressBegin), 2) << "the first session still runs";
}

TEST_F(FrameImport, FrameThatMeetsAnotherOneFailsWithoutASecondSession) {
    CapturedLog log;
    const FrameDecoder::Use other(video->decoder());
    library.failAll(Function::kLibraryInit, 12);
    EXPECT_EQ(frame(1, kBgra), host::ImporterResult::imBadCompression);
    EXPECT_TRUE(log.lines().back().starts_with("Decompress begin failed: Orvantis error (12): "))
        << log.lines().back();
    EXPECT_EQ(host.created, 0);
    library.stopFailing();
    EXPECT_EQ(frame(1, kBgra), host::ImporterResult::imNoErr);
}

TEST_F(FrameImport, FailedBeginAfterAFormatChangeIsNotEndedTwice) {
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    library.failCall(Function::kDecompressBegin, 2, 32);
    EXPECT_EQ(frame(1, kYuy2), host::ImporterResult::imBadCompression);
    EXPECT_FALSE(video->decoder().mainSession().begun);
    EXPECT_EQ(frame(2, kBgra), host::ImporterResult::imNoErr);
    EXPECT_EQ(library.count(Function::kDecompressEnd), 1);
    EXPECT_FALSE(request.formatChanged) << "nothing was running";
}

TEST_F(FrameImport, FailedDecodeIsBadCompressionAndTheFrameIsGivenBack) {
    CapturedLog log;
    library.failCall(Function::kDecompress, 1, 33);
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imBadCompression);
    EXPECT_TRUE(
        log.lines().back().starts_with("Decompress failed: Orvantis error (33): error33: decompress({0x"))
        << log.lines().back();
    EXPECT_TRUE(video->decoder().mainSession().begun) << "one damaged frame does not end the session";
    EXPECT_EQ(host.liveFrames(), 1);
    request.frame.reset();
    EXPECT_EQ(host.liveFrames(), 0);

    EXPECT_EQ(frame(1, kBgra), host::ImporterResult::imNoErr);
    EXPECT_EQ(library.count(Function::kDecompressBegin), 1);
}

TEST_F(FrameImport, FormatOutsideTheTableThrowsAndLeavesTheRunningSessionAlone) {
    ASSERT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
    library.forgetCalls();
    try {
        static_cast<void>(frame(1, host::PrPixelFormat_BGRA_4444_32f));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "GetFormatInfo_by_pixelFormat(): pixel format not found: "
                     "PrPixelFormat_BGRA_4444_32f [BGra]");
    }
    EXPECT_TRUE(library.calls().empty());
    EXPECT_TRUE(video->decoder().mainSession().begun);
    EXPECT_EQ(host.created, 1);
}

TEST_F(FrameImport, FormatAnyIsNotInTheTable) {
    EXPECT_THROW(static_cast<void>(frame(0, host::PrPixelFormat_Any)), std::runtime_error);
}

TEST_F(FrameImport, FormatThatTheVideoWasNotOfferedInIsTheLibrarysToRefuse) {
    library.accepts = [](const OrvantisFrameFormat& output) { return output.type != 4; };
    EXPECT_EQ(frame(0, kYuy2), host::ImporterResult::imBadCompression);
}

TEST_F(FrameImport, RefusedCreatorSuiteThrowsWithTheSessionBegun) {
    host.refusedSuites = {"Premiere PPix Creator Suite"};
    LazyImporterSuites poorSuites(host.basicSuite());
    ask(0, kBgra);
    ASSERT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    ASSERT_EQ(readFrame(*video, file, request), host::ImporterResult::imNoErr);
    try {
        static_cast<void>(decodeFrame(*video, poorSuites.get(), request));
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not acquire suite: 'Premiere PPix Creator Suite', ver: 1");
    }
    EXPECT_TRUE(video->decoder().mainSession().begun);
    EXPECT_FALSE(request.frame);
}

TEST_F(FrameImport, RefusedPPixSuiteThrowsAndTheFrameIsGivenBack) {
    host.refusedSuites = {"Premiere PPix Suite"};
    LazyImporterSuites poorSuites(host.basicSuite());
    ask(0, kBgra);
    ASSERT_EQ(prepareFrame(*video, request), host::ImporterResult::imNoErr);
    ASSERT_EQ(readFrame(*video, file, request), host::ImporterResult::imNoErr);
    EXPECT_THROW(static_cast<void>(decodeFrame(*video, poorSuites.get(), request)), std::runtime_error);
    EXPECT_EQ(host.created, 1);
    request.assign(0, nullptr, 0, host.ppixSuite());
    EXPECT_EQ(host.disposed, 1);
}

TEST_F(FrameImport, RefusedFrameIsAnotherErrorAndNothingIsDecoded) {
    CapturedLog log;
    host.createResult = -2147483646;
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imOtherErr);
    EXPECT_EQ(log.lines().back(), "ERROR: CreatePPix() failed: -2147483646");
    EXPECT_EQ(library.count(Function::kDecompress), 0);
    EXPECT_FALSE(request.frame);
    EXPECT_EQ(host.disposed, 0);

    host.createResult = 0;
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imNoErr);
}

TEST_F(FrameImport, NullFrameIsAnotherError) {
    CapturedLog log;
    host.createsNull = true;
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imOtherErr);
    EXPECT_EQ(log.lines().back(), "ERROR: CreatePPix() failed: 0");
}

TEST_F(FrameImport, FrameWithoutPixelsIsAnotherErrorAndGivenBack) {
    CapturedLog log;
    host.pixelsResult = 17;
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imOtherErr);
    EXPECT_EQ(log.lines().back(), "ERROR: GetPixels() failed: 17");
    request.frame.reset();
    EXPECT_EQ(host.disposed, 1);

    host.pixelsResult = 0;
    host.pixelsNull = true;
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imOtherErr);
    EXPECT_EQ(log.lines().back(), "ERROR: GetPixels() failed: 0");
    EXPECT_EQ(library.count(Function::kDecompress), 0);
}

TEST_F(FrameImport, FrameWithoutRowBytesIsAnotherErrorAndGivenBack) {
    CapturedLog log;
    host.rowBytesResult = 18;
    EXPECT_EQ(frame(0, kBgra), host::ImporterResult::imOtherErr);
    EXPECT_EQ(log.lines().back(), "ERROR: GetRowBytes() failed: 18");
    EXPECT_EQ(library.count(Function::kDecompress), 0);
    request.frame.reset();
    EXPECT_EQ(host.disposed, 1);
}

TEST_F(FrameImport, ThousandFramesInAlternatingFormatsEndAndBeginOnEveryChange) {
    const std::uint32_t formats[]{kBgra, kYuy2};
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(frame(i % kFrames, formats[i % 2]), host::ImporterResult::imNoErr) << i;
        ASSERT_EQ(request.formatChanged, i > 0);
        host.take(request.frame.release());
    }
    const Lines calls = library.callNames();
    ASSERT_EQ(calls.size(), 2U + 999U * 3U);
    EXPECT_EQ(calls[0], "orvantis_decompress_begin");
    EXPECT_EQ(calls[1], "orvantis_decompress");
    for (std::size_t i = 2; i < calls.size(); i += 3) {
        ASSERT_EQ(calls[i], "orvantis_decompress_end") << i;
        ASSERT_EQ(calls[i + 1], "orvantis_decompress_begin") << i;
        ASSERT_EQ(calls[i + 2], "orvantis_decompress") << i;
    }
    EXPECT_EQ(host.created, 1000);
    EXPECT_EQ(host.disposed, 1000);
}

// The switch cannot be turned off again, so this one needs a process in which no test captured the log.
TEST_F(FrameImport, SteadyPlaybackAllocatesNothingWhileTheLogIsOff) {
    if (!test::canCountAllocations()) {
        GTEST_SKIP() << "this build cannot count allocations";
    }
    if (logEnabled()) {
        GTEST_SKIP() << "the log is on already";
    }
    library.setRecording(false);
    ask(9 * kFrameTicks, kBgra);
    ASSERT_EQ(
        run(),
        host::ImporterResult::imNoErr);  // begins the session and makes the buffers as large as they get
    host.take(request.frame.release());
    const host::imFrameFormat wanted{0, 0, kBgra};
    bool allDecoded = true;
    std::uint64_t allocations = 0;
    {
        test::startCounting();
        for (int i = 0; i < 100; ++i) {
            request.assign(i % kFrames * kFrameTicks, &wanted, 1, host.ppixSuite());
            allDecoded = allDecoded && run() == host::ImporterResult::imNoErr;
            host.take(request.frame.release());
        }
        allocations = test::counted().calls;
    }
    EXPECT_TRUE(allDecoded);
    EXPECT_EQ(allocations, 0U);
    EXPECT_EQ(library.count(Function::kDecompress), 101);
    EXPECT_EQ(library.count(Function::kGetString), 0) << "no text is asked for while the log is off";
}

// Through another library's code, since a compiler may leave out an allocation that it sees whole.
TEST(AllocationCounterItself, CountsAllocations) {
    if (!test::canCountAllocations()) {
        GTEST_SKIP() << "this build cannot count allocations";
    }
    test::startCounting();
    const std::string text = formatString("%0100d", 1);
    EXPECT_GE(test::counted().calls, 1U);
    EXPECT_EQ(text.size(), 100U);
}

}  // namespace
}  // namespace orvantis
