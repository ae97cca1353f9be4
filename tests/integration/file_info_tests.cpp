// imGetInfo8: what the host learns of a file, byte by byte, and which streams it is led to.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/integration/plugin_records.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using testing::Contains;

using clips::kPattern;
using clips::kYuy2;

/// The fields of every answer that is no failure.
std::vector<Field> always(bool hasVideo, bool hasAudio) {
    return {number8(0, hasVideo ? 1 : 0, "hasVideo"), number8(1, hasAudio ? 1 : 0, "hasAudio"),
            number32(194, 4, "accessModes"), number8(214, 1, "hasDataRate")};
}

struct Video {
    std::uint32_t width = 16;
    std::uint32_t height = 4;
    std::uint16_t depth = 24;
    const char* subTypeBackwards = "2Y8O";
    std::uint8_t alphaType = 5;
    std::uint32_t scale = 25;
    std::uint32_t sampleSize = 1;
    std::uint32_t duration = 5;
};

void addVideo(std::vector<Field>& fields, const Video& video) {
    const std::vector<Field> more = {
        number32(2, video.width, "imageWidth"),
        number32(6, video.height, "imageHeight"),
        number16(12, video.depth, "depth"),
        text(14, video.subTypeBackwards, "subType, lowest byte first"),
        number8(18, 0, "fieldType: progressive"),
        number8(22, video.alphaType, "alphaType"),
        number32(34, 1, "pixelAspectNum"),
        number32(38, 1, "pixelAspectDen"),
        number32(50, 1, "supportsAsyncIO"),
        number32(54, 1, "supportsGetSourceVideo"),
        number32(58, 0, "hasPulldown"),
        number32(162, video.scale, "vidScale"),
        number32(166, video.sampleSize, "vidSampleSize"),
        number32(170, video.duration, "vidDuration"),
    };
    fields.insert(fields.end(), more.begin(), more.end());
}

void addAudio(std::vector<Field>& fields, std::uint32_t channels, float rate, std::uint32_t sampleType,
              std::uint64_t frames) {
    const std::vector<Field> more = {number32(174, channels, "numChannels"), float32(178, rate, "sampleRate"),
                                     number32(182, sampleType, "sampleType"),
                                     number64(186, frames, "audDuration")};
    fields.insert(fields.end(), more.begin(), more.end());
}

class FileInfo : public ClipTest {
 protected:
    simhost::Clip open(const Bytes& bytes) {
        simhost::Clip clip(importer(), place(u8"clip.avi", bytes));
        EXPECT_EQ(clip.openResult(), host::imNoErr);
        return clip;
    }
};

TEST_F(FileInfo, WritesTheFieldsOfVideoAndSoundAndNothingElse) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    std::vector<Field> fields = always(true, true);
    addVideo(fields, {});
    addAudio(fields, 2, 8000.0F, 3, 1600);
    EXPECT_TRUE(wroteExactly(answer, fields));
}

TEST_F(FileInfo, StaysInsideTheShorterRecordOfAnOlderHost) {
    startAndInit(*simhost::findProfile("older"));
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    const auto answer = clip.getInfo(0);  // simhost watches the bytes behind offset 5373
    EXPECT_EQ(answer.result, host::imNoErr);
    std::vector<Field> fields = always(true, true);
    addVideo(fields, {});
    addAudio(fields, 2, 8000.0F, 3, 1600);
    EXPECT_TRUE(wroteExactly(answer, fields));
}

TEST_F(FileInfo, WritesNoSoundFieldsForASilentFile) {
    logOn();
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip({.audioStreams = 0}));
    static_cast<void>(log().news());
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    std::vector<Field> fields = always(true, false);
    addVideo(fields, {});
    EXPECT_TRUE(wroteExactly(answer, fields));
    EXPECT_TRUE(
        log().news().ends_with("\nAdjusted FPS: 25 / 1 (25.000)\n"
                               "AudioInfo::AudioInfo()\n"
                               "Avi has no audio stream\n"
                               "AudioInfo::~AudioInfo()\n"
                               "    [imNoErr] (0)\n"));
    EXPECT_EQ(clip.importAudio(0, 10, 2).result, 99);
}

