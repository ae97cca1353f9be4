// What the host shows of a described file: the text of its Properties window, the data-rate table, the pixel
// formats.
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/text.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"
#include "tests/support/format_lists.h"

namespace {

using formatlists::Family;
using orvantis::test::AviBuilder;

using clips::kPattern;

class FileAnalysis : public ClipTest {};

// --- imAnalysis ---

// The whole text of the standard clip.
constexpr const char* kText = R"(
Video stream:
    Codec: Orvantis 8-bit YUV 4:2:2 [O8Y2]
    Frame size: 16 x 4
    Frame rate: 25.000 (25/1)
    Frames: 5
    Duration: 0.200 s
    Stream data: 0.00 MiB
    Mean data rate: 0.00 MiB/s
    Decode formats: YUYV 4:2:2 [8] Rec.601, YUYV 4:2:2 [8] Rec.709, UYVY 4:2:2 [8] Rec.601, UYVY 4:2:2 [8] Rec.709
Audio stream 1:
    Sample type: 16 bit
    Channels: 2
    Sample rate: 8000 Hz
    Sample frames: 1600
    Duration: 0.200 s
    Channel mask: none
    Channel labels: FrontLeft, FrontRight
)";

TEST_F(FileAnalysis, TellsTheUserOfEveryStream) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto answer = clip.analysis(4096);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_EQ(answer.text, kText);
    EXPECT_TRUE(wroteExactly(answer.answer, {})) << "only the buffer is written, not the record";
}

TEST_F(FileAnalysis, CutsTheTextToTheBufferAndEndsItWithAZero) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const std::string whole = kText;
    const auto length = static_cast<std::int32_t>(whole.size());
    for (const std::int32_t size :
         {1, 2, 15, 16, 100, length - 1, length, length + 1, length + 2, length + 100}) {
        const auto answer = clip.analysis(size, true, 0xEE);
        EXPECT_EQ(answer.result, host::imNoErr) << size;
        const std::string expected = whole.substr(0, static_cast<std::size_t>(size) - 1);
        EXPECT_EQ(answer.text, expected) << size;
        ASSERT_TRUE(answer.terminated) << size;
        // Nothing behind the terminator is touched.
        EXPECT_TRUE(std::all_of(answer.buffer.begin() + static_cast<std::ptrdiff_t>(expected.size()) + 1,
                                answer.buffer.end(), [](std::uint8_t byte) { return byte == 0xEE; }))
            << size;
    }
}

TEST_F(FileAnalysis, NumbersSoundStreamsByTheirPlaceInTheFile) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(orvantis::test::pcmStream(1, 8000, 8));
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addStream(orvantis::test::extensibleStream(6, 48000, 24, 1, 0x3F));
    orvantis::test::StreamPlan unusable = orvantis::test::pcmStream(2, 48000, 16);
    unusable.format[14] = 12;  // wBitsPerSample
    avi.addStream(unusable);
    avi.addFilledChunk(0, 4000, 0x80).addChunk(1, clips::codedPicture(0)).addFilledChunk(2, 18 * 48000, 0);
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imIterateStreams);
    const std::string text = clip.analysis(8192).text;
    EXPECT_EQ(text.substr(text.find("Audio stream")), R"(Audio stream 0:
    Sample type: 8 bit
    Channels: 1
    Sample rate: 8000 Hz
    Sample frames: 4000
    Duration: 0.500 s
    Channel mask: none
    Channel labels: none
Audio stream 2:
    Sample type: 24 bit
    Channels: 6
    Sample rate: 48000 Hz
    Sample frames: 48000
    Duration: 1.000 s
    Channel mask: 0x3f
    Channel labels: FrontLeft, FrontRight, FrontCenter, LowFrequency, BackLeft, BackRight
Audio stream 3:
    Not usable: Avi unsupported audio bits per sample: 12
)");
}

