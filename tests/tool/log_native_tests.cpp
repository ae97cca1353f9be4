// The user's logs and those of the tool's own runs. Native only: the profile folder is a variable here, on
// Windows it is the user's own, which a test leaves alone.
#include <filesystem>
#include <optional>

#include "tests/support/environment.h"
#include "tests/tool/tool_run.h"

namespace {

using orvantis::test::ScopedEnvironment;
using simhost::tool::kSuccess;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kHostsLog = "orvantis_pr_importer_20261115_221009_00.log";

class ToolLogPlace : public ToolTest {
 protected:
    ToolLogPlace() { std::filesystem::create_directories(folder / "temporary"); }

    static std::string line(const std::string& text) { return "[2026-11-15 22:10:09] [7] " + text + "\n"; }
    static std::string failure() {
        return line("----------------------") + line("[imGetInfo8] (37)") + line("Avi has no video stream") +
               line("    [imBadFile] (2)");
    }
    std::string logs() const { return "profile/orvantis/adobe"; }
    void writeHostsLog(const std::string& text) const {
        write(logs() + "/" + kHostsLog, line("Log opened") + line("Application: C:\\Host\\host.exe") + text);
    }
    std::vector<std::string> logNames() const { return namesIn(folder / logs()); }

    const ScopedEnvironment profile{"ORVANTIS_TEST_PROFILE", in("profile")};
    const ScopedEnvironment temporary{"TMPDIR", in("temporary")};
    // As a user who has switched the log on for the host.
    const ScopedEnvironment on{"ORVANTIS_TEST_LOG_SWITCH", "1"};
};

TEST_F(ToolLogPlace, NoRunWritesAmongTheUsersLogsUnasked) {
    writeHostsLog(failure());
    const std::string clip = soundClip();
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{"info", clip},
                                               {"frames", clip, "--sheet", in("sheet.png")},
                                               {"audio", clip, "--out", in("a.wav")},
                                               {"async", clip},
                                               {"report", clip, "--out", in("out")},
                                               {"doctor", clip},
                                               {"soak", clip, "--minutes", "0.01"},
                                               {"bench", clip, "--what", "open", "--runs", "1"},
                                               {"log", "--failures"}}) {
        (void)runTool(arguments);
        EXPECT_THAT(logNames(), ElementsAre(kHostsLog)) << arguments.front();
        EXPECT_THAT(namesIn(folder / "temporary"), testing::IsEmpty()) << arguments.front();
    }
    EXPECT_THAT(read("out/clip.avi.html"), HasSubstr("Diagnostic log of this run"))
        << "it has one all the same";
    ASSERT_EQ(runTool({"info", clip, "--log"}).code, kSuccess);
    EXPECT_EQ(logNames().size(), 2U) << "asked for";
}

TEST_F(ToolLogPlace, AfterTheDoctorTheHostsLogIsTheOneExplained) {
    writeHostsLog(failure());
    EXPECT_THAT(runTool({"doctor", soundClip()}).out,
                HasSubstr("newest log: " + in(logs() + "/" + kHostsLog)));
    const ToolRun result = runTool({"log", "--failures"});
    EXPECT_THAT(result.out, HasSubstr(kHostsLog));
    EXPECT_THAT(result.out, HasSubstr("Avi has no video stream"));
}

TEST_F(ToolLogPlace, TheListHasApplicationTimeAndFailures) {
    writeHostsLog(failure() + failure());
    ASSERT_EQ(runTool({"info", soundClip(), "--log"}).code, kSuccess);
    const ToolRun result = runTool({"log", "--list"});
    EXPECT_THAT(result.out, HasSubstr(in(logs() + "/" + kHostsLog)));
    EXPECT_THAT(result.out, HasSubstr("2026-11-15 22:10:09 to 2026-11-15 22:10:09, C:\\Host\\host.exe, "));
    EXPECT_THAT(result.out, HasSubstr("2 failures\n"));
    EXPECT_THAT(result.out, HasSubstr("importer_host, "));
    EXPECT_THAT(result.out, HasSubstr("\n2 logs\n"));
    const auto listed = runTool({"log", "--list", "--json"}).json()["logs"];
    ASSERT_EQ(listed.size(), 2U);
    const auto& hosts = listed[0]["failures"] == 2 ? listed[0] : listed[1];
    EXPECT_EQ(hosts["application"], "C:\\Host\\host.exe");
}

TEST_F(ToolLogPlace, OfALongLogTheDoctorReadsTheEnd) {
    std::string routine;
    while (routine.size() < (std::size_t{6} << 20)) {
        for (int i = 0; i < 1000; ++i) {
            routine += line("Log opened");
        }
    }
    writeHostsLog(failure() + routine);
    EXPECT_THAT(runTool({"doctor"}).out, HasSubstr(", its end, without failures"));
    writeHostsLog(routine + failure());
    EXPECT_THAT(runTool({"doctor"}).out,
                HasSubstr(", its end: 1 failure, the first: Avi has no video stream"));
    EXPECT_THAT(runTool({"log", "--list"}).out, HasSubstr("1 failure at its end"));
}

}  // namespace
