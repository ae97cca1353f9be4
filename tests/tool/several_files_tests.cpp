// Several clips and folders of clips in one run.
#include <filesystem>

#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kFailed;
using simhost::tool::kSuccess;
using testing::ElementsAre;
using testing::HasSubstr;

class ToolSeveralFiles : public ToolTest {
 protected:
    ToolSeveralFiles() {
        soundClip("clips/b.avi");
        soundClip("clips/below/a.AVI");
        write("clips/notes.txt", "no clip");
    }
};

TEST_F(ToolSeveralFiles, InfoTellsOfEach) {
    const ToolRun result = runTool({"info", in("clips"), soundClip("c.avi"), "--json"});
    EXPECT_EQ(result.code, kSuccess) << result.err;
    const auto files = result.json()["files"];
    ASSERT_EQ(files.size(), 3U);
    EXPECT_EQ(files[2]["path"], in("c.avi"));
    for (const auto& file : files) {
        EXPECT_EQ(file["streams"][0]["video"]["frames"], 5);
    }
}

TEST_F(ToolSeveralFiles, OneThatFailsDoesNotKeepTheOthersBack) {
    write("clips/a bad one.avi", "no AVI at all");
    const ToolRun info = runTool({"info", in("clips"), "--json"});
    EXPECT_EQ(info.code, kFailed);
    EXPECT_EQ(info.json()["files"][0]["error"]["kind"], "not-avi");
    EXPECT_EQ(info.json()["files"][1]["streams"].size(), 1U);
    const ToolRun report =
        runTool({"report", in("clips"), in("missing.avi"), "--out", in("out"), "--no-log"});
    EXPECT_EQ(report.code, kFailed);
    EXPECT_EQ(namesIn(folder / "out").size(), 3U);
}

TEST_F(ToolSeveralFiles, EachHasAReportAlsoWhenNamesAreEqual) {
    const std::string other = soundClip("other/b.avi");
    const ToolRun result = runTool({"report", in("clips"), other, "--out", in("out"), "--no-log"});
    EXPECT_EQ(result.code, kSuccess) << result.err;
    EXPECT_THAT(namesIn(folder / "out"), ElementsAre("a.AVI.html", "b.avi (2).html", "b.avi.html"));
}

TEST_F(ToolSeveralFiles, WithoutAPlaceAReportLiesBesideItsClip) {
    ASSERT_EQ(runTool({"report", in("clips"), "--no-log"}).code, kSuccess);
    EXPECT_TRUE(std::filesystem::exists(folder / "clips" / "b.avi.html"));
    EXPECT_TRUE(std::filesystem::exists(folder / "clips" / "below" / "a.AVI.html"));
}

TEST_F(ToolSeveralFiles, WhereNothingCanBeWrittenAReportGoesToTheTemporaryFolder) {
    std::filesystem::create_directories(folder / "temporary");
    const orvantis::test::ScopedEnvironment posix("TMPDIR", in("temporary"));
    const orvantis::test::ScopedEnvironment windows("TMP", in("temporary"));
    const std::string clip = soundClip();
    // Permissions would not keep an administrator from writing.
    std::filesystem::create_directories(folder / "clip.avi.html");
    const ToolRun result = runTool({"report", clip, "--no-log"});
    EXPECT_EQ(result.code, kSuccess) << result.err;
    EXPECT_THAT(result.out, HasSubstr("importer_host reports"));
    EXPECT_THAT(namesIn(folder / "temporary" / "importer_host reports"),
                testing::ElementsAre("clip.avi.html"));
    EXPECT_THAT(namesIn(folder / "clip.avi.html"), testing::IsEmpty());
}

TEST_F(ToolSeveralFiles, TheDoctorNamesTheClipOfEachFinding) {
    const ToolRun result = runTool({"doctor", in("clips")});
    EXPECT_THAT(result.out, HasSubstr("b.avi: decoding: frame 0"));
    EXPECT_THAT(result.out, HasSubstr("a.AVI: decoding: frame 0"));
}

TEST_F(ToolSeveralFiles, AFolderWithoutClipsSaysSo) {
    std::filesystem::create_directories(folder / "empty");
    const ToolRun result = runTool({"info", in("empty")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.err, HasSubstr("holds no .avi file"));
}

}  // namespace
