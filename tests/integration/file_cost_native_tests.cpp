// What files cost in calls of the system: counted in the native twin of the Windows file, so native builds
// only.
#include <gtest/gtest.h>

#include <string>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/file_hooks.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::InstalledFileHooks;

using clips::kYuy2;
constexpr std::uint64_t kWindow = 65536;

class FileCost : public ClipTest {};

// A foreign file of this many frames, with an index to match.
orvantis::test::Bytes foreignFile(int frames) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("MJPG", 640, 480, 25, 1))
        .addStream(orvantis::test::pcmStream(2, 48000, 16));
    for (int i = 0; i < frames; ++i) {
        avi.addFilledChunk(0, 500, 1).addFilledChunk(1, 500, 2);
    }
    return avi.build();
}

TEST_F(FileCost, RefusingAForeignFileTakesOneReadHoweverLongItIs) {
    InstalledFileHooks hooks;
    startAndInit();
    for (const int frames : {500, 5000}) {
        const std::string path = place(u8"foreign.avi", foreignFile(frames));
        const std::uint64_t readsBefore = hooks->reads.count;
        const std::uint64_t bytesBefore = hooks->bytesRead;
        simhost::Clip clip(importer(), path);
        ASSERT_EQ(clip.getInfo(0).result, host::imBadFile);
        ASSERT_EQ(clip.close(), host::imNoErr);
        // The headers. The index, and what else stands behind movi, could not change the answer.
        EXPECT_EQ(hooks->reads.count - readsBefore, 1U) << frames;
        EXPECT_LE(hooks->bytesRead - bytesBefore, kWindow) << frames;
    }
    EXPECT_EQ(hooks->opened, 2U);
    EXPECT_EQ(hooks->closes, 2U);
}

TEST_F(FileCost, RefusingWhatIsNoAviTakesOneRead) {
    InstalledFileHooks hooks;
    startAndInit();
    simhost::Clip clip(importer(), place(u8"no.avi", orvantis::test::Bytes(1000000, 'x')));
    ASSERT_EQ(clip.getInfo(0).result, host::imBadFile);
    EXPECT_EQ(hooks->reads.count, 1U);
    EXPECT_LE(hooks->bytesRead, kWindow);
}

TEST_F(FileCost, AFrameInSteadyPlaybackIsOneSeekAndOneRead) {
    InstalledFileHooks hooks;
    startAndInit();
    simhost::Clip clip(importer(), placeClip({.frames = 50}));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    ASSERT_TRUE(clip.getFrame(0, kYuy2).frame.has_value());
    const std::uint64_t reads = hooks->reads.count;
    const std::uint64_t seeks = hooks->seeks.count;
    const std::uint64_t others = hooks->sizes.count + hooks->tells.count + hooks->opens.count;
    for (std::uint32_t i = 1; i < 50; ++i) {
        ASSERT_TRUE(clip.getFrame(i, kYuy2).frame.has_value());
    }
    EXPECT_EQ(hooks->reads.count - reads, 49U);
    EXPECT_EQ(hooks->seeks.count - seeks, 49U);
    EXPECT_EQ(hooks->sizes.count + hooks->tells.count + hooks->opens.count, others);
}

TEST_F(FileCost, QuietAndCloseLetGoOfTheHandleExactlyOnce) {
    InstalledFileHooks hooks;
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(hooks->opened, 1U);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    EXPECT_EQ(hooks->closes, 1U);
    ASSERT_EQ(clip.quiet(), host::imNoErr);
    EXPECT_EQ(hooks->closes, 1U);
    ASSERT_EQ(clip.reopen().result, host::imNoErr);
    ASSERT_EQ(clip.reopen().result, host::imNoErr) << "the first handle is closed before the second is made";
    EXPECT_EQ(hooks->opened, 3U);
    EXPECT_EQ(hooks->closes, 2U);
    {
        simhost::AsyncClip async = clip.createAsync();
        EXPECT_EQ(hooks->opened, 4U);
    }
    EXPECT_EQ(hooks->closes, 3U);
    ASSERT_EQ(clip.close(), host::imNoErr);
    EXPECT_EQ(hooks->closes, 4U);
    EXPECT_EQ(hooks->writes.count, 0U);
}

TEST_F(FileCost, AFileThatCannotBeOpenedIsNotClosed) {
    InstalledFileHooks hooks;
    startAndInit();
    const std::string path = placeClip();
    hooks->opens.failAt = 1;
    EXPECT_EQ(simhost::Clip(importer(), path).openResult(), host::imBadFile);
    EXPECT_EQ(hooks->opened, 0U);
    EXPECT_EQ(hooks->closes, 0U);
    EXPECT_EQ(simhost::Clip(importer(), path).openResult(), host::imNoErr);
}

}  // namespace
