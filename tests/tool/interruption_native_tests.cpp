// Ctrl-C: nothing unfinished stays, and the exit code is no success. Native only: a child can be sent a
// signal.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <filesystem>
#include <stdexcept>

#include "standin/gate.h"
#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"

extern char** environ;

namespace {

using orvantis::standin::Gate;
using orvantis::test::ScopedEnvironment;
using simhost::tool::kInterrupted;
using testing::ElementsAre;
using testing::IsEmpty;

// The tool at work, with its error stream at hand.
class RunningTool {
 public:
    explicit RunningTool(std::vector<std::string> arguments) {
        std::array<int, 2> pipe{};
        if (::pipe2(pipe.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        arguments.insert(arguments.begin(), ORVANTIS_BUILT_TOOL);
        std::vector<char*> words;
        for (std::string& word : arguments) words.push_back(word.data());
        words.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        (void)posix_spawn_file_actions_init(&actions);
        (void)posix_spawn_file_actions_adddup2(&actions, pipe[1], 2);
        const int failed =
            posix_spawn(&m_process, ORVANTIS_BUILT_TOOL, &actions, nullptr, words.data(), environ);
        (void)posix_spawn_file_actions_destroy(&actions);
        (void)::close(pipe[1]);
        m_errors = pipe[0];
        if (failed != 0) throw std::runtime_error("cannot start the tool");
    }
    RunningTool(const RunningTool&) = delete;
    RunningTool& operator=(const RunningTool&) = delete;
    ~RunningTool() {
        if (m_process != 0) {  // the test has failed before its end
            (void)::kill(m_process, SIGKILL);
            (void)::waitpid(m_process, nullptr, 0);
        }
        (void)::close(m_errors);
    }

    /// Reads the error stream until the text has come. False when the stream ends first.
    bool waitFor(const std::string& text) {
        std::string read;
        std::array<char, 256> block{};
        while (read.find(text) == std::string::npos) {
            const ssize_t count = ::read(m_errors, block.data(), block.size());
            if (count <= 0) return false;
            read.append(block.data(), static_cast<std::size_t>(count));
        }
        return true;
    }
    void interrupt() const { (void)::kill(m_process, SIGINT); }
    /// Gives the exit code; 128 and more after a signal.
    int wait() {
        std::array<char, 4096> rest{};
        while (::read(m_errors, rest.data(), rest.size()) > 0) {
        }
        int status = 0;
        (void)::waitpid(m_process, &status, 0);
        m_process = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    }

 private:
    pid_t m_process = 0;
    int m_errors = -1;
};

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

    const ScopedEnvironment temporary{"TMPDIR", in("temporary")};
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

TEST_F(ToolInterruption, TheRunsOwnLogGoesEvenWhileThePlugInIsAtWork) {
    const std::string name = "interruption-" + std::to_string(::getpid());
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

TEST_F(ToolInterruption, WorkThatComesToItsNextStepCleansUp) {
    const std::string name = "interruption-next-" + std::to_string(::getpid());
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

TEST_F(ToolInterruption, VerifyGoesOnWhereItWas) {
    const std::string name = "interruption-verify-" + std::to_string(::getpid());
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
