// Files that end too soon: a copy that was interrupted, a recording on a full disk. Cut at every interesting
// place with the exact answer, then at every single byte with what must hold for any cut.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"
#include "tests/support/thorough.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using orvantis::test::OpenDml;
using testing::Contains;

using clips::kYuy2;

class CutFiles : public ClipTest {
 protected:
    std::string placeCut(const Bytes& bytes, std::uint64_t size) {
        return place(u8"cut.avi", Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    }
    /// The log of the description behind its fixed lines; empty lines stay.
    std::string describe(simhost::Clip& clip, std::int32_t expected) {
        static_cast<void>(log().news());
        EXPECT_EQ(clip.getInfo(0).result, expected);
        const std::string text = log().news();
        const std::string last = "fileInfoRec8P->streamIdx: 0";
        return text.substr(text.find(last) + last.size());
    }
    static void expectFrame(simhost::Clip& clip, std::uint32_t index) {
        const auto answer = clip.getFrame(index, kYuy2);
        EXPECT_EQ(answer.result, host::imNoErr) << index;
        ASSERT_TRUE(answer.frame.has_value()) << index;
        EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(index)) << index;
    }
};

TEST_F(CutFiles, InTheHeadersAreRefusedWithTheReadersWords) {
    logOn();
    startAndInit();
    AviBuilder avi = clips::builder();
    const Bytes whole = avi.build();
    // The form's header takes 12 bytes, then hdrl's 12, avih's 8 and its 56.
    struct Case {
        std::uint64_t size;
        std::string text;
    };
    const std::string noAvi = "file doesn't look like AVI (first 12 bytes is not 'RIFF'....'AVI ')";
    const std::string corrupt = "riff structure is corrupt or invalid\n";
    const std::vector<Case> cases = {
        {0, noAvi},
        {8, noAvi},
        {11, noAvi},
        {12, corrupt + "hdrl missing\n"},
        {23, corrupt + "hdrl missing\n"},
        {24, corrupt + "avih missing\n"},
        {31, corrupt + "avih missing\n"},
        {32, corrupt + "avih data read error\n"},
        {87, corrupt + "avih data read error\n"},
    };
    for (const Case& cut : cases) {
        simhost::Clip clip(importer(), placeCut(whole, cut.size));
        EXPECT_EQ(describe(clip, host::imBadFile),
                  "\nFailed to parse avi: " + cut.text + "\n    [imBadFile] (2)\n")
            << cut.size;
    }
}

TEST_F(CutFiles, InTheFirstStreamListHaveNoVideo) {
    logOn();
    startAndInit();
    AviBuilder avi = clips::builder();
    const Bytes whole = avi.build();
    const std::uint64_t strl = avi.strlOffset(0);
    // The list's header takes 12 bytes, strh 8 + 56, strf 8 + 40.
    for (const std::uint64_t size : {strl, strl + 12, strl + 12 + 8, strl + 12 + 63, strl + 12 + 64,
                                     strl + 12 + 64 + 8, strl + 12 + 64 + 47}) {
        simhost::Clip clip(importer(), placeCut(whole, size));
        EXPECT_EQ(describe(clip, host::imBadFile), "\nAvi has no video stream\n    [imBadFile] (2)\n")
            << size - strl;
    }
}

TEST_F(CutFiles, InTheSecondStreamListHaveNoSoundAndNoFrames) {
    logOn();
    startAndInit();
    AviBuilder avi = clips::builder();
    const Bytes whole = avi.build();
    for (const std::uint64_t size :
         {avi.strlOffset(1), avi.strlOffset(1) + 40, avi.strlOffset(1) + 12 + 64 + 8 + 15}) {
        simhost::Clip clip(importer(), placeCut(whole, size));
        const std::string text = describe(clip, host::imNoErr);
        EXPECT_NE(text.find("\nNumFrames: 0\nAVI FPS: 25 / 1 (25.000)\nAdjusted FPS: 25 / 1 (25.000)\n"
                            "AudioInfo::AudioInfo()\nAvi has no audio stream\n"),
                  std::string::npos)
            << text;
        EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imFrameNotFound);
        EXPECT_THAT(log().newLines(),
                    testing::IsSupersetOf({"frameIndex:  0 (total: 0)", "frameIndex out of bounds"}));
    }
}

