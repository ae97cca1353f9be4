// The analysis of a video stream: every way it can end, with its log lines, and what it finds.
#include "avi/avi_stream.h"
#include "video/video_info.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "diag/format.h"
#include "host/result_codes.h"
#include "tests/support/captured_log.h"
#include "tests/support/chunk_lists.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/support/fake_host/fake_host.h"
#include "tests/support/format_lists.h"
#include "video/orvantis_error.h"

namespace orvantis {
namespace {

using fakecodec::FakeCodec;
using fakecodec::Function;
using test::CapturedLog;
using test::FakeHost;

using Lines = std::vector<std::string>;

class VideoAnalysis : public testing::Test {
 protected:
    VideoAnalysis() : suites(host.basicSuite()), stream(0) {
        buildFormatTables(host.basicSuite());
        host.suiteCalls.clear();
        library.coded = {640, 480, 254, 1, 104, 0, 2, 1, 0};
        stream.format = {40, 0, 0, 0, 1, 2, 3};
        setRate(25, 1);
    }

    void setRate(std::int32_t rate, std::int32_t scale) {
        stream.header.dwRate = static_cast<std::uint32_t>(rate);
        stream.header.dwScale = static_cast<std::uint32_t>(scale);
    }

    void addFrames(int count, std::uint32_t size) {
        for (int i = 0; i < count; ++i) {
            test::appendChunk(stream.legacyEntries, {0, size, 0, 0, true});
        }
    }

    // The analysed video, as the importer makes it.
    std::int32_t analyse() {
        video.emplace(suites);
        const std::int32_t result = numberOf(video->analyseFormat(stream));
        if (result == host::imNoErr) {
            video->analyseTiming();
        }
        return result;
    }

    Lines decodeFormatCodes() const {
        Lines codes;
        for (const FormatInfo& offered : video->decodeFormats()) {
            codes.push_back(fourccToString(offered.pixelFormat));
        }
        return codes;
    }