TEST_F(FileInfo, TellsStraightAlphaAndTwiceTheTimeBaseOfATrickyRate) {
    startAndInit();
    importer().setRecordFill(kPattern);
    // 29.97 frames a second, written carelessly; RGBA, 4 planes of one byte a pixel.
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8RA", 8, 2, 2997, 100, 32));
    for (int i = 0; i < 3; ++i) {
        avi.addFilledChunk(0, 64, 0x40);
    }
    simhost::Clip clip = open(avi.build());
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    std::vector<Field> fields = always(true, false);
    addVideo(fields, {.width = 8,
                      .height = 2,
                      .depth = 32,
                      .subTypeBackwards = "AR8O",
                      .alphaType = 1,
                      .scale = 30000,
                      .sampleSize = 1001,
                      .duration = 3003});
    EXPECT_TRUE(wroteExactly(answer, fields));
}

TEST_F(FileInfo, IsTheSameEachTime) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    const auto first = clip.getInfo(0);
    const auto second = clip.getInfo(0);
    EXPECT_EQ(second.result, host::imNoErr);
    EXPECT_EQ(first.changedBytes(), second.changedBytes());
    // Every byte, padding included.
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison,cert-exp42-c,cert-flp37-c)
    EXPECT_EQ(0, std::memcmp(&first.record, &second.record, sizeof first.record));
}

TEST_F(FileInfo, ReplacesTheAnalysesEachTime) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
    static_cast<void>(log().news());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_TRUE(log().newsBehind("fileInfoRec8P->streamIdx: 0").starts_with(R"(
VideoInfo::~VideoInfo()
AudioInfo::~AudioInfo()
VideoInfo::VideoInfo()
Compressed format info: 16 x 4, YUV422 8-bit (104), Rec.601 (1), range: 1
)"));
    // Sequential sound begins anew with the new analysis.
    ASSERT_EQ(clip.importAudio(-1, 10, 2).result, host::imNoErr);
    EXPECT_THAT(log().newLines(), Contains("startPos                  : 0"));
    EXPECT_TRUE(clip.getFrame(4, kYuy2).frame.has_value());
}

TEST_F(FileInfo, SeesAFileThatHasGrownMeanwhile) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.frames = 2}));
    const auto before = clip.getInfo(0);
    EXPECT_EQ(simhost::byValue(before.record.vidDuration), 2);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    placeClip({.frames = 9});
    ASSERT_EQ(clip.reopen().result, host::imNoErr);
    const auto after = clip.getInfo(0);
    EXPECT_EQ(simhost::byValue(after.record.vidDuration), 9);
    const auto frame = clip.getFrame(8, kYuy2);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(8));
}

// --- streams ---

TEST_F(FileInfo, ThreeSoundStreamsAreWalkedTo19) {
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip({.audioStreams = 3}));
    const auto streams = clip.walkStreams();
    ASSERT_EQ(streams.size(), 3U);
    EXPECT_EQ(streams[0].answer.result, host::imIterateStreams);
    EXPECT_EQ(streams[1].answer.result, host::imIterateStreams);
    EXPECT_EQ(streams[2].answer.result, host::imBadStreamIndex);
    std::vector<Field> first = always(true, true);
    addVideo(first, {});
    addAudio(first, 2, 8000.0F, 3, 1600);
    EXPECT_TRUE(wroteExactly(streams[0].answer, first));
    // Further streams carry sound only; the last one is filled too, in spite of its answer.
    std::vector<Field> further = always(false, true);
    addAudio(further, 2, 8000.0F, 3, 1600);
    EXPECT_TRUE(wroteExactly(streams[1].answer, further));
    EXPECT_TRUE(wroteExactly(streams[2].answer, further));
    EXPECT_EQ(clip.pixelFormat(0).result, 99) << "the stream asked for last has no video";
}

TEST_F(FileInfo, TwoSoundStreamsAre18And19) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.audioStreams = 2}));
    EXPECT_EQ(clip.getInfo(0).result, host::imIterateStreams);
    EXPECT_EQ(clip.getInfo(1).result, host::imBadStreamIndex);
    EXPECT_EQ(clip.getInfo(2).result, host::imBadStreamIndex);
    EXPECT_EQ(clip.getInfo(0).result, host::imIterateStreams) << "back again";
}

