// The endurance run and the comparison of the two paths, as users of the built program see them.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <vector>

#include "tests/integration/plugin_clips.h"
#include "tests/tool/tool_run.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

using orvantis::test::readFile;
using orvantis::test::utf8Path;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class ImporterHostSoak : public ToolTest {
 protected:
    ImporterHostSoak() {
        soundClip();
        write("text.avi", "no AVI at all");
    }

    nlohmann::json json(std::string_view name) const {
        return nlohmann::json::parse(readFile(folder / name));
    }
};

TEST_F(ImporterHostSoak, AShortRunEndsBalancedAndTellsSo) {
    ASSERT_EQ(run({"soak", in("clip.avi"), in("text.avi"), "--minutes", "0.03", "--plot", in("plot.svg"),
                   "--json", "--out", in("soak.json")}),
              kSuccess);
    const auto result = json("soak.json");
    EXPECT_EQ(result["good"], true);
    EXPECT_EQ(result["hostBalanced"], true);
    EXPECT_EQ(result["wrongAnswers"].size(), 0u);
    EXPECT_EQ(result["codec"]["known"], true);
    EXPECT_EQ(result["codec"]["sessions"], 0);
    EXPECT_EQ(result["codec"]["initialisations"], 0);
    ASSERT_GE(result["samples"].size(), 1u);
    const auto& last = result["samples"].back();
    for (const char* counted : {"handles", "privateBytes", "workingSet", "opens", "frames", "sampleFrames"}) {
        EXPECT_GT(last[counted], 0) << counted;
    }
    EXPECT_TRUE(readFile(folder / "plot.svg").starts_with("<svg "));
}

TEST_F(ImporterHostSoak, LostHandlesMemoryAndHostBlocksAreExitCode5) {
    const std::vector<std::string> base = {"soak",       in("clip.avi"), "--minutes",    "0.01",
                                           "--interval", "0.1",          "--samples",    "24",
                                           "--json",     "--out",        in("soak.json")};
    for (const char* lost : {"handle", "block"}) {
        auto arguments = base;
        arguments.insert(arguments.end(), {"--lose", lost});
        EXPECT_EQ(run(arguments), kBrokenRule) << lost;
        const auto result = json("soak.json");
        EXPECT_EQ(result["good"], false) << lost;
        if (std::string(lost) == "handle") {
            EXPECT_EQ(result["handles"]["grows"], true);
            EXPECT_EQ(result["hostBalanced"], true);
        } else {
            EXPECT_EQ(result["hostBalanced"], false);
        }
    }
}

TEST_F(ImporterHostSoak, LostMemoryIsExitCode5) {
    EXPECT_EQ(run({"soak", in("clip.avi"), "--minutes", "0.01", "--interval", "0.1", "--samples", "24",
                   "--json", "--out", in("soak.json"), "--lose", "memory"}),
              kBrokenRule);
    const auto result = json("soak.json");
    EXPECT_EQ(result["privateBytes"]["grows"], true);
    EXPECT_GE(result["samples"].size(), 24u);
}

// Under Wine it takes half a minute until there are frames enough to tell.
#ifndef _WIN32
TEST_F(ImporterHostSoak, SixtyFourLostBytesAFrameAreExitCode5) {
    EXPECT_EQ(run({"soak", in("clip.avi"), "--minutes", "0.05", "--interval", "0.1", "--samples", "60",
                   "--json", "--out", in("soak.json"), "--lose", "frame"}),
              kBrokenRule);
    const auto result = json("soak.json");
    EXPECT_EQ(result["heapBytes"]["grows"], true);
    EXPECT_EQ(result["handles"]["grows"], false);
    EXPECT_EQ(result["hostBalanced"], true);
}
#endif

TEST_F(ImporterHostSoak, NothingPlayableOrWritableIsNoSuccess) {
    EXPECT_EQ(run({"soak", in("text.avi"), "--minutes", "0.02"}), kFailed);
    EXPECT_EQ(run({"soak", in("clip.avi"), "--minutes", "0.02", "--plot", in("missing/plot.svg")}),
              kNoOutput);
    EXPECT_EQ(run({"soak", "--minutes", "0.02"}), kUsage);
    EXPECT_EQ(run({"soak", "--sessions", "0"}), kUsage);
}