TEST_F(FileAnalysis, TellsTheFilesOwnRateWhenItDiffers) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.audioStreams = 0, .rate = 2997, .scale = 100}));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const std::string text = clip.analysis(4096).text;
    EXPECT_NE(
        text.find("\n    Frame rate: 29.970 (30000/1001)\n    Frame rate in the file: 29.970 (2997/100)\n"),
        std::string::npos)
        << text;
}

TEST_F(FileAnalysis, OfTheTextDoesNotDisturbTheSound) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
    ASSERT_EQ(clip.analysis(4096).result, host::imNoErr);
    const auto next = clip.importAudio(-1, 1, 2);
    EXPECT_EQ(next.channels[0][0], 100.0F / 32768.0F);
}

// --- imDataRateAnalysis ---

host::imDataRateAnalysisRec dataRateRecord(const simhost::Clip& clip, std::int32_t bufferSize,
                                           host::imDataSample* samples) {
    auto record = simhost::filledRecord<host::imDataRateAnalysisRec>(kPattern);
    record.privatedata = clip.privateData();
    record.buffersize = bufferSize;
    record.buffer = samples;
    return record;
}

class DataRates : public FileAnalysis {
 protected:
    /// A clip with chunks of these sizes.
    simhost::Clip open(const std::vector<std::uint32_t>& sizes, std::uint32_t rate = 25,
                       std::uint32_t scale = 1) {
        AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, rate, scale));
        for (const std::uint32_t size : sizes) {
            avi.addFilledChunk(0, size, 1);
        }
        simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
        return clip;
    }
};

TEST_F(DataRates, WithoutABufferOnlyTheSizeIsTold) {
    startAndInit();
    const simhost::Clip clip = open({128, 200, 129});
    const auto answer =
        importer().callWithRecord(host::imDataRateAnalysis, nullptr, dataRateRecord(clip, 777, nullptr));
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(answer, {number32(16, 24, "buffersize")}));
}

TEST_F(DataRates, WithABufferEveryFrameIsAKeyFrameOfItsChunksSize) {
    startAndInit();
    const simhost::Clip clip = open({128, 0, 129}, 30000, 1001);
    host::imDataSample samples[3];
    const auto answer =
        importer().callWithRecord(host::imDataRateAnalysis, nullptr, dataRateRecord(clip, 24, samples));
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(answer, {number32(28, 0, "baserate")}));
    const std::uint32_t expected[3][2] = {
        {0x80000000U | 1001U, 128}, {0x80000000U | 1001U, 0}, {0x80000000U | 1001U, 129}};
    EXPECT_EQ(0, std::memcmp(samples, expected, sizeof expected));
}

TEST_F(DataRates, NeverMoreIsWrittenThanTheBufferHolds) {
    startAndInit();
    const simhost::Clip clip = open({128, 129, 130});
    for (const std::int32_t size : {-2147483647 - 1, -1, 0, 1, 7, 8, 15, 16, 23, 24, 25, 32, 40}) {
        std::vector<std::uint8_t> memory(48, 0xEE);
        auto* const samples = reinterpret_cast<host::imDataSample*>(memory.data());
        const auto answer =
            importer().callWithRecord(host::imDataRateAnalysis, nullptr, dataRateRecord(clip, size, samples));
        EXPECT_EQ(answer.result, host::imNoErr) << size;
        EXPECT_TRUE(wroteExactly(answer, {number32(28, 0, "baserate")})) << size;
        const std::size_t written = 8U * static_cast<std::size_t>(std::clamp(size / 8, 0, 3));
        EXPECT_TRUE(std::all_of(memory.begin() + static_cast<std::ptrdiff_t>(written), memory.end(),
                                [](std::uint8_t byte) { return byte == 0xEE; }))
            << size;
        for (std::size_t i = 0; i < written / 8; ++i) {
            EXPECT_EQ(memory[8 * i + 4], 128 + i) << size;
            EXPECT_EQ(memory[8 * i + 3], 0x80) << size;
        }
    }
}

