// Commands and options as users type them.
#include <sstream>

#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kFailed;
using simhost::tool::kSuccess;
using simhost::tool::kUsage;
using testing::HasSubstr;
using testing::Not;

class ToolWords : public ToolTest {};

TEST_F(ToolWords, AnUnknownCommandIsNamedWithTheNearest) {
    const ToolRun result = runTool({"inof", "clip.avi"});
    EXPECT_EQ(result.code, kUsage);
    EXPECT_THAT(result.err, HasSubstr("there is no command 'inof'"));
    EXPECT_THAT(result.err, HasSubstr("did you mean 'info'?"));
    EXPECT_THAT(runTool({"zebra"}).err, HasSubstr("the commands are info, frames, audio"));
    EXPECT_THAT(runTool({"--profile", "older", "fraems"}).err, HasSubstr("did you mean 'frames'?"));
}

TEST_F(ToolWords, HelpIsACommand) {
    const ToolRun all = runTool({"help"});
    EXPECT_EQ(all.code, kSuccess);
    EXPECT_EQ(all.out, runTool({"--help"}).out);
    const ToolRun one = runTool({"help", "frames"});
    EXPECT_EQ(one.code, kSuccess);
    EXPECT_EQ(one.out, runTool({"frames", "--help"}).out);
    EXPECT_THAT(one.out, HasSubstr("--sheet"));
}

TEST_F(ToolWords, NoLineOfHelpIsWiderThanATerminal) {
    std::string commands = runTool({"zebra"}).err;
    commands.erase(0, commands.find("the commands are ") + std::string("the commands are ").size());
    commands.erase(commands.find('\n'));
    std::istringstream names("--help, " + commands);
    std::size_t count = 0;
    for (std::string name; std::getline(names >> std::ws, name, ','); ++count) {
        std::istringstream help(runTool({"help", name}).out);
        for (std::string line; std::getline(help, line);) {
            EXPECT_LE(line.size(), 100U) << name << ": " << line;
        }
    }
    EXPECT_GE(count, 10U) << commands;
}

TEST_F(ToolWords, HelpHasTheOptionsOfUseAndNoOthers) {
    const std::string info = runTool({"info", "--help"}).out;
    for (const char* option : {"--plugin", "--codec-folder", "--profile", "--log", "--json"}) {
        EXPECT_THAT(info, HasSubstr(option));
    }
    const std::string log = runTool({"log", "--help"}).out;
    EXPECT_THAT(log, Not(HasSubstr("--profile")));
    EXPECT_THAT(log, Not(HasSubstr("--progress")));
    EXPECT_THAT(runTool({"bench", "--help"}).out, Not(HasSubstr("--profile")));
    EXPECT_EQ(runTool({"log", "--profile", "older"}).code, kUsage) << "and they are refused";
}

TEST_F(ToolWords, EveryCommandAnswersWithOneObject) {
    const std::string clip = soundClip();
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"info", clip},
                                               {"frames", clip, "--sheet", in("sheet.png")},
                                               {"audio", clip, "--out", in("a.wav")},
                                               {"async", clip},
                                               {"report", clip, "--out", in("out"), "--no-log"},
                                               {"doctor", clip},
                                               {"log", "--list"},
                                               {"soak", clip, "--minutes", "0.01"},
                                               {"bench", clip, "--what", "open", "--runs", "1"},
                                               {"--version"}}) {
        auto words = arguments;
        words.emplace_back("--json");
        const ToolRun result = runTool(words);
        const auto json = nlohmann::json::parse(result.out, nullptr, false);
        EXPECT_TRUE(json.is_object()) << arguments.front() << ": " << result.out << result.err;
        EXPECT_FALSE(json.contains("error")) << arguments.front() << ": " << result.out;
    }
}

TEST_F(ToolWords, NoWordsAreAWrongCall) {
    const ToolRun result = runTool({});
    EXPECT_EQ(result.code, kUsage);
    EXPECT_THAT(result.err, HasSubstr("name a command"));
}

TEST_F(ToolWords, AMistypedClipIsAMissingFileAndNoCommand) {
    const ToolRun result = runTool({in("missing.avi")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.err, HasSubstr("there is no such file"));
}

TEST_F(ToolWords, AWrongChoiceListsTheRightOnes) {
    const std::string clip = soundClip();
    EXPECT_THAT(runTool({"info", clip, "--profile", "nonesuch"}).err,
                HasSubstr("the profiles are default, "));
    EXPECT_THAT(runTool({"async", clip, "--pattern", "nonesuch"}).err,
                HasSubstr("the patterns are sequential, scrub, reverse, random"));
}

TEST_F(ToolWords, OpeningARefusedFileIsTimedButNotTakenForOpening) {
    const ToolRun result = runTool({"bench", write("text.avi", "no clip"), "--what", "open", "--runs", "1"});
    EXPECT_EQ(result.code, kSuccess);
    EXPECT_THAT(result.err, HasSubstr("text.avi': what is timed is how long that takes"));
    EXPECT_THAT(runTool({"bench", soundClip(), "--what", "open", "--runs", "1"}).err, testing::IsEmpty());
}

}  // namespace
