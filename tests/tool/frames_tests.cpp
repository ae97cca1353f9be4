// Frames that cannot be delivered, ranges beyond the end, formats that are not on offer.
#include <filesystem>

#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kFailed;
using simhost::tool::kSuccess;
using simhost::tool::kUsage;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class ToolFrames : public ToolTest {};

TEST_F(ToolFrames, ASheetShowsWhatThereIsAndCountsTheRest) {
    const std::string clip = write("lost.avi", clipWithALostFrame());
    const ToolRun result = runTool({"frames", clip, "--range", "all", "--sheet", in("sheet.png")});
    EXPECT_EQ(result.code, kFailed) << result.err;
    EXPECT_THAT(result.out, HasSubstr("4 frames on ")) << result.err;
    EXPECT_THAT(result.out, HasSubstr("1 of 5 frames could not be delivered, the first is frame 2: "));
    EXPECT_TRUE(std::filesystem::exists(folder / "sheet.png"));
}

TEST_F(ToolFrames, FilesEndAtTheFirstLostFrameUnlessToldToGoOn) {
    const std::string clip = write("lost.avi", clipWithALostFrame());
    EXPECT_EQ(runTool({"frames", clip, "--range", "all", "--out", in("stop")}).code, kFailed);
    EXPECT_EQ(namesIn(folder / "stop").size(), 2U);
    const ToolRun result =
        runTool({"frames", clip, "--range", "all", "--out", in("on"), "--keep-going", "--json"});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_EQ(namesIn(folder / "on").size(), 4U);
    const auto json = result.json();
    EXPECT_EQ(json["delivered"], 4);
    EXPECT_EQ(json["lost"].size(), 1U);
    EXPECT_EQ(json["lost"][0]["frame"], 2);
    EXPECT_EQ(runTool({"frames", clip, "--range", "all", "--sheet", in("s.png"), "--stop-at-failure"}).code,
              kFailed);
    EXPECT_FALSE(std::filesystem::exists(folder / "s.png"));
}

TEST_F(ToolFrames, ARangeBeyondTheEndIsCutWithANote) {
    const ToolRun result = runTool({"frames", soundClip(), "--range", "3:9", "--out", in("out")});
    EXPECT_EQ(result.code, kSuccess);
    EXPECT_EQ(namesIn(folder / "out").size(), 2U);
    EXPECT_THAT(result.err, HasSubstr("the clip has 5 frames, 0 to 4: the range ends there, not at 9"));
    EXPECT_THAT(runTool({"frames", soundClip(), "--range", "3:4", "--out", in("out")}).err, IsEmpty());
    EXPECT_THAT(runTool({"async", soundClip(), "--range", "3:9"}).err, HasSubstr("the range ends there"));
}

TEST_F(ToolFrames, AFormatThatIsNotOnOfferListsThoseThatAre) {
    const std::string clip = soundClip();
    for (const char* format : {"BGRA_4444_8u_nonesuch", "BGRA_4444_32f"}) {
        for (const auto& arguments :
             std::vector<std::vector<std::string>>{{"frames", clip, "--format", format, "--out", in("out")},
                                                   {"async", clip, "--format", format}}) {
            const ToolRun result = runTool(arguments);
            EXPECT_EQ(result.code, kUsage) << format << result.err;
            EXPECT_THAT(result.err, HasSubstr("on offer are ")) << format;
            EXPECT_THAT(result.err, HasSubstr("YUYV_422_8u_601 (yuy2)")) << format;
        }
    }
}

TEST_F(ToolFrames, OneFileIsNotOneFiles) {
    const ToolRun result = runTool({"frames", soundClip(), "--out", in("out"), "--sheet", in("sheet.png")});
    EXPECT_THAT(result.out, HasSubstr("1 file in "));
    EXPECT_THAT(result.out, HasSubstr("1 frame on "));
    EXPECT_THAT(result.out, Not(HasSubstr("1 files")));
}

}  // namespace