TEST_F(FileInfo, EachStreamSoundsItsOwn) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addStream(orvantis::test::pcmStream(1, 8000, 16)).addStream(orvantis::test::pcmStream(4, 48000, 8));
    avi.addChunk(0, clips::codedPicture(0));
    avi.addFilledChunk(1, 2000, 0x11).addFilledChunk(2, 2000, 0x90);
    const Bytes bytes = avi.build();
    simhost::Clip clip = open(bytes);
    const auto first = clip.getInfo(0);
    EXPECT_EQ(first.result, host::imIterateStreams);
    EXPECT_EQ(simhost::byValue(first.record.audInfo.numChannels), 1);
    EXPECT_EQ(clip.importAudio(0, 1, 1).channels[0][0], static_cast<float>(0x1111) / 32768.0F);
    const auto second = clip.getInfo(1);
    EXPECT_EQ(simhost::byValue(second.record.audInfo.numChannels), 4);
    EXPECT_EQ(simhost::byValue(second.record.audDuration), 500);
    EXPECT_EQ(simhost::byValue(second.record.audInfo.sampleType), 1U);
    EXPECT_EQ(clip.importAudio(0, 1, 4).channels[3][0], static_cast<float>(0x10) / 128.0F);
}

TEST_F(FileInfo, AnIndexBehindTheOnlySoundStreamLeavesADummy) {
    logOn();
    startAndInit();
    importer().setRecordFill(kPattern);
    simhost::Clip clip(importer(), placeClip());
    static_cast<void>(log().news());
    const auto answer = clip.getInfo(1);
    EXPECT_EQ(answer.result, host::imBadStreamIndex);
    // The silent placeholder: one channel at the least rate, no samples.
    std::vector<Field> fields = always(false, true);
    addAudio(fields, 1, 1000.0F, 14, 0);
    EXPECT_TRUE(wroteExactly(answer, fields));
    EXPECT_EQ(log().newsBehind("fileInfoRec8P->streamIdx: 1"), R"(
AudioInfo::AudioInfo()
Avi invalid audio stream index: 1
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Creator Suite', ptr: <address>
Acquiring suite: r: 0, v: 6, n: 'Premiere PPix Cache Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere PPix Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Time Suite', ptr: <address>
Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: <address>
Acquiring suite: r: 0, v: 1, n: 'Premiere Audio Suite', ptr: <address>
Audio is INVALID! Dummy:
Audio info:
    wFormatTag:      0
    format guid:     00000000-0000-0010-8000-00aa00389b71
    nChannels:       0
    nSamplesPerSec:  0
    wBitsPerSample:  0
    dwChannelMask:   0x0
    numSampleFrames: 0
    [imBadStreamIndex] (19)
)");
    // It reads as whatever the host's buffers hold, and has no layout.
    const auto sound = clip.importAudio(0, 8, 1);
    EXPECT_EQ(sound.result, host::imNoErr);
    EXPECT_THAT(sound.channels[0], testing::Each(simhost::Clip::kAudioPrefill));
    EXPECT_EQ(clip.channelLayout().result, host::imUnsupported);
}

TEST_F(FileInfo, AnIndexIntoASilentFileLeavesADummyToo) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.audioStreams = 0}));
    const auto answer = clip.getInfo(1);
    EXPECT_EQ(answer.result, host::imBadStreamIndex);
    EXPECT_EQ(simhost::byValue(answer.record.hasVideo), 0);
    EXPECT_EQ(simhost::byValue(answer.record.hasAudio), 1);
    EXPECT_THAT(log().newLines(), Contains("Avi has no audio stream"));
}

TEST_F(FileInfo, IndexesFromHostsGoneWrongDoNotCrash) {
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    for (const std::int32_t index : {2, 100, 2147483647}) {
        EXPECT_EQ(clip.getInfo(index).result, host::imBadStreamIndex) << index;
    }
    for (const std::int32_t index : {-1, -2147483647 - 1}) {
        EXPECT_EQ(clip.getInfo(index).result, host::imIterateStreams) << index;
    }
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
}

TEST_F(FileInfo, AFileWithoutVideoIsRefusedEvenWhenItHasSound) {
    logOn();
    startAndInit();
    importer().setRecordFill(kPattern);
    AviBuilder avi;
    avi.addStream(orvantis::test::pcmStream(2, 48000, 16)).addFilledChunk(0, 400, 1);
    simhost::Clip clip = open(avi.build());
    static_cast<void>(log().news());
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imBadFile);
    EXPECT_TRUE(wroteExactly(answer, {}));
    EXPECT_EQ(log().newsBehind("fileInfoRec8P->streamIdx: 0"), R"(
Avi has no video stream
    [imBadFile] (2)
)");
}

