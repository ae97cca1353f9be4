// No command writes onto a file that it reads, or onto a clip, and a file appears when it is whole.
#include <filesystem>

#include "tests/integration/plugin_path.h"
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using testing::ElementsAre;
using testing::HasSubstr;
using Arguments = std::vector<std::string>;

class ToolOutput : public ToolTest {
 protected:
    /// Every way to name an output, for a file that must stay as it is.
    static std::vector<Arguments> waysToWrite(const std::string& clip, const std::string& target) {
        return {{"info", clip, "--out", target},
                {"doctor", clip, "--out", target},
                {"frames", clip, "--sheet", target},
                {"audio", clip, "--out", target},
                {"audio", clip, "--waveform", target},
                {"async", clip, "--json", "--out", target},
                {"soak", clip, "--minutes", "0.01", "--plot", target},
                {"soak", clip, "--minutes", "0.01", "--json", "--out", target},
                {"soak", clip, "--sessions", "1", "--json", "--out", target},
                {"verify", clip, "--framemd5", target, "--write"},
                {"verify", clip, "--resume", target},
                {"collect", clip, "--out", target},
                {"validate", pluginPath(), clip, "--only", "files.opens", "--html", target},
                {"bench", clip, "--what", "open", "--runs", "1", "--json", "--out", target}};
    }
    static std::string named(const Arguments& arguments) {
        std::string out;
        for (const std::string& word : arguments) {
            out += word + " ";
        }
        return out;
    }
};

TEST_F(ToolOutput, NoCommandOverwritesTheClipThatItReads) {
    const std::string clip = soundClip();
    const std::string before = read("clip.avi");
    for (const Arguments& arguments : waysToWrite(clip, clip)) {
        const ToolRun result = runTool(arguments);
        EXPECT_EQ(result.code, kNoOutput) << named(arguments) << result.err;
        EXPECT_EQ(read("clip.avi"), before) << named(arguments);
    }
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi")) << "nothing half made either";
}

TEST_F(ToolOutput, AnotherClipIsSafeToo) {
    const std::string clip = soundClip();
    const std::string other = write("other.AVI", "precious");
    for (const Arguments& arguments : waysToWrite(clip, other)) {
        const ToolRun result = runTool(arguments);
        EXPECT_EQ(result.code, kNoOutput) << named(arguments) << result.err;
        EXPECT_EQ(read("other.AVI"), "precious") << named(arguments);
    }
}

TEST_F(ToolOutput, AHardLinkOfTheClipIsTheClip) {
    const std::string clip = soundClip();
    std::filesystem::create_hard_link(folder / "clip.avi", folder / "link.txt");
    const std::string before = read("clip.avi");
    const ToolRun result = runTool({"info", clip, "--out", in("link.txt")});
    EXPECT_EQ(result.code, kNoOutput);
    EXPECT_THAT(result.err, HasSubstr("this run reads that file"));
    EXPECT_EQ(read("link.txt"), before);
}

// A page and a picture have names of the tool's own choice, behind which the clip may lie as well.
TEST_F(ToolOutput, AHardLinkInTheFolderOfResultsIsTheClip) {
    const std::string clip = soundClip();
    const std::string before = read("clip.avi");
    std::filesystem::create_directories(folder / "out");
    const std::string picture = "clip_YUYV_422_8u_601_000000";
    for (const std::string& name : {std::string("clip.avi.html"), picture + ".png", picture + ".raw"}) {
        std::filesystem::create_hard_link(folder / "clip.avi", folder / "out" / name);
    }
    for (const Arguments& arguments : {Arguments{"report", clip, "--out", in("out"), "--no-log"},
                                       Arguments{"frames", clip, "--out", in("out")},
                                       Arguments{"frames", clip, "--out", in("out"), "--raw"}}) {
        const ToolRun result = runTool(arguments);
        EXPECT_EQ(result.code, kNoOutput) << named(arguments);
        EXPECT_THAT(result.err, HasSubstr("this run reads that file")) << named(arguments);
    }
    EXPECT_EQ(read("clip.avi"), before);
    for (const std::string& name : namesIn(folder / "out")) {
        EXPECT_TRUE(std::filesystem::equivalent(folder / "out" / name, folder / "clip.avi")) << name;
    }
}

TEST_F(ToolOutput, TheOnesOfSeveralClipsAreSafe) {
    const std::string first = soundClip("a.avi");
    std::filesystem::create_hard_link(folder / "a.avi", folder / "link.txt");
    const std::string second = soundClip("b.avi");
    EXPECT_EQ(runTool({"info", second, first, "--out", in("link.txt")}).code, kNoOutput);
    EXPECT_EQ(read("link.txt"), read("a.avi"));
}

TEST_F(ToolOutput, ThePlugInIsSafe) {
    const std::string clip = soundClip();
    std::filesystem::copy_file(pluginPath(), folder / "plugin.prm");
    const std::string before = read("plugin.prm");
    EXPECT_EQ(runTool({"info", clip, "--plugin", in("plugin.prm"), "--out", in("plugin.prm")}).code,
              kNoOutput);
    EXPECT_TRUE(read("plugin.prm") == before);
}

TEST_F(ToolOutput, AnEarlierFileIsReplacedByAWholeOneOnly) {
    const std::string clip = soundClip();
    write("info.txt", "of yesterday");
    EXPECT_EQ(runTool({"info", in("missing.avi"), "--out", in("info.txt")}).code, simhost::tool::kFailed);
    EXPECT_EQ(read("info.txt"), "of yesterday");
    EXPECT_EQ(runTool({"info", clip, "--out", in("info.txt")}).code, kSuccess);
    EXPECT_THAT(read("info.txt"), HasSubstr("frames: 5"));
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi", "info.txt"));
}

TEST_F(ToolOutput, AResultWithoutAPlaceIsRefusedBeforeTheWork) {
    const ToolRun result =
        runTool({"soak", soundClip(), "--minutes", "10000", "--plot", in("missing/plot.svg")});
    EXPECT_EQ(result.code, kNoOutput);
    EXPECT_THAT(result.err, HasSubstr("there is no folder"));
}

}  // namespace
