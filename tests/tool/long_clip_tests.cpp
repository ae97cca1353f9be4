// Pictures of clips that are long or large ask for so much of them and no more.
#include <algorithm>
#include <regex>
#include <set>

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
    /// Small, with a header that claims pictures of this size.
    std::string largeByItsHeader(std::int32_t width, std::int32_t height) const {
        orvantis::test::AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", width, height, 25, 1));
        for (std::uint32_t i = 0; i < 30; ++i) {
            avi.addFilledChunk(0, 64, 1);
        }
        return write("large.avi", avi.build());
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

// Whatever the header claims: each frame of such a size is memory that the host makes for it.
TEST_F(ToolLongClips, AReportAsksForFewFramesOfLargeOnes) {
    const std::string clip = largeByItsHeader(7680, 4320);
    const auto usual =
        runTool({"report", clip, "--out", in("out"), "--no-log", "--json"}).json()["reports"][0];
    EXPECT_EQ(usual["framesAsked"], 3);
    const auto wished = runTool({"report", clip, "--out", in("out"), "--no-log", "--json", "--frames", "1"})
                            .json()["reports"][0];
    EXPECT_EQ(wished["framesAsked"], 1);
    const auto small =
        runTool({"report", manyFrames(30), "--out", in("out"), "--no-log", "--json"}).json()["reports"][0];
    EXPECT_EQ(small["framesAsked"], 24);
}

TEST_F(ToolLongClips, ASheetOfLargeFramesHasFewFormats) {
    const ToolRun told = runTool({"frames", largeByItsHeader(7680, 4320), "--range", "all", "--format", "all",
                                  "--sheet", in("a.png"), "--json"});
    EXPECT_EQ(told.json()["lost"].size(), 3U) << "none of them can be decoded";
    EXPECT_EQ(told.json()["note"],
              "frames of 7680 × 4320 are large: the sheet shows them in 3 of 4 pixel formats; --format names "
              "others");
    EXPECT_THAT(told.err, HasSubstr("the sheet shows them in 3 of 4 pixel formats"));
}

TEST_F(ToolLongClips, AFrameThatIsTooLargeForAPngIsRefusedBeforeItIsMade) {
    const std::string clip = largeByItsHeader(10'001, 10'000);
    const ToolRun told = runTool({"frames", clip, "--out", in("out")});
    EXPECT_EQ(told.code, simhost::tool::kFailed);
    EXPECT_THAT(told.err,
                HasSubstr("frames of 10001 × 10000 are too large for PNG files, which are made up to "
                          "100 million pixels\n  -> --raw writes them as they are, --sheet shows "
                          "them small\n"));
}

TEST_F(ToolLongClips, AReportReadsNoMoreSoundThanTheFileHas) {
    const auto claimed = runTool({"report", hoursOfSound(), "--out", in("out"), "--no-log", "--json"}).json();
    EXPECT_EQ(claimed["reports"][0]["sampleFramesRead"], 8000);
    // Two thousand entries of the index name the same chunk.
    orvantis::test::AviBuilder avi;
    auto sound = orvantis::test::pcmStream(1, 8000, 8);
    sound.length = 900'000'000;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1)).addStream(sound);
    for (int i = 0; i < 2000; ++i) {
        avi.addChunk(1, {});
    }
    avi.addFilledChunk(1, 60'000, 0x80).addChunk(0, clips::codedPicture(0));
    auto bytes = avi.build();
    const std::size_t entries = avi.idx1Offset() + 8;
    for (std::size_t i = 0; i < 2000; ++i) {
        std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(entries + 2000 * 16), 16,
                    bytes.begin() + static_cast<std::ptrdiff_t>(entries + i * 16));
    }
    const auto shared =
        runTool({"report", write("shared.avi", bytes), "--out", in("out"), "--no-log", "--json"}).json();
    EXPECT_EQ(shared["reports"][0]["sampleFramesRead"], bytes.size());
}

// All tracks of a page share what is read for it.
TEST_F(ToolLongClips, AReportReadsStretchesOfMuchSound) {
    orvantis::test::AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    for (int i = 0; i < 32; ++i) {
        avi.addStream(orvantis::test::pcmStream(1, 8000, 8));
    }
    avi.addChunk(0, clips::codedPicture(0)).addFilledChunk(1, 4'000'000, 0x80);
    const std::string clip = write("tracks.avi", avi.build());
    const auto told = runTool({"report", clip, "--out", in("out"), "--no-log", "--json"}).json();
    EXPECT_EQ(told["reports"][0]["sampleFramesRead"], 3'000'000) << "of 96 million for 32 tracks";
    EXPECT_NE(read("out/tracks.avi.html")
                  .find("<dt>Looked at</dt><dd>3000000 sample frames, evenly spread; peaks are those of "
                        "these</dd>"),
              std::string::npos);
}

// Frames and sound are one piece of work, which ends where its line says.
TEST_F(ToolLongClips, AReportHasOneLineOfProgressWithATotal) {
    const ToolRun told = runTool({"report", soundClip(), "--out", in("out"), "--progress"});
    ASSERT_EQ(told.code, kSuccess);
    std::set<std::string> lines;
    const std::regex line("([a-z]+) \\[[#.]+\\] [0-9]+/([0-9]+)");
    for (std::sregex_iterator it(told.err.begin(), told.err.end(), line), end; it != end; ++it) {
        lines.insert(it->str(1) + " of " + it->str(2));
    }
    EXPECT_THAT(lines, testing::ElementsAre("report of 6")) << "five frames and a block of sound";
    EXPECT_THAT(told.err, HasSubstr("] 0/6"));
    EXPECT_THAT(told.err, HasSubstr("] 6/6"));
}

TEST_F(ToolLongClips, AShortSoundIsDrawnWhole) {
    const ToolRun told = runTool({"audio", soundClip(), "--waveform", in("a.png")});
    ASSERT_EQ(told.code, kSuccess) << told.err;
    EXPECT_THAT(told.out, Not(HasSubstr("sampled")));
}

}  // namespace
