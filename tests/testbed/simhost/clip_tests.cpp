#include "simhost/clip.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "fake_plugin.h"
#include "host/pixel_formats.h"
#include "host/selectors.h"

namespace simhost {
namespace {

class ClipTest : public ::testing::Test {
 protected:
    ClipTest() { test::makeWellBehaved(fake); }
    Host sim;
    test::FakePlugin fake;
    Importer importer{sim, fake.plugin};
};

TEST_F(ClipTest, OpensReopensAndClosesAsTheHostDoes) {
    std::u16string seen;
    auto open = fake.on[host::imOpenFile8];
    fake.on[host::imOpenFile8] = [&](host::imStdParms* parms, void* ref, void* record) {
        const char16_t* path = static_cast<host::imFileOpenRec8*>(record)->fileinfo.filepath;
        seen = path;
        return open(parms, ref, record);
    };
    Clip clip(importer, "C:/\xC3\xA9.avi");
    EXPECT_EQ(seen, u"C:/\u00E9.avi");
    EXPECT_TRUE(clip.isOpen());
    EXPECT_EQ(clip.fileRef(), 77u);
    EXPECT_EQ(clip.quiet(), 0);
    EXPECT_EQ(clip.fileRef(), host::kInvalidFileRef);
    void* before = clip.privateData();
    EXPECT_EQ(clip.reopen().result, 0);
    EXPECT_EQ(clip.privateData(), before);
    EXPECT_EQ(clip.close(), 0);
    EXPECT_FALSE(clip.isOpen());
    EXPECT_EQ(clip.close(), 0) << "a second close is not sent";
    EXPECT_EQ(sim.report(), "");
}

TEST_F(ClipTest, AnOpenRecordCarriesTheHostsRequest) {
    fake.on[host::imOpenFile8] = [](auto*, void*, void*) { return host::imBadFile; };
    OpenOptions options;
    options.streamIndex = 3;
    options.readWrite = host::kOpenForReadingAndWriting;
    options.importerId = 99;
    const Clip clip(importer, "a", options);
    EXPECT_FALSE(clip.isOpen());
    EXPECT_EQ(clip.openResult(), 2);
    EXPECT_EQ(byValue(clip.openAnswer().record.inStreamIdx), 3);
    EXPECT_EQ(byValue(clip.openAnswer().record.inReadWrite), 1);
    EXPECT_EQ(byValue(clip.openAnswer().record.inImporterID), 99);
    EXPECT_TRUE(clip.openAnswer().changedBytes().empty());
}

TEST_F(ClipTest, OpeningWithoutPrivateDataOrWithTwoReferencesIsAViolation) {
    fake.on[host::imOpenFile8] = [](auto*, void* ref, void*) {
        *static_cast<host::imFileRef*>(ref) = 1;
        return host::imNoErr;
    };
    const Clip clip(importer, "a");
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "files.private-data: imOpenFile8, imFileOpenRec8.privatedata: null with result 0",
                  "files.one-reference: imOpenFile8, imFileOpenRec8.fileinfo.fileref: 18446744073709551615 "
                  "in the record, 1 at the first parameter"}));
}

TEST_F(ClipTest, AQuietThatKeepsTheReferenceIsAViolation) {
    Clip clip(importer, "a");
    fake.on[host::imQuietFile] = [](auto*, void*, void*) { return host::imNoErr; };
    (void)clip.quiet();
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{"files.reference-cleared: imQuietFile, file reference: 77"}));
}

TEST_F(ClipTest, StreamsAreWalkedWhileTheAnswerIs18) {
    fake.on[host::imGetInfo8] = [](auto*, void*, void* record) {
        const std::int32_t index = static_cast<host::imFileInfoRec8*>(record)->streamIdx;
        return index < 2 ? host::imIterateStreams : host::imBadStreamIndex;
    };
    Clip clip(importer, "a");
    const auto streams = clip.walkStreams();
    ASSERT_EQ(streams.size(), 3u);
    EXPECT_EQ(streams[1].answer.result, 18);
    EXPECT_EQ(streams[2].answer.result, 19);
    EXPECT_EQ(streams[2].streamIndex, 2);
}

