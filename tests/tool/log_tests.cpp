// What "log" makes of a log: what is normal is no failure, and equal failures are told once.
#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kSuccess;
using testing::HasSubstr;
using testing::Not;

class ToolLog : public ToolTest {
 protected:
    static std::string line(const std::string& text) { return "[2026-11-15 22:10:09] [7] " + text + "\n"; }
    static std::string call(const std::string& head, const std::string& body, const std::string& answer) {
        return line("----------------------") + line(head) + (body.empty() ? "" : line(body)) +
               line("    " + answer);
    }
    static std::string failingCall() {
        return call("[imGetSourceVideo] (46)", "Decompress failed: 8", "[imBadCompression] (8)");
    }
};

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t out = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++out;
    }
    return out;
}

TEST_F(ToolLog, ATrackWithoutALayoutIsNoFailure) {
    const std::string log = write(
        "a.log", line("Log opened") + call("[imGetAudioChannelLayout] (49)", "", "[imUnsupported] (3)") +
                     line("Log closed"));
    const ToolRun result = runTool({"log", log});
    EXPECT_EQ(result.code, kSuccess);
    EXPECT_THAT(result.out, Not(HasSubstr("FAILED")));
    EXPECT_THAT(result.out, HasSubstr("0 failures"));
    EXPECT_THAT(result.out, HasSubstr("nothing is wrong"));
}

TEST_F(ToolLog, EqualFailuresAreToldOnce) {
    std::string text = line("Log opened");
    for (int i = 0; i < 20; ++i) {
        text += failingCall();
    }
    const std::string log = write("a.log", text + line("Log closed"));
    const std::string failures = runTool({"log", "--failures", log}).out;
    EXPECT_THAT(failures, HasSubstr("20 failures"));
    EXPECT_THAT(failures, HasSubstr("Decompress failed: 8 (20 times), line 4\n"));
    EXPECT_THAT(failures, HasSubstr("imGetSourceVideo: imBadCompression (8) (20 times), line 3\n"));
    EXPECT_EQ(count(failures, "imGetSourceVideo"), 1U) << failures;
    EXPECT_EQ(count(runTool({"log", "--failures", "--all", log}).out, "imGetSourceVideo -> "), 20U);
    const auto groups = runTool({"log", "--failures", "--json", log}).json()["summary"]["failureGroups"];
    ASSERT_EQ(groups.size(), 2U);
    EXPECT_EQ(groups[0]["count"], 20);
    EXPECT_EQ(groups[0]["firstLine"], 4);
}

TEST_F(ToolLog, FailuresThatDifferInAnAddressAreEqual) {
    std::string text = line("Log opened");
    for (const char* address : {"0x10", "0x20"}) {
        text +=
            call("[imGetSourceVideo] (47)", "Decompress failed: decompress({" + std::string(address) + ",9})",
                 "[imBadCompression] (8)");
    }
    const std::string log = write("a.log", text + line("Log closed"));
    EXPECT_THAT(runTool({"log", "--failures", log}).out,
                HasSubstr("Decompress failed: decompress({0x10,9}) (2 times)"));
}

}  // namespace
