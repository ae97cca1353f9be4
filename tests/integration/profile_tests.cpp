// One scenario through every kind of host: the pictures and sounds must be the same ones.
#include <gmock/gmock.h>

#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/session.h"
#include "simhost/text.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/format_lists.h"

namespace {

using orvantis::test::AviBuilder;

class Profiles : public ClipTest {
 protected:
    /// A session in a process that has just started.
    simhost::SessionSummary run(const simhost::HostProfile& profile, const std::string& path) {
        simhost::Host host(profile);
        simhost::Plugin plugin(pluginPath(), codecFolder());
        simhost::SessionOptions options;
        options.pathUtf8 = path;
        options.framesPerFormat = 4;
        auto summary = simhost::runSession(simhost::Importer(host, plugin), options);
        plugin.unload();
        EXPECT_TRUE(host.isClean()) << profile.name << "\n" << host.report();
        return summary;
    }
    /// How often each selector answered with each result.
    static std::map<std::string, std::set<std::int32_t>> resultsOf(const simhost::SessionSummary& summary) {
        std::map<std::string, std::set<std::int32_t>> out;
        for (const simhost::SessionStep& step : summary.steps) {
            out[step.name].insert(step.result);
        }
        return out;
    }

    using Type = formatlists::CodedType;
    static const std::vector<Type>& types() { return formatlists::codedTypes(); }
    static const Type& type(const std::string& tag) {
        return *std::ranges::find_if(types(), [&](const Type& row) { return row.tag == tag; });
    }
    /// A clip of this type whose samples are all different, and in range whatever their size.
    std::string placeClipOf(const Type& type, std::uint32_t rate, std::uint32_t scale) {
        AviBuilder avi;
        avi.addStream(orvantis::test::videoStream(type.tag, 16, 4, rate, scale));
        avi.addStream(orvantis::test::pcmStream(2, 8000, 16))
            .addStream(orvantis::test::pcmStream(1, 8000, 24));
        const auto frameBytes = static_cast<std::uint32_t>(type.payloadBytes(16, 4));
        for (std::uint32_t frame = 0; frame < 8; ++frame) {
            orvantis::test::Bytes picture(frameBytes);
            for (std::uint32_t i = 0; i < frameBytes; ++i) {
                const std::uint32_t value = 37 * i + 11 * frame;
                // The high byte of a 16-bit sample: 10 bits at least.
                const bool high = type.bits > 8 && i % 2 == 1;
                picture[i] = static_cast<std::uint8_t>(high ? value % 4 : value);
            }
            avi.addChunk(0, picture)
                .addChunk(1, clips::codedSound(frame * 320, 320))
                .addFilledChunk(2, 960, 0x21);
        }
        return place(u8"profile.avi", avi.build());
    }

