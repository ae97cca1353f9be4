// Ctrl-C: nothing unfinished stays, and the exit code is no success.
#include <filesystem>

#include "standin/gate.h"
#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/tool/running_tool.h"
#include "tests/tool/tool_run.h"

namespace {

using orvantis::standin::Gate;
using orvantis::test::ScopedEnvironment;
using simhost::tool::kInterrupted;
using testing::ElementsAre;
using testing::IsEmpty;

class ToolInterruption : public ToolTest {
 protected:
    ToolInterruption() { std::filesystem::create_directories(folder / "temporary"); }

    /// A second of nothing but sound is enough for hours: the file is one long hole.
    std::string endlessClip() const {
        orvantis::test::AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
        auto sound = orvantis::test::pcmStream(1, 8000, 8);
        sound.length = 900'000'000;
        avi.addStream(sound).addChunk(0, clips::codedPicture(0)).addFilledChunk(1, 8000, 0x80);
        auto bytes = avi.build();
        return write("endless.avi", bytes);
    }

    static std::string plugin() {
        return (std::filesystem::path(ORVANTIS_BUILT_TOOL).parent_path() / "ImporterOrvantis.prm").string();
    }

    /// Ends the command while the codec decodes its first frame: it stops by itself at its next step, the
    /// file of yesterday stays, and nothing else is left.
    /// `arguments` name in("result") as the output.
    void expectCleanEnd(const std::string& name, const std::vector<std::string>& arguments,
                        const std::string& yesterday = "of yesterday") {
        const std::string gateName = "end-" + name + "-" + std::to_string(orvantis::test::thisProcessId());
        Gate::remove(gateName);
        Gate gate(gateName);
        {
            const ScopedEnvironment gated("ORVANTIS_STANDIN_GATE", gateName);
            write("result", yesterday);
            const std::vector<std::string> before = namesIn(folder.path());
            RunningTool tool(arguments);
            ASSERT_TRUE(gate.waitForArrival());
            tool.interrupt();
            ASSERT_TRUE(tool.waitFor("ending; once more ends at once"));
            gate.release(100'000);
            EXPECT_TRUE(tool.waitFor("interrupted; what was unfinished is removed"));
            EXPECT_EQ(tool.wait(), kInterrupted);
            EXPECT_THAT(namesIn(folder.path()), testing::ElementsAreArray(before));
        }
        Gate::remove(gateName);
        EXPECT_EQ(read("result"), yesterday);
        EXPECT_THAT(namesIn(folder / "temporary"), IsEmpty());
    }

#if defined(_WIN32)
    const ScopedEnvironment temporary{"TMP", in("temporary")};
#else
    const ScopedEnvironment temporary{"TMPDIR", in("temporary")};
#endif
};

TEST_F(ToolInterruption, AnUnfinishedFileGoesAndTheEarlierOneStays) {
    const std::string clip = endlessClip();
    write("sound.wav", "of yesterday");
    RunningTool tool({"audio", clip, "--out", in("sound.wav"), "--progress"});
    ASSERT_TRUE(tool.waitFor("sample frames [")) << "it is being written";
    tool.interrupt();
    EXPECT_EQ(tool.wait(), kInterrupted);
    EXPECT_EQ(read("sound.wav"), "of yesterday");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("endless.avi", "sound.wav", "temporary"));
}

#if !defined(_WIN32)  // where a log that is open cannot be removed

TEST_F(ToolInterruption, TheRunsOwnLogGoesEvenWhileThePlugInIsAtWork) {
    const std::string name = "interruption-" + std::to_string(orvantis::test::thisProcessId());
    Gate::remove(name);
    Gate gate(name);
    {
        const ScopedEnvironment gated("ORVANTIS_STANDIN_GATE", name);
        RunningTool tool({"report", soundClip(), "--out", in("out")});
        ASSERT_TRUE(gate.waitForArrival());
        ASSERT_EQ(namesIn(folder / "temporary").size(), 1U) << "there is a log to remove";
        tool.interrupt();
        tool.interrupt();  // no patience: the decoding call never comes back
        EXPECT_EQ(tool.wait(), kInterrupted);
    }
    Gate::remove(name);
    EXPECT_THAT(namesIn(folder / "temporary"), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(folder / "out" / "clip.avi.html"));
}

#endif

TEST_F(ToolInterruption, WorkThatComesToItsNextStepCleansUp) {
    const std::string name = "interruption-next-" + std::to_string(orvantis::test::thisProcessId());
    Gate::remove(name);
    Gate gate(name);
    {
        const ScopedEnvironment gated("ORVANTIS_STANDIN_GATE", name);
        RunningTool tool({"frames", soundClip(), "--range", "all", "--sheet", in("sheet.png")});
        ASSERT_TRUE(gate.waitForArrival());
        tool.interrupt();
        ASSERT_TRUE(tool.waitFor("ending"));
        gate.release(100);
        EXPECT_EQ(tool.wait(), kInterrupted);
    }
    Gate::remove(name);
    EXPECT_FALSE(std::filesystem::exists(folder / "sheet.png"));
}

TEST_F(ToolInterruption, BenchmarksEndAtTheirNextRound) {
    expectCleanEnd("bench", {"bench", soundClip(), "--what", "frames", "--out", in("result")});
}

TEST_F(ToolInterruption, ASoakEndsLongBeforeItsNextSample) {
    expectCleanEnd("soak",
                   {"soak", soundClip(), "--minutes", "1000", "--interval", "3600", "--out", in("result")});
}

TEST_F(ToolInterruption, SessionsEndWithTheirProcesses) {
    expectCleanEnd("sessions", {"soak", "--sessions", "100000", "--out", in("result")});
}

TEST_F(ToolInterruption, CollectingLeavesNoZip) {
    expectCleanEnd("collect", {"collect", soundClip(), "--frames", "1", "--out", in("result")});
}

TEST_F(ToolInterruption, ChecksOfAnImporterEndWithTheirProcesses) {
    expectCleanEnd("validate",
                   {"validate", plugin(), soundClip(), "--only", "frames", "--json", in("result")},
                   "{ \"of\": \"yesterday\" }");
}

TEST_F(ToolInterruption, VerifyGoesOnWhereItWas) {
    const std::string name = "interruption-verify-" + std::to_string(orvantis::test::thisProcessId());
    const std::string clip = soundClip();
    Gate::remove(name);
    Gate gate(name);
    {
        const ScopedEnvironment gated("ORVANTIS_STANDIN_GATE", name);
        RunningTool tool({"verify", clip, "--jobs", "1", "--beside", "--resume", in("state")});
        for (int frame = 0; frame < 2; ++frame) {
            ASSERT_TRUE(gate.waitForArrival());
            gate.release(1);
        }
        ASSERT_TRUE(gate.waitForArrival());
        tool.interrupt();
        ASSERT_TRUE(tool.waitFor("ending"));
        gate.release(100);
        EXPECT_EQ(tool.wait(), kInterrupted);
    }
    Gate::remove(name);
    EXPECT_FALSE(std::filesystem::exists(folder / "clip.avi.framemd5")) << "half a list is none";
    const std::string kept = read("state");
    EXPECT_THAT(kept, testing::HasSubstr("\n0 0 1 128 ")) << "the first frame";
    EXPECT_THAT(kept, testing::HasSubstr("\n0 1 1 128 ")) << "the second";
    const ToolRun rest = runTool({"verify", clip, "--beside", "--resume", in("state")});
    EXPECT_EQ(rest.code, simhost::tool::kSuccess) << rest.err;
    EXPECT_THAT(rest.out, testing::HasSubstr(" of an earlier run\n"));
    EXPECT_FALSE(std::filesystem::exists(folder / "state"));
    EXPECT_EQ(runTool({"verify", clip, "--beside", "--compare"}).code, simhost::tool::kSuccess);
}

}  // namespace
