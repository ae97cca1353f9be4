// Sound tracks are counted from 1 everywhere, and one that cannot be used is named.
#include <filesystem>

#include "tests/tool/tool_run.h"

namespace {

using orvantis::test::AviBuilder;
using simhost::tool::kFailed;
using simhost::tool::kSuccess;
using simhost::tool::kUsage;
using testing::HasSubstr;

class ToolSoundTracks : public ToolTest {
 protected:
    std::string clipWith(const std::vector<orvantis::test::StreamPlan>& sounds) const {
        AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
        for (const auto& sound : sounds) {
            avi.addStream(sound);
        }
        for (std::uint32_t i = 0; i < 3; ++i) {
            avi.addChunk(0, clips::codedPicture(i));
            for (std::size_t s = 1; s <= sounds.size(); ++s) {
                avi.addChunk(s, clips::codedSound(320 * i, 320));
            }
        }
        return write("tracks.avi", avi.build());
    }
    static orvantis::test::StreamPlan pcm() { return orvantis::test::pcmStream(2, clips::kSampleRate, 16); }
};

TEST_F(ToolSoundTracks, TheOnlyTrackIsNamedWhenItCannotBeUsed) {
    const ToolRun result = runTool({"audio", clipWith({compressedSound()}), "--out", in("a.wav")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.err, HasSubstr("sound track 1 of '"));
    EXPECT_THAT(result.err, HasSubstr("(stream 1 of the file) cannot be used: "));
    EXPECT_THAT(result.err, HasSubstr("the sound is compressed"));
    EXPECT_FALSE(std::filesystem::exists(folder / "a.wav"));
}

TEST_F(ToolSoundTracks, ASilentPlaceholderIsNoTrackToWrite) {
    const std::string clip = clipWith({pcm(), compressedSound()});
    const ToolRun result = runTool({"audio", clip, "--track", "2", "--out", in("a.wav"), "--json"});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_EQ(result.json()["error"]["kind"], "unusable-sound-track");
    EXPECT_FALSE(std::filesystem::exists(folder / "a.wav"));
    EXPECT_EQ(runTool({"audio", clip, "--track", "1", "--out", in("a.wav")}).code, kSuccess);
}

TEST_F(ToolSoundTracks, ATrackBehindTheLastSaysHowManyThereAre) {
    const ToolRun result = runTool({"audio", clipWith({pcm(), pcm()}), "--track", "3", "--out", in("a.wav")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.err, HasSubstr("has no sound track 3"));
    EXPECT_THAT(result.err, HasSubstr("it has 2 sound tracks, counted from 1"));
    EXPECT_THAT(runTool({"audio", clipWith({}), "--out", in("a.wav")}).err,
                HasSubstr("the file has no sound"));
}

TEST_F(ToolSoundTracks, EveryCommandGivesATrackTheSameNumber) {
    const std::string clip = clipWith({pcm(), pcm()});
    const auto info = runTool({"info", clip, "--json"}).json();
    EXPECT_EQ(info["file"]["streams"][1]["audio"]["soundTrack"], 2);
    const ToolRun audio = runTool({"audio", clip, "--track", "2", "--out", in("a.wav")});
    EXPECT_THAT(audio.out, HasSubstr("sound track 2: 960 sample frames of 2 channels"));
    const ToolRun byHost = runTool({"audio", clip, "--stream", "1", "--out", in("a.wav"), "--json"});
    EXPECT_EQ(byHost.json()["soundTrack"], 2) << "the host counts from 0";
    ASSERT_EQ(runTool({"report", clip, "--out", in("out"), "--no-log"}).code, kSuccess);
    EXPECT_THAT(read("out/tracks.avi.html"), HasSubstr("Sound track 2"));
}

TEST_F(ToolSoundTracks, TheDoctorNamesTheTrackThatStaysSilent) {
    const ToolRun result = runTool({"doctor", clipWith({pcm(), compressedSound()})});
    EXPECT_THAT(result.out, HasSubstr("sound: track 1: 2 channels at 8000 Hz"));
    EXPECT_THAT(result.out, HasSubstr("sound: stream 2 of the file stays silent. It is sound track 2. "));
}

TEST_F(ToolSoundTracks, ANumberOutOfRangeIsToldInFewDigits) {
    for (const char* option : {"--stream", "--track"}) {
        const ToolRun result = runTool({"audio", soundClip(), option, "-1", "--out", in("a.wav")});
        EXPECT_EQ(result.code, kUsage);
        EXPECT_THAT(result.err, HasSubstr("-1 not in range"));
        EXPECT_LT(result.err.size(), 200U) << result.err;
    }
}

}  // namespace