    // Hosts that have everything, whatever else is odd about them.
    static bool isComplete(const simhost::HostProfile& profile) {
        return profile.refusedSuites.empty() && profile.name != "ticks-1";
    }
};

TEST_F(Profiles, EveryCompleteHostSeesAndHearsTheSameOfEveryCodedType) {
    for (const Type& type : types()) {
        const std::string path = placeClipOf(type, 25, 1);
        const auto reference = run(simhost::defaultProfile(), path);
        ASSERT_GT(reference.frames, 8U) << type.tag;
        ASSERT_GT(reference.audioFrames, 0U);
        std::size_t compared = 0;
        for (const simhost::HostProfile& profile : simhost::builtinProfiles()) {
            if (!isComplete(profile)) {
                continue;
            }
            const auto summary = run(profile, path);
            EXPECT_EQ(summary.text(), reference.text()) << profile.name << " " << type.tag;
            EXPECT_EQ(summary.frames, reference.frames) << profile.name << " " << type.tag;
            EXPECT_EQ(summary.pictureHash, reference.pictureHash) << profile.name << " " << type.tag;
            EXPECT_EQ(summary.audioHash, reference.audioHash) << profile.name << " " << type.tag;
            EXPECT_EQ(summary.asyncDifferences, 0U) << profile.name << " " << type.tag;
            ++compared;
        }
        EXPECT_GE(compared, 6U);
    }
}

TEST_F(Profiles, TheHashesTellDifferentClipsApart) {
    std::set<std::uint64_t> pictures;
    for (const Type& type : types()) {
        pictures.insert(run(simhost::defaultProfile(), placeClipOf(type, 25, 1)).pictureHash);
    }
    EXPECT_EQ(pictures.size(), types().size());
}

TEST_F(Profiles, RatesThatDivideNeitherClockAreServedOnBoth) {
    // 90000 / (30000 / 1001) = 3003 ticks a frame; 24000 / 1001 takes 3753.75.
    for (const auto& [rate, scale] :
         {std::pair<std::uint32_t, std::uint32_t>{30000, 1001}, {24000, 1001}, {25, 1}}) {
        const std::string path = placeClipOf(type("O8Y2"), rate, scale);
        const auto reference = run(simhost::defaultProfile(), path);
        const auto slow = run(*simhost::findProfile("ticks-90000"), path);
        EXPECT_EQ(slow.text(), reference.text()) << rate;
        EXPECT_EQ(slow.pictureHash, reference.pictureHash) << rate;
    }
}

TEST_F(Profiles, AnIncompleteHostGetsAllThatItCanHave) {
    const std::string path = placeClipOf(type("O8Y2"), 25, 1);
    const auto reference = run(simhost::defaultProfile(), path);
    struct Case {
        const char* profile;
        bool pictures;
        bool sounds;
    };
    for (const Case& host : {Case{"no-error-suite", true, true}, Case{"no-creator-suite", false, true},
                             Case{"no-cache-suite", true, true}, Case{"no-ppix-suite", false, true},
                             Case{"no-audio-suite", true, false}, Case{"ticks-1", false, true}}) {
        const auto summary = run(*simhost::findProfile(host.profile), path);
        EXPECT_TRUE(summary.opened) << host.profile;
        EXPECT_EQ(summary.streams, reference.streams) << host.profile;
        EXPECT_EQ(summary.frames, host.pictures ? reference.frames : 0) << host.profile;
        if (host.pictures) {
            EXPECT_EQ(summary.pictureHash, reference.pictureHash) << host.profile;
        }
        EXPECT_EQ(summary.audioFrames, host.sounds ? reference.audioFrames : 0) << host.profile;
        if (host.sounds) {
            EXPECT_EQ(summary.audioHash, reference.audioHash) << host.profile;
        }
    }
}

TEST_F(Profiles, AClockTooCoarseForFramesFindsNone) {
    const auto results = resultsOf(run(*simhost::findProfile("ticks-1"), placeClipOf(type("O8Y2"), 25, 1)));
    EXPECT_EQ(results.at("imGetInfo8"),
              (std::set<std::int32_t>{host::imIterateStreams, host::imBadStreamIndex}));
    EXPECT_EQ(results.at("imGetSourceVideo"), (std::set<std::int32_t>{host::imFrameNotFound}));
    EXPECT_EQ(results.at("aiGetFrame"), (std::set<std::int32_t>{host::aiUnknownError}));
}

TEST_F(Profiles, WithoutTheTimeSuiteNothingIsDescribed) {
    const auto results =
        resultsOf(run(*simhost::findProfile("no-time-suite"), placeClipOf(type("O8Y2"), 25, 1)));
    EXPECT_EQ(results.at("imGetInfo8"), (std::set<std::int32_t>{99}));
}

TEST_F(Profiles, WithoutTheImageSuiteThePluginDoesNotStart) {
    const auto results =
        resultsOf(run(*simhost::findProfile("no-image-suite"), placeClipOf(type("O8Y2"), 25, 1)));
    EXPECT_EQ(results.at("imInit"), (std::set<std::int32_t>{99}));
}

TEST_F(Profiles, OppositeOriginsAskTheLibraryForTheOtherRowOrder) {
    logOn();
    startAndInit(*simhost::findProfile("opposite-origins"));
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    static_cast<void>(log().news());
    const auto answer = clip.getFrame(2, host::PrPixelFormat_YUYV_422_8u_601);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_THAT(log().newLines(),
                testing::Contains("Starting decompression: YUV422 8-bit [Rec.601] [LIMITED] -> YUYV "
                                  "[Rec.601] (pr: PrPixelFormat_YUYV_422_8u_601 [yuy2]) [flipped]"));
    // The rows lie the other way round; the picture is the same.
    EXPECT_FALSE(answer.frame->topLeft());
    EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(2));
    const auto stored = answer.frame->storedRow(0);
    const auto lowest = answer.frame->pictureRow(clips::kHeight - 1);
    EXPECT_TRUE(std::equal(stored.begin(), stored.end(), lowest.begin(), lowest.end()));
}

TEST_F(Profiles, AHostThatTurnsItsOriginsBetweenTwoInitsIsFollowed) {
    logOn();
    startAndInit();
    host().setOppositeOrigins(true);
    ASSERT_EQ(importer().init().result, host::imNoErr);
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto answer = clip.getFrame(3, host::PrPixelFormat_YUYV_422_8u_601);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(3));
}

TEST_F(Profiles, NegativeRowBytesReachTheLibraryAsTheyAre) {
    traceCodec();
    startAndInit(*simhost::findProfile("negative-rows"));
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto answer = clip.getFrame(1, host::PrPixelFormat_YUYV_422_8u_601);
    ASSERT_TRUE(answer.frame.has_value());
    EXPECT_LT(answer.frame->rowBytes(), 0);
    EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(1));
    EXPECT_NE(codecTrace().find("pitch " + std::to_string(answer.frame->rowBytes()) + ","), std::string::npos)
        << codecTrace();
}

}  // namespace