TEST_F(CutFiles, WithoutTheirIndexHaveNoFramesAndSilentSound) {
    logOn();
    startAndInit();
    AviBuilder avi = clips::builder();
    const Bytes whole = avi.build();
    // Recordings that were killed end in movi; idx1 would have come last. An idx1 that is not whole counts as
    // none.
    for (const std::uint64_t size :
         {avi.moviOffset(), avi.moviOffset() + 12, avi.placements()[4].offset, avi.idx1Offset(),
          avi.idx1Offset() + 8, avi.idx1Offset() + 8 + 16, std::uint64_t{whole.size()} - 1}) {
        simhost::Clip clip(importer(), placeCut(whole, size));
        EXPECT_NE(describe(clip, host::imNoErr).find("\nNumFrames: 0\n"), std::string::npos) << size;
        EXPECT_EQ(clip.getFrame(0, kYuy2).result, host::imFrameNotFound) << size;
        EXPECT_EQ(clip.dataRates().bufferSize, 0) << size;
        static_cast<void>(log().news());
        const auto sound = clip.importAudio(0, 100, 2);
        EXPECT_EQ(sound.result, host::imNoErr) << size;
        EXPECT_THAT(sound.channels[1], testing::Each(0.0F)) << size;
        EXPECT_THAT(log().newLines(), Contains("fill    : 400")) << size;
    }
    simhost::Clip clip(importer(), placeCut(whole, whole.size()));
    EXPECT_NE(describe(clip, host::imNoErr).find("\nNumFrames: 5\n"), std::string::npos);
}

// With the index in the headers every frame is known, whether it is there or not.
class CutFilesWithAnEarlyIndex : public CutFiles {
 protected:
    void SetUp() override {
        m_avi = clips::builder({.openDml = OpenDml::kStandardIndex});
        m_whole = m_avi.build();
    }
    AviBuilder m_avi;
    Bytes m_whole;
};

TEST_F(CutFilesWithAnEarlyIndex, InsideAFrameDeliverTheFramesBeforeIt) {
    logOn();
    startAndInit();
    for (std::uint32_t frame = 0; frame < 5; ++frame) {
        const std::uint64_t data = m_avi.placementsOf(0).at(frame).offset;
        // Nothing of the frame is there, one byte, all but one.
        for (const std::uint64_t there : {0U, 1U, 64U, 127U}) {
            simhost::Clip clip(importer(), placeCut(m_whole, data + there));
            ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
            for (std::uint32_t before = 0; before < frame; ++before) {
                expectFrame(clip, before);
            }
            static_cast<void>(log().news());
            EXPECT_EQ(clip.getFrame(frame, kYuy2).result, host::imFileReadFailed);
            EXPECT_TRUE(log().news().ends_with(
                "\nFailed to read frame from AVI: Read error: size: 128, read: " + std::to_string(there) +
                "\n    [imFileReadFailed] (33)\n"));
            // Behind the cut nothing at all is left.
            if (frame < 4) {
                EXPECT_EQ(clip.getFrame(4, kYuy2).result, host::imFileReadFailed);
                EXPECT_THAT(log().newLines(),
                            Contains("Failed to read frame from AVI: Read error: size: 128, read: 0"));
            }
            if (frame > 0) {
                expectFrame(clip, frame - 1);
            }
        }
        simhost::Clip clip(importer(), placeCut(m_whole, data + 128));
        ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
        expectFrame(clip, frame);
    }
    EXPECT_EQ(host().calls(simhost::Service::kDisposePPix), 0U)
        << "no frame is made for bytes that are not there";
}

TEST_F(CutFilesWithAnEarlyIndex, FailTheSameAsynchronously) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeCut(m_whole, m_avi.placementsOf(0).at(2).offset + 10));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    simhost::AsyncClip async = clip.createAsync();
    ASSERT_EQ(async.creation().result, host::imNoErr);
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    for (std::uint32_t i = 0; i < 5; ++i) {
        ASSERT_EQ(async.initiate(clip.frameTime(i), formats), host::aiNoError);
    }
    for (std::uint32_t i = 0; i < 5; ++i) {
        const auto answer = async.getFrame(clip.frameTime(i), formats);
        EXPECT_EQ(answer.result, i < 2 ? host::aiNoError : host::aiUnknownError) << i;
        if (answer.frame) {
            EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(i));
        }
    }
    EXPECT_THAT(log().newLines(),
                Contains("    OnGetFrame: [aiUnknownError] (2), [imFileReadFailed] (33)").Times(3));
}