TEST_F(ClipTest, FramesComeFromTheTopWhateverTheOrigin) {
    Clip clip(importer, "a");
    (void)clip.getInfo(0);
    EXPECT_EQ(clip.frameTime(1), 254016000000 / 25);
    const FrameAnswer answer = clip.getFrame(9, host::PrPixelFormat_BGRA_4444_8u);
    ASSERT_TRUE(answer.frame);
    EXPECT_EQ(answer.frame->picture(), std::vector<std::uint8_t>(4 * 4 * 3, 145));
    EXPECT_FALSE(answer.frame->topLeft());
    EXPECT_TRUE(clip.getFrame(0, host::PrPixelFormat_V210_422_10u_709).frame->topLeft());
    EXPECT_EQ(clip.getFrame(10, host::PrPixelFormat_BGRA_4444_8u).result, 28);
    EXPECT_TRUE(answer.answer.changedBytes().empty());
    EXPECT_EQ(sim.balance().deliveredFrames, 1u);
}

TEST_F(ClipTest, AFrameWithAFailureOrNoFrameWithSuccessIsAViolation) {
    Clip clip(importer, "a");
    fake.on[host::imGetSourceVideo] = [](auto*, void*, void*) { return host::imNoErr; };
    EXPECT_FALSE(clip.getFrame(0, 0).frame);
    fake.on[host::imGetSourceVideo] = [](auto*, void*, void* record) {
        static host::PPixContents* contents = nullptr;
        *static_cast<host::imSourceVideoRec*>(record)->outFrame = &contents;
        return host::imOtherErr;
    };
    EXPECT_FALSE(clip.getFrame(0, 0).frame);
    EXPECT_EQ(
        texts(sim.violations()),
        (std::vector<std::string>{
            "frames.on-success: imGetSourceVideo, imSourceVideoRec.outFrame: null with result 0",
            "frames.none-on-failure: imGetSourceVideo, imSourceVideoRec.outFrame: a frame with result 5",
            "frames.live: imGetSourceVideo: a frame was delivered that is not live"}));
}

TEST_F(ClipTest, FirstTicksAreExactRoundedUpAndClamped) {
    const std::int64_t ticks = 254016000000;
    EXPECT_EQ(firstTickOfFrame(7, 25, 1, ticks), 7 * (ticks / 25));
    EXPECT_EQ(firstTickOfFrame(3, 30000, 1001, ticks), 3 * (ticks / 30000 * 1001));
    EXPECT_EQ(firstTickOfFrame(1, 3, 1, 1000), 334);
    EXPECT_EQ(firstTickOfFrame(2, 3, 1, 1000), 667);
    EXPECT_EQ(firstTickOfFrame(5, 0, 1, ticks), 0);
    EXPECT_EQ(firstTickOfFrame(5, 1, -1, ticks), 0);
    EXPECT_EQ(firstTickOfFrame(1, 1, 2000000000, ticks), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(firstTickOfFrame(4000000000, 1, 30000000, ticks), std::numeric_limits<std::int64_t>::max());
}

TEST_F(ClipTest, AudioComesIntoPrefilledBuffers) {
    Clip clip(importer, "a");
    const AudioAnswer answer = clip.importAudio(100, 3, 2);
    EXPECT_EQ(answer.channels[0], (std::vector<float>{100.0F, 101.0F, 102.0F}));
    EXPECT_EQ(answer.channels[1], (std::vector<float>{100.5F, 101.5F, 102.5F}));
    EXPECT_EQ(clip.importAudio(-1, 1, 2).channels[0][0], 103.0F);
    fake.on[host::imImportAudio7] = [](auto*, void*, void*) { return host::imNoErr; };
    EXPECT_EQ(clip.importAudio(0, 2, 1).channels[0],
              (std::vector<float>{Clip::kAudioPrefill, Clip::kAudioPrefill}));
    EXPECT_EQ(texts(sim.violations()), std::vector<std::string>{});
}

TEST_F(ClipTest, AudioBehindTheBufferIsAViolation) {
    fake.on[host::imImportAudio7] = [](auto*, void*, void* record) {
        float** buffers = static_cast<host::imImportAudioRec7*>(record)->buffer;
        buffers[1][2] = 0;
        return host::imNoErr;
    };
    Clip clip(importer, "a");
    (void)clip.importAudio(0, 2, 2);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{"sound.bounds: imImportAudio7, imImportAudioRec7.buffer: floats "
                                        "written behind the 2 of a channel"}));
}

