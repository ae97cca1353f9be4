// Pictures of clips that are long or large ask for so much of them and no more.
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kSuccess;
using testing::HasSubstr;
using testing::Not;

class ToolLongClips : public ToolTest {
 protected:
    std::string manyFrames(std::uint32_t count) const {
        orvantis::test::AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
        for (std::uint32_t i = 0; i < count; ++i) {
            avi.addChunk(0, clips::codedPicture(i % 5));
        }
        return write("frames.avi", avi.build());
    }
    /// Thirty hours by its header; the file holds a second.
    std::string hoursOfSound() const {
        orvantis::test::AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
        auto sound = orvantis::test::pcmStream(1, 8000, 8);
        sound.length = 900'000'000;
        avi.addStream(sound).addChunk(0, clips::codedPicture(0)).addFilledChunk(1, 8000, 0x80);
        return write("hours.avi", avi.build());
    }
};

TEST_F(ToolLongClips, ASheetOfAllFramesAsksForSomeOfThem) {
    const std::string clip = manyFrames(300);
    const auto sheet = runTool({"frames", clip, "--range", "all", "--sheet", in("a.png"), "--json"}).json();
    EXPECT_EQ(sheet["delivered"], 120);
    EXPECT_EQ(sheet["onSheet"], 120);
    EXPECT_THAT(runTool({"frames", clip, "--range", "all", "--sheet", in("a.png")}).out,
                HasSubstr("120 frames on " + in("a.png") + ", evenly spread"));
}

TEST_F(ToolLongClips, FilesOfAllFramesLeaveTheSheetSmall) {
    const std::string clip = manyFrames(300);
    const auto both = runTool({"frames", clip, "--range", "all", "--raw", "--out", in("files"), "--sheet",
                               in("both.png"), "--json"})
                          .json();
    EXPECT_EQ(both["files"], 300);
    EXPECT_EQ(both["onSheet"], 120);
    (void)runTool({"frames", clip, "--range", "all", "--sheet", in("alone.png")});
    EXPECT_EQ(read("both.png"), read("alone.png")) << "the same frames";
}

TEST_F(ToolLongClips, AWaveformOfHoursReadsStretchesOfThem) {
    const std::string clip = hoursOfSound();
    const ToolRun told = runTool({"audio", clip, "--waveform", in("a.png"), "--json"});
    ASSERT_EQ(told.code, kSuccess) << told.err;
    EXPECT_EQ(told.json()["sampleFrames"], 900'000'000);
    EXPECT_EQ(told.json()["sampleFramesRead"], 12'000'000);
    EXPECT_THAT(runTool({"audio", clip, "--waveform", in("a.png")}).out,
                HasSubstr(", sampled: 12000000 of 900000000 sample frames were read\n"));
}

TEST_F(ToolLongClips, AShortSoundIsDrawnWhole) {
    const ToolRun told = runTool({"audio", soundClip(), "--waveform", in("a.png")});
    ASSERT_EQ(told.code, kSuccess) << told.err;
    EXPECT_THAT(told.out, Not(HasSubstr("sampled")));
}

}  // namespace