    FakeHost host;
    FakeCodec library;
    LazyImporterSuites suites;
    AviStream stream;
    std::optional<VideoInfo> video;
};

TEST_F(VideoAnalysis, ConstructionOpensTheCodecThenAsksForTheTimeBase) {
    CapturedLog log;
    host.ticksPerSecond = 1234567890123;
    video.emplace(suites);
    EXPECT_EQ(video->ticksPerSecond(), 1234567890123);
    EXPECT_EQ(library.callNames(), (Lines{"orvantis_library_init", "orvantis_open"}));
    EXPECT_EQ(host.suiteCalls, (Lines{"+ Premiere PPix Creator Suite 1", "+ Premiere PPix Cache Suite 6",
                                      "+ Premiere PPix Suite 1", "+ Premiere Time Suite 1",
                                      "+ Premiere Image Processing Suite 2", "+ Premiere Audio Suite 1"}));
    EXPECT_EQ(log.lines().at(0), "VideoInfo::VideoInfo()");
    EXPECT_EQ(log.lines().size(), 7U);

    log.clear();
    video.reset();
    EXPECT_EQ(log.lines(), Lines{"VideoInfo::~VideoInfo()"});
    EXPECT_EQ(library.openSessions(), 0);
}

TEST_F(VideoAnalysis, FailedCodecLeavesTheConstructorBeforeAnySuite) {
    CapturedLog log;
    library.failAll(Function::kLibraryInit, 3);
    EXPECT_THROW(video.emplace(suites), OrvantisError);
    EXPECT_EQ(log.lines(), Lines{"VideoInfo::VideoInfo()"});

    library.stopFailing();
    library.failAll(Function::kOpen, 3);
    log.clear();
    EXPECT_THROW(video.emplace(suites), OrvantisError);
    EXPECT_EQ(log.lines(), Lines{"VideoInfo::VideoInfo()"});
    EXPECT_TRUE(host.suiteCalls.empty());
}

TEST_F(VideoAnalysis, RefusedTimeSuiteLeavesTheConstructorAndClosesTheCodec) {
    CapturedLog log;
    host.refusedSuites = {"Premiere Time Suite"};
    try {
        video.emplace(suites);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not acquire suite: 'Premiere Time Suite', ver: 1");
    }
    EXPECT_EQ(library.openSessions(), 0);
    EXPECT_EQ(library.count(Function::kLibraryClose), 1);
    EXPECT_EQ(log.linesWithoutSuites(), Lines{"VideoInfo::VideoInfo()"});
}

TEST_F(VideoAnalysis, HostWithoutATimeBaseHasNoFrames) {
    CapturedLog log;
    host.ticksResult = -2147483647;
    addFrames(10, 100);
    EXPECT_EQ(analyse(), host::imNoErr);
    EXPECT_EQ(video->ticksPerSecond(), 0);
    EXPECT_EQ(video->frameIndexAt(0), 4294967295U);
    EXPECT_TRUE(log.linesWithoutSuites().at(1).starts_with("Compressed format info: "));
}

TEST_F(VideoAnalysis, TimeBaseIsWhatTheHostWroteWhateverItAnswered) {
    CapturedLog log;
    host.ticksResult = -2147483647;
    host.writesTicksAnyway = true;
    addFrames(10, 100);
    EXPECT_EQ(analyse(), host::imNoErr);
    EXPECT_EQ(video->ticksPerSecond(), host.ticksPerSecond);
    EXPECT_EQ(video->frameIndexAt(0), 0U);
    EXPECT_TRUE(log.linesWithoutSuites().at(1).starts_with("Compressed format info: "));
}

TEST_F(VideoAnalysis, WholeAnalysisLogsItsFindings) {
    library.setString(kOrvantisStringTypeName, 104, "YUV 4:2:2");
    library.setString(kOrvantisStringColorSpaceName, 2, "Rec.709");
    setRate(2997, 100);
    addFrames(3, 1000);
    CapturedLog log;
    EXPECT_EQ(analyse(), host::imNoErr);
    EXPECT_EQ(log.linesWithoutSuites(),
              (Lines{"VideoInfo::VideoInfo()",
                     "Compressed format info: 640 x 480, YUV 4:2:2 (104), Rec.709 (2), range: 1",
                     "Decode formats:", "    PrPixelFormat_YUYV_422_8u_601 [yuy2]",
                     "    PrPixelFormat_YUYV_422_8u_709 [yuy3]", "    PrPixelFormat_UYVY_422_8u_601 [uyvy]",
                     "    PrPixelFormat_UYVY_422_8u_709 [uyv7]", "NumFrames: 3",
                     "AVI FPS: 2997 / 100 (29.970)", "Adjusted FPS: 30000 / 1001 (29.970)"}));
}

TEST_F(VideoAnalysis, FindingsAreThoseOfLibraryAndStream) {
    addFrames(7, 10);
    EXPECT_EQ(analyse(), host::imNoErr);
    EXPECT_EQ(video->width(), 640);
    EXPECT_EQ(video->height(), 480);
    EXPECT_EQ(video->numFrames(), 7);
    EXPECT_EQ(video->frameRate(), (FrameRate{25, 1}));
    EXPECT_EQ(video->compressedFormat().type, 104U);
    EXPECT_EQ(video->compressedFormat().range, 1U);
    EXPECT_EQ(video->subTypeInfo().subType, 0x4F385932U);
    EXPECT_EQ(video->subTypeInfo().subsamplingH, 2U);
    EXPECT_EQ(video->subTypeInfo().preferredFormats.size(), 4U);
    EXPECT_EQ(decodeFormatCodes(), (Lines{"yuy2", "yuy3", "uyvy", "uyv7"}));
    EXPECT_EQ(&video->stream(), &stream);
    EXPECT_EQ(video->fieldOrder(), 0);
    const FormatData data = video->formatData();
    EXPECT_EQ(std::vector(data.begin(), data.end()), stream.format);
    EXPECT_FALSE(video->decoder().mainSession().begun);
    EXPECT_EQ(video->decoder().mainSession().pixelFormat, 0x66646162U) << "badf";
}

TEST_F(VideoAnalysis, QueriesHandTheWholeStreamFormatToTheLibrary) {
    analyse();
    for (const fakecodec::Call& call : library.callsOf(Function::kDecompressQuery)) {
        EXPECT_EQ(call.data, video->formatData().data());
        EXPECT_EQ(call.bytes, 7U);
    }
    EXPECT_FALSE(library.callsOf(Function::kDecompressQuery).at(0).output.has_value());
    EXPECT_EQ(library.callsOf(Function::kDecompressQuery).at(0).handle,
              video->decoder().mainSession().codec.handle());
}

TEST_F(VideoAnalysis, AlphaIsThatOfTheColourModel) {
    for (const formatlists::CodedType& type : formatlists::codedTypes()) {
        library.coded.type = type.code;
        ASSERT_EQ(analyse(), host::imNoErr);
        EXPECT_EQ(video->hasAlpha(), type.alpha) << type.tag;
    }
}

TEST_F(VideoAnalysis, EmptyFormatDataIsABadFile) {
    CapturedLog log;
    stream.format.clear();
    EXPECT_EQ(analyse(), host::imBadFile);
    EXPECT_EQ(log.linesWithoutSuites(),
              (Lines{"VideoInfo::VideoInfo()", "Compressed format size is invalid"}));
    EXPECT_EQ(library.count(Function::kDecompressQuery), 0);
}

TEST_F(VideoAnalysis, ForeignFileIsRefusedAfterOneQuery) {
    CapturedLog log;
    library.failAll(Function::kDecompressQuery, 7);
    EXPECT_EQ(analyse(), host::imBadFile);
    const Lines lines = log.linesWithoutSuites();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_TRUE(
        lines[1].starts_with("Decompress query failed: Orvantis error (7): error7: decompressQuery({0x"))
        << lines[1];
    EXPECT_TRUE(lines[1].ends_with(",7},null)")) << lines[1];
    EXPECT_EQ(library.count(Function::kDecompressQuery), 1);
    EXPECT_EQ(library.count(Function::kOpen), 1);
}

TEST_F(VideoAnalysis, UnknownCodedTypeIsAnotherError) {
    CapturedLog log;
    library.setString(kOrvantisStringTypeName, 116, "GREY12");
    library.coded.type = 116;
    EXPECT_EQ(analyse(), host::imOtherErr);
    EXPECT_EQ(log.linesWithoutSuites().back(), "Unknown compressed type: GREY12 (116)");
    EXPECT_EQ(library.count(Function::kDecompressQuery), 1);
}

TEST_F(VideoAnalysis, UnknownCodedTypeIsLoggedAsAnUnsignedNumber) {
    CapturedLog log;
    library.setNullString(kOrvantisStringTypeName, 4294967295);
    library.coded.type = 4294967295;
    EXPECT_EQ(analyse(), host::imOtherErr);
    EXPECT_EQ(log.linesWithoutSuites().back(), "Unknown compressed type:  (4294967295)");
}

TEST_F(VideoAnalysis, UnknownCodedTypeInTheSecondAnswerIsTheSameError) {
    CapturedLog log;
    library.setString(kOrvantisStringTypeName, 116, "GREY12");
    // The rows are asked for behind the first answer and ahead of the second.
    library.accepts = [this](const OrvantisFrameFormat&) {
        library.coded.type = 116;
        return true;
    };
    EXPECT_EQ(analyse(), host::imOtherErr);
    EXPECT_EQ(log.linesWithoutSuites().back(), "Unknown compressed type: GREY12 (116)");
    EXPECT_EQ(library.openSessions(), 1) << "only the video's own";
}

TEST_F(VideoAnalysis, NoFormatToDecodeIntoIsABadFile) {
    CapturedLog log;
    library.accepts = [](const OrvantisFrameFormat&) { return false; };
    EXPECT_EQ(analyse(), host::imBadFile);
    const Lines lines = log.linesWithoutSuites();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[2], "Decode formats:");
    EXPECT_EQ(lines[3], "No formats to decode into: decodeFormats is empty");
}

TEST_F(VideoAnalysis, EveryFailingCodecCallIsAnsweredOrThrown) {
    CapturedLog log;
    // Calls of one analysis: query 1, then in a second session one for each row and the last for the type.
    const auto rows = static_cast<int>(formatlists::deliveredFormats().size());
    library.failCall(Function::kDecompressQuery, rows + 2, 9);
    EXPECT_EQ(analyse(), host::imBadFile);
    EXPECT_TRUE(log.linesWithoutSuites().back().starts_with("Decompress query failed: Orvantis error (9): "));

    for (const Function function : {Function::kLibraryInit, Function::kOpen}) {
        video.reset();
        library.stopFailing();
        library.forgetCalls();
        library.failCall(function, 2, 10);
        EXPECT_EQ(analyse(), host::imBadFile) << fakecodec::nameOf(function);
        EXPECT_EQ(log.linesWithoutSuites().back(),
                  "Decompress query failed: Orvantis error (10): error10: OrvantisCodec(): " +
                      std::string(fakecodec::nameOf(function)) + "()");
        EXPECT_EQ(library.openSessions(), 1) << "only the video's own";
    }
}

TEST_F(VideoAnalysis, FrameCountIsTheLengthOfTheListInForce) {
    addFrames(5, 1);
    stream.openDmlEntries = test::chunkListOf(std::vector<IndexEntry>(9));
    analyse();
    EXPECT_EQ(video->numFrames(), 5);
    stream.hasOpenDmlIndex = true;
    analyse();
    EXPECT_EQ(video->numFrames(), 9);
}

TEST_F(VideoAnalysis, StreamWithoutIndexHasNoFramesAndAValidRate) {
    CapturedLog log;
    setRate(2147483647, 2);
    analyse();
    EXPECT_EQ(video->numFrames(), 0);
    EXPECT_EQ(video->frameRate(), (FrameRate{2147483647, 2}));
    const Lines lines = log.linesWithoutSuites();
    EXPECT_EQ(lines[lines.size() - 3], "NumFrames: 0");
    EXPECT_EQ(lines[lines.size() - 2], "AVI FPS: 2147483647 / 2 (1073741823.500)");
    EXPECT_EQ(lines[lines.size() - 1], "Adjusted FPS: 2147483647 / 2 (1073741823.500)");
}

// Scale 0 shows as the C library's infinity; the invalid rate is told first.
TEST_F(VideoAnalysis, RateWithScaleZeroIsReplaced) {
    CapturedLog log;
    setRate(25, 0);
    analyse();
    EXPECT_EQ(video->frameRate(), (FrameRate{30, 1}));
    const Lines lines = log.linesWithoutSuites();
    EXPECT_EQ(lines[lines.size() - 4], "Invalid FPS: 25/0");
    EXPECT_EQ(lines[lines.size() - 2], "AVI FPS: 25 / 0 (inf)");
    EXPECT_EQ(lines[lines.size() - 1], "Adjusted FPS: 30 / 1 (30.000)");
}

TEST_F(VideoAnalysis, RateAndScaleAreSigned) {
    CapturedLog log;
    stream.header.dwRate = 0xFFFFFFE7;  // -25
    stream.header.dwScale = 2;
    analyse();
    EXPECT_EQ(video->frameRate(), (FrameRate{-25, 2}));
    const Lines lines = log.linesWithoutSuites();
    EXPECT_EQ(lines[lines.size() - 2], "AVI FPS: -25 / 2 (-12.500)");
}

TEST_F(VideoAnalysis, TimeLapseRateRoundsToNothingAndHasNoFrameAtAnyTime) {
    CapturedLog log;
    setRate(1, 200);
    addFrames(3, 1);
    EXPECT_EQ(analyse(), host::imNoErr);
    EXPECT_EQ(video->frameRate(), (FrameRate{0, 1}));
    EXPECT_EQ(log.linesWithoutSuites().back(), "Adjusted FPS: 0 / 1 (0.000)");
    EXPECT_EQ(video->frameIndexAt(0), 4294967295U);
}

TEST_F(VideoAnalysis, DurationIsHeldIn31Bits) {
    CapturedLog log;
    setRate(1000, 1000000007);  // about one frame in 11 days: nothing rounds it
    addFrames(3, 1);
    analyse();
    EXPECT_EQ(video->frameRate().numerator, 0)
        << "below 0.01 it rounds to 0 / 1 before the duration is looked at";

    setRate(150000, 10000019);  // 0.015 frames a second, three frames: 30000057 fits
    log.clear();
    analyse();
    EXPECT_EQ(video->frameRate(), (FrameRate{150000, 10000019}));
    addFrames(300, 1);  // 3030005757 does not
    log.clear();
    analyse();
    EXPECT_EQ(video->frameRate(), (FrameRate{106310, 7087404}));
    const Lines lines = log.linesWithoutSuites();
    EXPECT_EQ(lines[lines.size() - 4], "Video duration overflow detected, adjusting FPS");
    EXPECT_EQ(lines[lines.size() - 1], "Adjusted FPS: 106310 / 7087404 (0.015)");
}

TEST_F(VideoAnalysis, FrameIndexFollowsTheHostsTimeBase) {
    host.ticksPerSecond = 1000;
    setRate(25, 1);
    analyse();
    EXPECT_EQ(video->frameIndexAt(39), 0U);
    EXPECT_EQ(video->frameIndexAt(40), 1U);
    EXPECT_EQ(video->frameIndexAt(-40), 4294967295U);
}

TEST_F(VideoAnalysis, DescriptionStatesOneFactALine) {
    addFrames(50, 1048576);
    analyse();
    EXPECT_EQ(video->description(),
              "    Codec: Orvantis 8-bit YUV 4:2:2 [O8Y2]\n"
              "    Frame size: 640 x 480\n"
              "    Frame rate: 25.000 (25/1)\n"
              "    Frames: 50\n"
              "    Duration: 2.000 s\n"
              "    Stream data: 50.00 MiB\n"
              "    Mean data rate: 25.00 MiB/s\n"
              "    Decode formats: YUYV 4:2:2 [8] Rec.601, YUYV 4:2:2 [8] Rec.709, "
              "UYVY 4:2:2 [8] Rec.601, UYVY 4:2:2 [8] Rec.709");
}

TEST_F(VideoAnalysis, DescriptionNamesTheFilesOwnRateOnlyWhenItsValueDiffers) {
    setRate(2997, 100);
    analyse();
    EXPECT_NE(video->description().find("    Frame rate: 29.970 (30000/1001)\n"
                                        "    Frame rate in the file: 29.970 (2997/100)\n"),
              std::string::npos)
        << video->description();
    setRate(50, 2);
    analyse();
    EXPECT_EQ(video->description().find("in the file"), std::string::npos) << video->description();
    setRate(0, 0);
    analyse();
    EXPECT_NE(video->description().find("    Frame rate: 30.000 (30/1)\n"
                                        "    Frame rate in the file: invalid (0/0)\n"),
              std::string::npos)
        << video->description();
    setRate(0, 1);
    analyse();
    EXPECT_NE(video->description().find("    Frame rate in the file: invalid (0/1)\n"), std::string::npos)
        << video->description();
    setRate(25, 0);
    analyse();
    EXPECT_NE(video->description().find("    Frame rate: 30.000 (30/1)\n"
                                        "    Frame rate in the file: invalid (25/0)\n"),
              std::string::npos)
        << video->description();
}

TEST_F(VideoAnalysis, DescriptionOfAStreamWithoutFramesOrRateHasNoInventedNumbers) {
    analyse();
    EXPECT_NE(video->description().find("    Frames: 0\n"
                                        "    Duration: 0.000 s\n"
                                        "    Stream data: 0.00 MiB\n"
                                        "    Mean data rate: unknown\n"),
              std::string::npos)
        << video->description();
    // A negative scale stays negative where no duration has to be limited.
    setRate(10, -3);
    analyse();
    EXPECT_NE(video->description().find("    Frame rate: -3.333 (10/-3)\n"
                                        "    Frames: 0\n"
                                        "    Duration: unknown\n"),
              std::string::npos)
        << video->description();
    setRate(-25, 1);
    addFrames(4, 3000000);
    analyse();
    EXPECT_NE(video->description().find("    Frames: 4\n"
                                        "    Duration: unknown\n"
                                        "    Stream data: 11.44 MiB\n"
                                        "    Mean data rate: unknown\n"),
              std::string::npos)
        << video->description();
}

}  // namespace
}  // namespace orvantis
