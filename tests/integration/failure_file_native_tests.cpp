// The system refuses to read, to seek, or to tell a file's size. Injected in the native twin of the Windows
// file, so native builds only.
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/session.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/file_hooks.h"
#include "tests/support/thorough.h"

namespace {

using orvantis::test::FileHooks;
using orvantis::test::FileOperationHook;
using orvantis::test::InstalledFileHooks;
using testing::Contains;

using clips::kYuy2;

/// The next operation of this kind fails.
void failNext(FileOperationHook& hook) {
    hook.failAt = hook.count + 1;
}

class FileFailures : public ClipTest {
 protected:
    FileHooks& hooks() { return *m_hooks; }
    void expectGoodFrame(simhost::Clip& clip, std::uint32_t index) {
        const auto answer = clip.getFrame(index, kYuy2);
        EXPECT_EQ(answer.result, host::imNoErr);
        ASSERT_TRUE(answer.frame.has_value());
        EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(index));
    }

 private:
    InstalledFileHooks m_hooks;
};

TEST_F(FileFailures, AFrameThatCannotBeReadOrReachedSaysWhich) {
    logOn();
    startAndInit();
    auto avi = clips::builder();
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    expectGoodFrame(clip, 0);

    static_cast<void>(log().news());
    failNext(hooks().reads);
    EXPECT_EQ(clip.getFrame(1, kYuy2).result, host::imFileReadFailed);
    EXPECT_TRUE(
        log().news().ends_with("\nFailed to read frame from AVI: Read error: size: 128, read: 0\n"
                               "    [imFileReadFailed] (33)\n"));
    expectGoodFrame(clip, 1);

    static_cast<void>(log().news());
    failNext(hooks().seeks);
    EXPECT_EQ(clip.getFrame(1, kYuy2).result, host::imFileReadFailed);
    EXPECT_TRUE(log().news().ends_with("\nFailed to read frame from AVI: Seek error: offset: " +
                                       std::to_string(avi.placementsOf(0).at(1).offset) +
                                       "\n    [imFileReadFailed] (33)\n"));
    expectGoodFrame(clip, 1);
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 0U)
        << "no frame is made before its bytes are there";
}

TEST_F(FileFailures, SoundThatCannotBeReadOrReachedIsSilence) {
    logOn();
    startAndInit();
    auto avi = clips::builder();
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);

    // The second of two chunks.
    static_cast<void>(log().news());
    hooks().reads.failAt = hooks().reads.count + 2;
    auto sound = clip.importAudio(200, 400, 2);
    EXPECT_EQ(sound.result, host::imNoErr);
    EXPECT_THAT(log().newLines(),
                testing::IsSupersetOf({"importAudio: read error: 1120, read: 0", "fill    : 1120"}));
    EXPECT_EQ(sound.channels[0][119], 319.0F / 32768.0F);
    EXPECT_EQ(sound.channels[0][120], 0.0F);

    failNext(hooks().seeks);
    sound = clip.importAudio(0, 10, 2);
    EXPECT_EQ(sound.result, host::imNoErr);
    const std::string where = std::to_string(avi.placementsOf(1).at(0).offset);
    // The position is that of the read before: the end of the first chunk's part.
    EXPECT_THAT(log().newLines(), testing::IsSupersetOf({"fill    : 40"}));
    EXPECT_THAT(sound.channels[0], testing::Each(0.0F));

    sound = clip.importAudio(-1, 1, 2);
    EXPECT_EQ(sound.channels[0][0], 10.0F / 32768.0F) << "the position moved all the same";
}

TEST_F(FileFailures, ASeekThatFailsIsLoggedWithBothPlaces) {
    logOn();
    startAndInit();
    auto avi = clips::builder();
    simhost::Clip clip(importer(), place(u8"clip.avi", avi.build()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const std::uint64_t first = avi.placementsOf(1).at(0).offset;
    ASSERT_EQ(clip.importAudio(0, 10, 2).result, host::imNoErr);
    static_cast<void>(log().news());
    failNext(hooks().seeks);
    ASSERT_EQ(clip.importAudio(100, 10, 2).result, host::imNoErr);
    EXPECT_THAT(log().newLines(), Contains("importAudio: seek error: " + std::to_string(first + 400) +
                                           ", pos: " + std::to_string(first + 40)));
}

TEST_F(FileFailures, AFileWhoseSizeIsNotToldIsEmpty) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    failNext(hooks().sizes);
    EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    EXPECT_TRUE(log().newLines().back() == "    [imBadFile] (2)");
    EXPECT_EQ(clip.getInfo(0).result, host::imNoErr);
    expectGoodFrame(clip, 4);
}

TEST_F(FileFailures, EachOperationOfASessionMayFailAndTheNextSessionIsGood) {
    simhost::SessionOptions options;
    options.pathUtf8 = placeClip();
    options.framesPerFormat = 2;
    options.mostFormats = 1;
    options.audioFrames = 400;
    const simhost::Plugin plugin(pluginPath(), codecFolder());
    const auto run = [&](const std::string& what) {
        simhost::Host host;
        auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
        EXPECT_TRUE(host.isClean()) << what << "\n" << host.report() << summary.text();
        EXPECT_EQ(hooks().opened, hooks().closes) << what;
        for (const simhost::SessionStep& step : summary.steps) {
            EXPECT_NE(step.result, 99) << what << " " << step.name;
        }
        return summary;
    };

    struct Kind {
        const char* name;
        FileOperationHook FileHooks::*hook;
        std::uint64_t count;
    };
    std::vector<Kind> kinds = {{"open", &FileHooks::opens, 0},
                               {"read", &FileHooks::reads, 0},
                               {"seek", &FileHooks::seeks, 0},
                               {"size", &FileHooks::sizes, 0}};
    // The first session of the process reads the log switch too; count on the second.
    static_cast<void>(run("the first"));
    for (Kind& kind : kinds) {
        kind.count = (hooks().*kind.hook).count;
    }
    const auto reference = run("the reference");
    for (Kind& kind : kinds) {
        kind.count = (hooks().*kind.hook).count - kind.count;
    }
    ASSERT_GT(kinds[1].count, 10U);

    for (const Kind& kind : kinds) {
        FileOperationHook& hook = hooks().*kind.hook;
        for (std::uint64_t n = 1; n <= kind.count; n = orvantis::test::nextSample(n, 6, 5)) {
            const std::string what = std::string(kind.name) + " " + std::to_string(n);
            hook.failAt = hook.count + n;
            static_cast<void>(run(what));
            hook.failAt = 0;
            const auto summary = run("behind " + what);
            ASSERT_EQ(summary.text(), reference.text()) << what;
            ASSERT_EQ(summary.pictureHash, reference.pictureHash) << what;
            ASSERT_EQ(summary.audioHash, reference.audioHash) << what;
        }
    }
}

TEST_F(FileFailures, ADiskThatIsGoneForGoodIsNoInternalError) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    for (FileOperationHook* hook : {&hooks().reads, &hooks().seeks, &hooks().sizes, &hooks().tells}) {
        hook->failAt = hook->count + 1;
        hook->failFromThere = true;
    }
    EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imFileReadFailed);
    EXPECT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
    EXPECT_EQ(clip.dataRates().samples.size(), 5U);
    EXPECT_EQ(clip.getInfo(0).result, host::imBadFile);
    EXPECT_TRUE(host().events().empty());
}

}  // namespace