TEST_F(ClipTest, AnalysisTextIsReadUpToItsTerminator) {
    fake.on[host::imAnalysis] = [](auto*, void*, void* record) {
        char* buffer = static_cast<host::imAnalysisRec*>(record)->buffer;
        if (buffer != nullptr) {
            std::char_traits<char>::copy(buffer, "abc", 4);
        }
        return host::imNoErr;
    };
    Clip clip(importer, "a");
    const AnalysisText text = clip.analysis(6);
    EXPECT_EQ(text.text, "abc");
    EXPECT_TRUE(text.terminated);
    EXPECT_EQ(text.buffer, (std::vector<std::uint8_t>{'a', 'b', 'c', 0, 0xA7, 0xA7}));
    EXPECT_EQ(clip.analysis(6, false).result, 0);
    EXPECT_TRUE(sim.violations().empty());
    (void)clip.analysis(3);
    EXPECT_EQ(texts(sim.violations()),
              (std::vector<std::string>{
                  "records.buffers: imAnalysis, imAnalysisRec.buffer: offset 3 of 3 bytes was written"}));
}

TEST_F(ClipTest, DataRatesAreAskedForInTwoCalls) {
    fake.on[host::imDataRateAnalysis] = [](auto*, void*, void* address) {
        auto* record = static_cast<host::imDataRateAnalysisRec*>(address);
        host::imDataSample* samples = record->buffer;
        if (samples == nullptr) {
            record->buffersize = 16;
        } else {
            samples[0] = {0x80000001, 10};
            samples[1] = {0x80000001, 20};
            record->baserate = 0;
        }
        return host::imNoErr;
    };
    importer.setRecordFill(0x5A);
    Clip clip(importer, "a");
    const DataRates rates = clip.dataRates();
    EXPECT_EQ(rates.bufferSize, 16);
    ASSERT_EQ(rates.samples.size(), 2u);
    EXPECT_EQ(rates.samples[1].samplesize, 20u);
    EXPECT_EQ(rates.baseRate, 0);
}

TEST_F(ClipTest, PixelFormatsEndWithTheFirstOtherResult) {
    Clip clip(importer, "a");
    const PixelFormats offered = clip.pixelFormats();
    EXPECT_EQ(offered.formats, (std::vector<std::uint32_t>{host::PrPixelFormat_BGRA_4444_8u,
                                                           host::PrPixelFormat_V210_422_10u_709}));
    EXPECT_EQ(offered.lastResult, 301);
}

TEST_F(ClipTest, ChannelLabelsKeepWhatTheImporterLeavesAlone) {
    fake.on[host::imGetAudioChannelLayout] = [](auto*, void*, void* address) {
        auto* record = static_cast<host::imGetAudioChannelLayoutRec*>(address);
        record->outChannelLabels[0] = 100;
        return host::imNoErr;
    };
    Clip clip(importer, "a");
    const auto answer = clip.channelLayout();
    EXPECT_EQ(byValue(answer.record.outChannelLabels[0]), 100u);
    EXPECT_EQ(byValue(answer.record.outChannelLabels[1]), 0xA7A7A7A7u);
}

TEST_F(ClipTest, EveryCallLeadsToTheBasicSuite) {
    fake.on[host::imGetSupports8] = [this](const host::imStdParms* parms, void*, void*) {
        EXPECT_EQ(test::basicSuiteOf(parms), sim.basicSuite());
        return host::malSupports8;
    };
    EXPECT_EQ(importer.getSupports8(), 101);
}

}  // namespace
}  // namespace simhost