TEST_F(ImporterHostSoak, RandomSessionsLeaveNothingAndTellWhatTheyDid) {
    ASSERT_EQ(run({"soak", "--sessions", "150", "--first", "950", "--jobs", "2", "--json", "--out",
                   in("sessions.json")}),
              kSuccess);
    const auto result = json("sessions.json");
    EXPECT_EQ(result["good"], true);
    EXPECT_EQ(result["wrong"].size(), 0u);
    EXPECT_EQ(result["counts"]["sessions"], 150);
    for (const auto& [name, count] : result["counts"].items()) {
        EXPECT_GT(count, 0) << name;
    }
}

TEST_F(ImporterHostSoak, PlantedFaultsAreFoundWithTheirSessionAndTheOthersGoOn) {
    std::string planted = "twice:4,block:9,file:12,crash:15,hang:18";
#ifndef _WIN32
    planted += ",handle:21";  // Windows threads come and go with handles of their own
#endif
    EXPECT_EQ(run({"soak", "--sessions", "25", "--jobs", "1", "--timeout", "3", "--sabotage", planted,
                   "--json", "--out", in("sessions.json")}),
              kBrokenRule);
    const auto result = json("sessions.json");
    EXPECT_EQ(result["good"], false);
    EXPECT_EQ(result["counts"]["sessions"], 25);
    std::map<std::uint64_t, std::string> told;
    for (const auto& wrong : result["wrong"]) {
        told[wrong["session"].get<std::uint64_t>()] += wrong["what"].get<std::string>() + "\n";
    }
    EXPECT_THAT(told[4], HasSubstr("memory.live: "));
    EXPECT_THAT(told[9], HasSubstr("memory.returned: "));
    EXPECT_THAT(told[12], HasSubstr("left behind: "));
    EXPECT_THAT(told[15], HasSubstr("crash: "));
    EXPECT_EQ(told[18], "not over after 3 s\n");
    std::set<std::uint64_t> numbers = {4, 9, 12, 15, 18};
#ifndef _WIN32
    EXPECT_THAT(told[21], HasSubstr("file descriptors instead of"));
    numbers.insert(21);
#endif
    for (const auto& [number, what] : told) {
        EXPECT_TRUE(numbers.contains(number)) << number << ": " << what;
    }
}

TEST_F(ImporterHostSoak, ASessionIsPlayedAgainByItsNumberAlone) {
    const std::vector<std::string> arguments = {"soak", "--seed", "1", "--session", "3"};
    const ToolRun once = runTool(arguments);
    EXPECT_EQ(once.code, kSuccess);
    EXPECT_THAT(once.out, StartsWith("session 3\nhost "));
    EXPECT_THAT(once.out, HasSubstr("  imGetSourceVideo frame "));
    EXPECT_THAT(once.out, EndsWith("imShutdown: 0\nnothing is wrong\n"));
    EXPECT_EQ(runTool(arguments).out, once.out);

    const ToolRun wrong = runTool({"soak", "--seed", "1", "--session", "9", "--sabotage", "block:9"});
    EXPECT_EQ(wrong.code, kBrokenRule);
    EXPECT_THAT(wrong.out, HasSubstr("\nwrong: memory.returned: "));
}

TEST_F(ImporterHostSoak, TheComparisonOfTheTwoPathsMeasuresWhatItIsTold) {
    // Host and codec are busy for at least 2 ms a frame each, however fast the machine is.
    ASSERT_EQ(run({"async", in("clip.avi"), "--ahead", "2", "--work-us", "2000", "--decode-us", "2000",
                   "--json", "--out", in("async.json")}),
              kSuccess);
    const auto result = json("async.json");
    EXPECT_EQ(result["frames"], 5);
    EXPECT_EQ(result["differing"], 0);
    EXPECT_GE(result["synchronous"]["waitingSeconds"], 5 * 0.002);
    EXPECT_GE(result["synchronous"]["workSeconds"], 5 * 0.002);
    EXPECT_GE(result["asynchronous"]["workSeconds"], 5 * 0.002);
    const double hidden = result["hidden"];
    const double waited = result["asynchronous"]["waitingSeconds"];
    const double tasks = result["synchronous"]["waitingSeconds"];
    EXPECT_NEAR(hidden, std::max(0.0, 1.0 - waited / tasks), 1e-6);
}

}  // namespace
}  // namespace simhost::tool
