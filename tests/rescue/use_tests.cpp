// "importer_host rescue", run as its users run it.
#include "tests/tool/tool_run.h"

namespace {

using orvantis::test::Bytes;
using simhost::tool::kFailed;
using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using simhost::tool::kUsage;
using testing::ElementsAre;
using testing::HasSubstr;

class RescueUse : public ToolTest {
 protected:
    /// Five pictures with sound; the file ends in the last sound chunk, so it has no index.
    std::string cutClip(std::string_view name = "clip.avi") const {
        auto builder = clips::builder();
        Bytes bytes = builder.build();
        bytes.resize(static_cast<std::size_t>(builder.placements().back().offset + 10));
        return write(name, bytes);
    }
    static nlohmann::json videoOf(const std::string& clip) {
        return runTool({"info", clip, "--json"}).json()["file"]["streams"][0]["video"];
    }
};

TEST_F(RescueUse, ACheckSaysWhatIsThereAndWritesNothing) {
    const std::string clip = cutClip();
    const std::string before = read("clip.avi");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"rescue", clip}, {"rescue", "--check", clip}}) {
        const ToolRun run = runTool(words);
        EXPECT_EQ(run.code, kFailed);
        EXPECT_THAT(run.out, HasSubstr("stream 0 (pictures, O8Y2): 5 whole chunks, 00:00:00.200; "));
        EXPECT_THAT(run.out, HasSubstr("stream 1 (sound, PCM): 4 whole chunks, "));
        EXPECT_THAT(run.out, HasSubstr("a chunk of stream 1 ('01wb') that the end of the file cuts off\n"));
        EXPECT_THAT(
            run.out,
            HasSubstr(
                "A rescue would gain: 9 whole chunks that no index names come back.\n  -> importer_host "
                "rescue \"" +
                clip + "\" --out NEW.avi\n"));
        EXPECT_EQ(run.err, "");
    }
    EXPECT_EQ(read("clip.avi"), before);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi"));
    const ToolRun sound = runTool({"rescue", soundClip("sound.avi")});
    EXPECT_EQ(sound.code, kSuccess);
    EXPECT_THAT(
        sound.out,
        HasSubstr(
            "damage: none\nThere is nothing to rescue: the index names every whole chunk, and no other."));
}

TEST_F(RescueUse, TheAnswerIsJsonOnRequest) {
    const ToolRun run = runTool({"rescue", cutClip(), "--json"});
    EXPECT_EQ(run.code, kFailed);
    const nlohmann::json out = run.json();
    EXPECT_EQ(out["gains"], true);
    EXPECT_EQ(out["streams"][0]["chunks"], 5);
    EXPECT_EQ(out["streams"][1]["index"],
              (nlohmann::json{{"kind", "none"}, {"entries", 0}, {"leftOut", 4}, {"nowhere", 0}}));
    ASSERT_EQ(out["damaged"].size(), 1U);
    EXPECT_EQ(out["damaged"][0]["kind"], "cut-chunk");
    EXPECT_EQ(out["damaged"][0]["stream"], 1);
    EXPECT_EQ(out["damaged"][0]["bytes"], 18);
}

TEST_F(RescueUse, ANewFilePlays) {
    const std::string clip = cutClip();
    const std::string before = read("clip.avi");
    EXPECT_EQ(videoOf(clip)["frames"], 0);
    const ToolRun run = runTool({"rescue", clip, "--out", in("new.avi")});
    EXPECT_EQ(run.code, kSuccess) << run.err;
    EXPECT_THAT(run.out, HasSubstr("written: '" + in("new.avi") + "', 9 chunks, "));
    EXPECT_EQ(videoOf(in("new.avi"))["frames"], 5);
    EXPECT_EQ(read("clip.avi"), before);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi", "new.avi"));
    EXPECT_EQ(runTool({"rescue", in("new.avi")}).code, kSuccess);
}

TEST_F(RescueUse, NothingIsEverWrittenOver) {
    const std::string clip = cutClip();
    write("old.avi", "of yesterday");
    EXPECT_EQ(runTool({"rescue", clip, "--out", in("old.avi")}).err,
              "importer_host: '" + in("old.avi") +
                  "' is not written: there is something of that name\n"
                  "  -> name a file that is not there yet\n");
    EXPECT_EQ(runTool({"rescue", clip, "--out", clip}).code, kNoOutput);
    EXPECT_EQ(runTool({"rescue", clip, "--out", in("new.txt")}).code, kNoOutput);
    EXPECT_EQ(runTool({"rescue", clip, "--out", in("missing/new.avi")}).code, kNoOutput);
    EXPECT_EQ(read("old.avi"), "of yesterday");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi", "old.avi"));
}

TEST_F(RescueUse, InPlaceAndBack) {
    const std::string clip = cutClip();
    const std::string before = read("clip.avi");
    const ToolRun run = runTool({"rescue", "--in-place", clip});
    EXPECT_EQ(run.code, kSuccess) << run.err;
    EXPECT_THAT(run.out,
                HasSubstr("mended: the index names 9 chunks now\nThe old bytes are in '" + clip + ".undo'"));
    EXPECT_EQ(videoOf(clip)["frames"], 5);
    EXPECT_NE(read("clip.avi"), before);
    EXPECT_EQ(runTool({"rescue", "--in-place", clip}).code, kNoOutput) << "the undo file is in the way";
    const ToolRun undo = runTool({"rescue", "--undo", clip});
    EXPECT_EQ(undo.code, kSuccess);
    EXPECT_EQ(undo.out, "undone: '" + clip + "' is as it was before\n");
    EXPECT_EQ(read("clip.avi"), before);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi"));
    EXPECT_EQ(runTool({"rescue", "--undo", clip}).code, kFailed);
}

TEST_F(RescueUse, ASoundFileIsNotTouched) {
    const std::string clip = soundClip();
    const std::string before = read("clip.avi");
    const ToolRun run = runTool({"rescue", "--in-place", clip, "--json"});
    EXPECT_EQ(run.code, kSuccess);
    EXPECT_EQ(run.json()["changed"], false);
    EXPECT_EQ(read("clip.avi"), before);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi"));
}

TEST_F(RescueUse, WhatCannotBeHelpedIsTold) {
    EXPECT_EQ(runTool({"rescue", write("text.avi", "no clip at all")}).err,
              "importer_host: '" + in("text.avi") +
                  "' cannot be rescued: it does not begin like an AVI file\n"
                  "  -> without its headers nobody knows what its data are\n");
    auto builder = clips::builder();
    Bytes bytes = builder.build();
    bytes.resize(static_cast<std::size_t>(builder.moviOffset() + 14));
    EXPECT_THAT(runTool({"rescue", write("empty.avi", bytes), "--out", in("new.avi")}).err,
                HasSubstr("holds no whole chunk"));
    EXPECT_EQ(runTool({"rescue", in("missing.avi")}).code, kFailed);
    EXPECT_EQ(runTool({"rescue", cutClip(), "--in-place", "--undo"}).code, kUsage);
    EXPECT_EQ(runTool({"rescue"}).code, kUsage);
}

// Where users look first.
TEST_F(RescueUse, DoctorSaysThatAFileWouldGain) {
    const ToolRun run = runTool({"doctor", cutClip()});
    EXPECT_THAT(run.out, HasSubstr("importer_host rescue OLD.avi --out NEW.avi"));
}

}  // namespace