TEST_F(CutFilesWithAnEarlyIndex, InsideSoundFillItUpWithSilence) {
    logOn();
    startAndInit();
    const std::uint64_t data = m_avi.placementsOf(1).at(1).offset;
    // 100 sample frames of the second chunk are there.
    simhost::Clip clip(importer(), placeCut(m_whole, data + 400));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    static_cast<void>(log().news());
    const auto sound = clip.importAudio(300, 400, 2);
    EXPECT_EQ(sound.result, host::imNoErr);
    EXPECT_THAT(log().newLines(),
                testing::IsSupersetOf({"importAudio: read error: 1280, read: 400", "fill    : 1120"}));
    EXPECT_EQ(sound.channels[0][119], 419.0F / 32768.0F);
    EXPECT_EQ(sound.channels[0][120], 0.0F);
    EXPECT_EQ(sound.channels[1][399], 0.0F);
    // What is there can still be had.
    EXPECT_EQ(clip.importAudio(400, 1, 2).channels[1][0], -400.0F / 32768.0F);
}

TEST_F(CutFilesWithAnEarlyIndex, InsideThatIndexFallBackToTheOtherOne) {
    logOn();
    startAndInit();
    // The stream lists end with the index; nothing follows that could be used instead.
    simhost::Clip clip(importer(), placeCut(m_whole, m_avi.indxOffset(0) + 8 + 24 + 10));
    EXPECT_NE(describe(clip, host::imNoErr).find("\nNumFrames: 0\n"), std::string::npos);
    // Where idx1 is there, a broken index costs nothing.
    Bytes broken = m_whole;
    broken[m_avi.indxOffset(0) + 8 + 3] = 2;  // bIndexType
    simhost::Clip whole(importer(), place(u8"broken.avi", broken));
    EXPECT_NE(describe(whole, host::imNoErr).find("\nNumFrames: 5\n"), std::string::npos);
    expectFrame(whole, 4);
}

// --- every byte ---

// What must hold wherever a file ends: a known answer, pictures that are right or not there, and nothing left
// behind.
class CutAnywhere : public CutFiles, public testing::WithParamInterface<OpenDml> {
 protected:
    /// The number of frames delivered, or -1 when the file was refused.
    int play(const std::string& path) {
        simhost::Clip clip(importer(), path);
        const std::int32_t described = clip.getInfo(0).result;
        if (described == host::imBadFile) {
            return -1;
        }
        EXPECT_EQ(described, host::imNoErr);
        int delivered = 0;
        for (std::uint32_t i = 0; i < 3; ++i) {
            const auto answer = clip.getFrame(i, kYuy2);
            if (answer.frame) {
                EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(i));
                ++delivered;
            } else {
                EXPECT_THAT(answer.result, testing::AnyOf(host::imFrameNotFound, host::imFileReadFailed));
            }
        }
        EXPECT_EQ(clip.analysis(2000).result, host::imNoErr);
        EXPECT_EQ(clip.dataRates().result, host::imNoErr);
        const std::int32_t sound = clip.importAudio(0, 40, 2).result;
        EXPECT_THAT(sound, testing::AnyOf(host::imNoErr, 99));
        return delivered;
    }
};

TEST_P(CutAnywhere, AFileIsRefusedOrPlaysWhatIsLeftOfIt) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1))
        .addStream(orvantis::test::pcmStream(2, 8000, 16));
    for (std::uint32_t i = 0; i < 3; ++i) {
        avi.addChunk(0, clips::codedPicture(i)).addChunk(1, clips::codedSound(16 * i, 16));
    }
    avi.openDml(GetParam());
    const Bytes whole = avi.build();
    const std::string path = place(u8"cut.avi", whole);
    int before = 3;
    int changes = 0;
    const std::uint64_t step = orvantis::test::sampleStep(5);
    for (std::uint64_t size = whole.size();; size -= std::min(size, step)) {
        std::filesystem::resize_file(folder() / "cut.avi", size);
        const int delivered = play(path);
        // The shorter the file, the less it plays.
        EXPECT_LE(delivered, before) << size;
        changes += delivered != before ? 1 : 0;
        before = delivered;
        if (size == 0 || HasFailure()) {
            break;
        }
    }
    EXPECT_EQ(before, -1);
    // Without an early index all frames go at once: 3, 0, refused. With it they go one by one.
    EXPECT_EQ(changes, GetParam() == OpenDml::kStandardIndex ? 4 : 2);
    ASSERT_EQ(play(place(u8"whole.avi", whole)), 3);
}

INSTANTIATE_TEST_SUITE_P(Indexes, CutAnywhere,
                         testing::Values(OpenDml::kNone, OpenDml::kStandardIndex, OpenDml::kSuperIndex),
                         [](const testing::TestParamInfo<OpenDml>& kind) {
                             return kind.param == OpenDml::kNone            ? "Legacy"
                                    : kind.param == OpenDml::kStandardIndex ? "Standard"
                                                                            : "Super";
                         });

}  // namespace
