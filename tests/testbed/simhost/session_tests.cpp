#include "simhost/session.h"

#include <gtest/gtest.h>

#include "fake_plugin.h"
#include "host/selectors.h"

namespace simhost {
namespace {

TEST(SessionTest, SendsTheSelectorsInTheHostsOrder) {
    test::FakePlugin fake;
    test::makeWellBehaved(fake);
    Host sim;
    SessionOptions options;
    options.pathUtf8 = "clip.avi";
    options.framesPerFormat = 1;
    const SessionSummary summary = runSession(Importer(sim, fake.plugin), options);
    const std::string frames =
        "imAnalysis 3\nimAnalysis 3\nimAnalysis 3\nimAnalysis 3\nimDataRateAnalysis 3\nimDataRateAnalysis 0\n"
        "imGetIndPixelFormat 301\nimGetSourceVideo 0\nimGetSourceVideo 0\nimGetSourceVideo "
        "5\nimGetSourceVideo 28\n";
    const std::string audio =
        "imGetAudioChannelLayout 3\nimImportAudio7 0\nimImportAudio7 0\nimImportAudio7 0\nimImportAudio7 0\n"
        "imImportAudio7 0\n";
    EXPECT_EQ(summary.text(),
              "imInit 0\nimGetSupports8 101\nimGetSupports7 3\nimGetIndFormat 0\nimGetIndFormat 301\n"
              "imGetSubTypeNames 3\nimOpenFile8 0\nimGetInfo8 0\nimGetInfo8 0\n" +
                  frames + audio + "imQuietFile 0\nimOpenFile8 0\n" + frames +
                  "imCreateAsyncImporter 3\nimCloseFile 0\nimShutdown 0\n");
    EXPECT_EQ(summary.frames, 4u);
    EXPECT_EQ(summary.audioFrames, 5000u);
    EXPECT_EQ(sim.report(), "");
}

TEST(SessionTest, ARefusedFileIsLeftAlone) {
    test::FakePlugin fake;
    test::makeWellBehaved(fake);
    fake.on[host::imOpenFile8] = [](auto*, void*, void*) { return host::imBadFile; };
    Host sim;
    SessionOptions options;
    options.pathUtf8 = "clip.avi";
    options.initAndShutdown = false;
    const SessionSummary summary = runSession(Importer(sim, fake.plugin), options);
    EXPECT_FALSE(summary.opened);
    EXPECT_EQ(summary.text(), "imOpenFile8 2\n");
}

TEST(SessionTest, AFileThatCannotBeDescribedIsOnlyClosed) {
    test::FakePlugin fake;
    test::makeWellBehaved(fake);
    fake.on[host::imGetInfo8] = [](auto*, void*, void*) { return host::imBadFile; };
    Host sim;
    SessionOptions options;
    options.pathUtf8 = "clip.avi";
    options.initAndShutdown = false;
    EXPECT_EQ(runSession(Importer(sim, fake.plugin), options).text(),
              "imOpenFile8 0\nimGetInfo8 2\nimGetInfo8 2\nimCloseFile 0\n");
}

TEST(SessionTest, HashesAreFnv1a) {
    EXPECT_EQ(hashBytes("", 0), 0xCBF29CE484222325u);
    EXPECT_EQ(hashBytes("a", 1), 0xAF63DC4C8601EC8Cu);
    EXPECT_EQ(hashBytes("foobar", 6), 0x85944171F73967E8u);
}

}  // namespace
}  // namespace simhost