TEST_F(DataRates, OfAFileWithoutFramesAreEmpty) {
    startAndInit();
    const simhost::Clip clip = open({});
    const auto rates = clip.dataRates();
    EXPECT_EQ(rates.sizingResult, host::imNoErr);
    EXPECT_EQ(rates.bufferSize, 0);
    EXPECT_EQ(rates.result, host::imNoErr);
    EXPECT_TRUE(rates.samples.empty());
}

TEST_F(DataRates, ComeFromTheOpenDmlIndexWhereThatCounts) {
    startAndInit();
    AviBuilder avi = clips::builder({.frames = 4, .openDml = orvantis::test::OpenDml::kSuperIndex});
    // Two frames in each form: idx1 covers the first form only.
    avi.chunksPerForm(4);
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(clip.dataRates().samples.size(), 4U);
    const auto frame = clip.getFrame(3, host::PrPixelFormat_YUYV_422_8u_601);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(3));
}

// --- imGetIndPixelFormat ---

class OfferedFormats : public FileAnalysis {
 protected:
    std::string offered(const char* tag, std::uint16_t bits = 24) {
        AviBuilder avi;
        avi.addStream(orvantis::test::videoStream(tag, 16, 4, 25, 1, bits)).addFilledChunk(0, 1000, 0);
        simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
        EXPECT_EQ(clip.getInfo(0).result, host::imNoErr) << tag;
        const auto formats = clip.pixelFormats();
        EXPECT_EQ(formats.lastResult, host::imBadFormatIndex) << tag;
        std::string text;
        for (const std::uint32_t format : formats.formats) {
            text += simhost::codeText(format, false) + " ";
        }
        return text;
    }
    static std::string delivered(std::initializer_list<Family> families) {
        std::string text;
        for (const std::string& code : formatlists::deliveredCodes(families)) {
            text += code + " ";
        }
        return text;
    }
};

TEST_F(OfferedFormats, FillTheRecordsFormatAndNothingElse) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_TRUE(wroteExactly(clip.pixelFormat(0), {text(8, "yuy2", "outPixelFormat")}));
    EXPECT_TRUE(wroteExactly(clip.pixelFormat(3), {text(8, "uyv7", "outPixelFormat")}));
}

TEST_F(OfferedFormats, EndWith301AndAnUntouchedRecord) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    for (const std::uint32_t index : {4U, 5U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        const auto answer = clip.pixelFormat(index);
        EXPECT_EQ(answer.result, host::imBadFormatIndex) << index;
        EXPECT_TRUE(wroteExactly(answer, {})) << index;
    }
}

TEST_F(OfferedFormats, AreTheOnesThatTheCodedTypePrefers) {
    startAndInit();
    EXPECT_EQ(offered("O8Y2"), "yuy2 yuy3 uyvy uyv7 ");
    EXPECT_EQ(offered("O8Y0"), "yuy2 yuy3 uyvy uyv7 ");
    EXPECT_EQ(offered("O8G0"), "yuy2 yuy3 uyvy uyv7 ");
    EXPECT_EQ(offered("O8YA"), "vuya VUYA ");
    EXPECT_EQ(offered("O8Y4"), "vuyx vux7 ");
    EXPECT_EQ(offered("O0Y0"), "v210 v211 ");
}

TEST_F(OfferedFormats, AreAllThatTheLibraryAcceptsWithoutAPreference) {
    startAndInit();
    const std::string rgb = delivered({Family::kRgb});
    EXPECT_TRUE(rgb.starts_with("bgra argb bgrx xrgb ")) << rgb;
    EXPECT_EQ(offered("O8RA", 32), rgb);
    EXPECT_EQ(offered("O4RG"), rgb);
    // 10-bit 4:2:2 is not narrowed to v210 and v211.
    EXPECT_EQ(offered("O0Y2"), delivered({Family::kYuv422, Family::kRgb}));
}

}  // namespace
