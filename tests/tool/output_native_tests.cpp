// Output where the system fails: a full disk, a file that may grow no further. Links as this system has them.
#include <sys/resource.h>

#include <csignal>
#include <filesystem>

#include "tests/integration/plugin_path.h"
#include "tests/support/child_process.h"
#include "tests/tool/stream_capture.h"
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kNoOutput;
using testing::ElementsAre;
using testing::HasSubstr;

class ToolOutputNative : public ToolTest {};

// For this process and those that it starts, which would be ended by a signal instead.
class FileSizeLimit {
 public:
    explicit FileSizeLimit(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        (void)getrlimit(RLIMIT_FSIZE, &m_former);
        const rlimit limit{bytes, m_former.rlim_max};
        (void)setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        (void)setrlimit(RLIMIT_FSIZE, &m_former);
        (void)std::signal(SIGXFSZ, m_handler);
    }

 private:
    rlimit m_former{};
    void (*m_handler)(int);
};

TEST_F(ToolOutputNative, AFullDiskIsToldAsSuch) {
    const ToolRun result = runTool({"info", soundClip(), "--out", "/dev/full"});
    EXPECT_EQ(result.code, kNoOutput);
    EXPECT_THAT(result.err, HasSubstr("cannot write to '/dev/full': disk full"));
}

TEST_F(ToolOutputNative, EveryCommandTellsThatTheDiskIsFull) {
    const std::string clip = soundClip();
    for (const std::vector<std::string>& arguments : std::vector<std::vector<std::string>>{
             {"doctor", clip, "--out"},
             {"frames", clip, "--sheet"},
             {"audio", clip, "--out"},
             {"audio", clip, "--waveform"},
             {"async", clip, "--json", "--out"},
             {"soak", clip, "--minutes", "0.01", "--plot"},
             {"bench", clip, "--what", "open", "--runs", "1", "--json", "--out"},
             {"verify", clip, "--write", "--framemd5"},
             {"collect", clip, "--out"},
             {"validate", pluginPath(), clip, "--only", "files.opens", "--html"}}) {
        std::vector<std::string> words = arguments;
        words.emplace_back("/dev/full");
        const ToolRun result = runTool(words);
        EXPECT_EQ(result.code, kNoOutput) << words.front() << result.err;
        EXPECT_THAT(result.err, HasSubstr("'/dev/full': disk full")) << words.front();
    }
}

TEST_F(ToolOutputNative, AnAnswerThatIsLostIsNoSuccess) {
    const std::string clip = soundClip();
    int code = 0;
    {
        const orvantis::test::StreamCapture out(1, "/dev/full");
        const orvantis::test::StreamCapture err(2, folder / "err");
        code = orvantis::test::ChildProcess(ORVANTIS_BUILT_TOOL, {"info", clip}).wait();
    }
    EXPECT_EQ(code, kNoOutput);
    EXPECT_THAT(read("err"), HasSubstr("disk full"));
}

TEST_F(ToolOutputNative, AFailedWriteLeavesTheEarlierFileAndNothingElse) {
    const std::string clip = soundClip();
    for (const char* name : {"sound.wav", "info.txt"}) {
        write(name, "of yesterday");
    }
    std::vector<int> codes;
    {
        const FileSizeLimit limit(500);
        const orvantis::test::StreamCapture err(2, "/dev/null");
        using orvantis::test::ChildProcess;
        codes.push_back(ChildProcess(ORVANTIS_BUILT_TOOL, {"audio", clip, "--out", in("sound.wav")}).wait());
        codes.push_back(ChildProcess(ORVANTIS_BUILT_TOOL, {"info", clip, "--out", in("info.txt")}).wait());
    }
    EXPECT_THAT(codes, ElementsAre(kNoOutput, kNoOutput));
    EXPECT_EQ(read("sound.wav"), "of yesterday");
    EXPECT_EQ(read("info.txt"), "of yesterday");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("clip.avi", "info.txt", "sound.wav"));
}

TEST_F(ToolOutputNative, ASymbolicLinkLeadsToTheClip) {
    const std::string clip = soundClip();
    const std::string before = read("clip.avi");
    std::filesystem::create_symlink(folder / "clip.avi", folder / "page.html");
    EXPECT_EQ(runTool({"info", clip, "--out", in("page.html")}).code, kNoOutput);
    std::filesystem::create_directory_symlink(folder.path(), folder / "elsewhere");
    EXPECT_EQ(runTool({"info", clip, "--out", in("elsewhere/clip.avi")}).code, kNoOutput);
    EXPECT_EQ(read("clip.avi"), before);
}

TEST_F(ToolOutputNative, ASymbolicLinkLeadsToAClipThatTheRunDoesNotRead) {
    write("other.avi", "precious");
    std::filesystem::create_symlink(folder / "other.avi", folder / "info.txt");
    const ToolRun result = runTool({"info", soundClip(), "--out", in("info.txt")});
    EXPECT_EQ(result.code, kNoOutput);
    EXPECT_THAT(result.err, HasSubstr("it has the name of a clip"));
    EXPECT_EQ(read("other.avi"), "precious");
}

TEST_F(ToolOutputNative, ALinkToAnOrdinaryFileStaysALink) {
    write("real.txt", "of yesterday");
    std::filesystem::create_symlink(folder / "real.txt", folder / "link.txt");
    EXPECT_EQ(runTool({"info", soundClip(), "--out", in("link.txt")}).code, simhost::tool::kSuccess);
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link.txt"));
    EXPECT_THAT(read("real.txt"), HasSubstr("frames: 5"));
}

}  // namespace
