// The log of one clip's whole life, from the moment the host loads the plug-in until it unloads it: each step
// of the host with the lines that it leaves, in tests/golden/clip_life.log. Reading that from top to bottom
// is the quickest way to learn what the plug-in does.
//
// The clip: 5 pictures of 16 x 4 in 8-bit 4:2:2, 25 a second, and 16-bit stereo sound at 8000 Hz. The host is
// the default one: 254016000000 ticks a second, so 10160640000 ticks a picture.
//
// Times, threads and addresses are masked; a '$' shows where a line ends in a blank.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/golden.h"
#include "tests/support/temp_folder.h"

namespace {

class ClipLifeLog : public ClipTest {
 protected:
    /// What the log says since the last step, under the step's name.
    void tell(const std::string& step) { m_told += "=== " + step + log().news(); }
    /// The same, for a step at which two threads write side by side: each by itself.
    void tellByThread(const std::string& step) {
        m_told += "=== " + step;
        const std::vector<std::string> threads = log().newsByThread();
        for (std::size_t i = 0; i < threads.size(); ++i) {
            m_told += (i == 0 ? "" : "--- another thread") + threads[i];
        }
    }
    /// The module goes with the last thread of its pool, which may be a moment behind the call that unloads
    /// it.
    void awaitTheEnd() {
        const auto late = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (std::chrono::steady_clock::now() < late) {
            const std::string text = orvantis::test::readFile(logCapture().files().at(0));
            if (text.find("] Log closed") != std::string::npos && text.ends_with('\n')) {
                return;
            }
            std::this_thread::yield();
        }
    }
    const std::string& told() const { return m_told; }

 private:
    std::string m_told;
};

TEST_F(ClipLifeLog, TellsEveryStepOfTheHost) {
    auto avi = clips::builder();
    const std::string path = place(u8"clip.avi", avi.build());
    // Where the sound chunks' data lies; the places appear in the log.
    ASSERT_EQ(avi.placementsOf(1).at(0).offset, 468U);
    ASSERT_EQ(avi.placementsOf(1).at(1).offset, 1892U);
    ASSERT_EQ(avi.placementsOf(1).at(4).offset, 6164U);
    logOn();
    start();
    // Loading alone leaves no trace: the switch is not read yet.
    EXPECT_TRUE(logCapture().files().empty());

    // --- the plug-in ---

    EXPECT_EQ(importer().init().result, host::imNoErr);
    setInitialised(true);
    tell("imInit: every pixel format that the host has names for, and the types of the codec library");

    EXPECT_EQ(importer().getSupports8(), host::malSupports8);
    tell("imGetSupports8");

    EXPECT_EQ(importer().call(host::imGetSupports7, nullptr, nullptr), host::imUnsupported);
    tell("imGetSupports7");

    EXPECT_EQ(importer().getIndFormat(0).result, host::imNoErr);
    EXPECT_EQ(importer().getIndFormat(1).result, host::imBadFormatIndex);
    tell("imGetIndFormat, twice");

    EXPECT_EQ(importer().getSubTypeNames(host::kFileTypeAviv).result, host::imNoErr);
    tell("imGetSubTypeNames");

    // --- the file ---

    simhost::Clip clip(importer(), path);
    EXPECT_EQ(clip.openResult(), host::imNoErr);
    tell("imOpenFile8");

    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    tell("imGetInfo8");

    EXPECT_EQ(clip.pixelFormats().formats.size(), 4U);
    tell("imGetIndPixelFormat, until there are no more");

    EXPECT_EQ(clip.analysis(4096).result, host::imNoErr);
    tell("imAnalysis, for the host's Properties window");

    EXPECT_EQ(clip.dataRates().result, host::imNoErr);
    tell("imDataRateAnalysis: first the size, then the table of 8 bytes a picture");

    // --- pictures ---

    EXPECT_EQ(clip.getFrame(0, host::PrPixelFormat_YUYV_422_8u_601).result, host::imNoErr);
    tell("imGetSourceVideo: the first request begins the decompression");

    EXPECT_EQ(clip.getFrame(4, host::PrPixelFormat_YUYV_422_8u_601).result, host::imNoErr);
    tell("imGetSourceVideo: further ones go on with it");

    EXPECT_EQ(clip.getFrame(1, host::PrPixelFormat_UYVY_422_8u_709).result, host::imNoErr);
    tell("imGetSourceVideo: another format begins anew");

    EXPECT_EQ(clip.getFrame(5, host::PrPixelFormat_YUYV_422_8u_601).result, host::imFrameNotFound);
    tell("imGetSourceVideo: the time right behind the last picture");

    // --- sound ---

    EXPECT_EQ(clip.channelLayout().result, host::imNoErr);
    tell("imGetAudioChannelLayout");

    EXPECT_EQ(clip.importAudio(200, 400, 2).result, host::imNoErr);
    tell(
        "imImportAudio7: 400 sample frames from 200 on, the rest of the first chunk and the head of the "
        "second");

    EXPECT_EQ(clip.importAudio(1500, 400, 2).result, host::imNoErr);
    EXPECT_EQ(clip.importAudio(-1, 100, 2).result, host::imNoErr);
    tell("imImportAudio7: on from there, over the end, where the rest is silence");

    // --- the host needs the file elsewhere, and comes back ---

    EXPECT_EQ(clip.quiet(), host::imNoErr);
    EXPECT_EQ(clip.reopen().result, host::imNoErr);
    tell("imQuietFile and imOpenFile8: the host needs the file elsewhere, and comes back");

    // --- frames ahead of need ---

    {
        simhost::AsyncClip async = clip.createAsync();
        EXPECT_EQ(async.creation().result, host::imNoErr);
        tell("imCreateAsyncImporter: a second importer on the same file");

        const host::imFrameFormat wanted[] = {{16, 4, host::PrPixelFormat_YUYV_422_8u_601}};
        EXPECT_EQ(async.initiate(clip.frameTime(2), wanted), host::aiNoError);
        EXPECT_TRUE(async.getFrame(clip.frameTime(2), wanted).frame.has_value());
        tellByThread("aiInitiateAsyncRead and aiGetFrame");

        EXPECT_TRUE(async.getFrame(clip.frameTime(3), wanted).frame.has_value());
        tellByThread("aiGetFrame: a frame that was not announced is decoded at once");

        EXPECT_EQ(async.flush(), host::aiNoError);
        EXPECT_EQ(async.close(), host::aiNoError);
        tell("aiFlush and aiClose");
    }

    // --- the end ---

    EXPECT_EQ(clip.close(), host::imNoErr);
    tell("imCloseFile");

    stop();
    awaitTheEnd();
    tell("imShutdown, and the plug-in is unloaded");
    orvantis::test::expectGolden("clip_life.log", told());
}

}  // namespace