TEST_F(FileInfo, OfTwoVideoStreamsTheFirstCounts) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addStream(orvantis::test::videoStream("O8RG", 32, 8, 50, 1));
    avi.addChunk(0, clips::codedPicture(7)).addFilledChunk(1, 32 * 8 * 3, 0);
    simhost::Clip clip = open(avi.build());
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_EQ(simhost::byValue(answer.record.vidInfo.imageWidth), 16);
    const auto frame = clip.getFrame(0, kYuy2);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(7));
}

TEST_F(FileInfo, SoundMayComeBeforeTheVideo) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(orvantis::test::pcmStream(2, 8000, 16));
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addChunk(0, clips::codedSound(0, 320)).addChunk(1, clips::codedPicture(2));
    simhost::Clip clip = open(avi.build());
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto frame = clip.getFrame(0, kYuy2);
    ASSERT_TRUE(frame.frame.has_value());
    EXPECT_EQ(frame.frame->picture(), clips::yuy2Picture(2));
    EXPECT_EQ(clip.importAudio(1, 1, 2).channels[0][0], 1.0F / 32768.0F);
}

// --- sound that cannot be used ---

orvantis::test::StreamPlan twelveBitSound() {
    orvantis::test::StreamPlan plan = orvantis::test::pcmStream(2, 48000, 16);
    plan.format[14] = 12;  // wBitsPerSample
    return plan;
}

TEST_F(FileInfo, TheOnlySoundStreamIsDroppedWhenItIsUnusable) {
    logOn();
    startAndInit();
    importer().setRecordFill(kPattern);
    AviBuilder avi = clips::builder({.audioStreams = 0});
    avi.addStream(twelveBitSound());
    simhost::Clip clip = open(avi.build());
    static_cast<void>(log().news());
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    std::vector<Field> fields = always(true, false);
    addVideo(fields, {});
    EXPECT_TRUE(wroteExactly(answer, fields));
    EXPECT_TRUE(
        log().news().ends_with("AudioInfo::AudioInfo()\n"
                               "Avi unsupported audio bits per sample: 12\n"
                               "AudioInfo::~AudioInfo()\n"
                               "    [imNoErr] (0)\n"));
}

TEST_F(FileInfo, AnUnusableSoundStreamAmongSeveralStaysAsASilentPlaceholder) {
    logOn();
    startAndInit();
    importer().setRecordFill(kPattern);
    AviBuilder avi = clips::builder({.audioStreams = 0});
    avi.addStream(twelveBitSound()).addStream(orvantis::test::pcmStream(1, 8000, 8));
    avi.addFilledChunk(2, 100, 0x80);
    simhost::Clip clip = open(avi.build());
    static_cast<void>(log().news());
    const auto first = clip.getInfo(0);
    EXPECT_EQ(first.result, host::imIterateStreams);
    std::vector<Field> fields = always(true, true);
    addVideo(fields, {});
    addAudio(fields, 2, 48000.0F, 14, 0);
    EXPECT_TRUE(wroteExactly(first, fields));
    EXPECT_TRUE(
        log().news().ends_with("AudioInfo::AudioInfo()\n"
                               "Avi unsupported audio bits per sample: 12\n"
                               "Audio is INVALID! Dummy:\n"
                               "Audio info:\n"
                               "    wFormatTag:      1\n"
                               "    format guid:     00000001-0000-0010-8000-00aa00389b71\n"
                               "    nChannels:       2\n"
                               "    nSamplesPerSec:  48000\n"
                               "    wBitsPerSample:  12\n"
                               "    dwChannelMask:   0x0\n"
                               "    numSampleFrames: 0\n"
                               "    [imIterateStreams] (18)\n"));
    // The stream behind it keeps its place.
    const auto second = clip.getInfo(1);
    EXPECT_EQ(second.result, host::imBadStreamIndex);
    EXPECT_EQ(simhost::byValue(second.record.audInfo.numChannels), 1);
    EXPECT_EQ(simhost::byValue(second.record.audDuration), 100);
}

}  // namespace
