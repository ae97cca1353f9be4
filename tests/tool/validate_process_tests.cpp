// The validator as a program: importers that crash, hang and end the process, and ours.
#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <stdexcept>

#include "tests/tool/small_pe.h"
#include "tests/tool/tool_run.h"

namespace {

using ::testing::Contains;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::Not;

class ValidateTest : public ToolTest {
 protected:
    static const nlohmann::json& checkOf(const nlohmann::json& report, const std::string& id) {
        for (const auto& check : report.at("checks")) {
            if (check.at("id") == id) {
                return check;
            }
        }
        throw std::runtime_error("no check " + id);
    }
    static std::string lastLine(const std::string& text) {
        const std::size_t before = text.find_last_of('\n', text.size() - 2);
        return text.substr(before == std::string::npos ? 0 : before + 1);
    }
};

TEST_F(ValidateTest, ACrashAHangAndAnEndCostTheirOwnChecksOnly) {
    const std::string only =
        "selectors.starts,selectors.supports8,selectors.formats-end,selectors.unknown,selectors.null-records";
    const ToolRun run = runTool({"validate", ORVANTIS_BAD_MODULE, "--timeout", "1", "--jobs", "1", "--only",
                                 only, "--json", in("report.json")});
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(run.out, HasSubstr("TIMED-OUT selectors.formats-end\n"));
    EXPECT_EQ(lastLine(run.out), "FAILURE: 5 checks: 2 crashed, 1 timed out, 2 passed\n");
    const auto report = nlohmann::json::parse(read("report.json"));
    EXPECT_EQ(report.at("result"), "failure");
    EXPECT_EQ(checkOf(report, "selectors.starts").at("outcome"), "passed");
    EXPECT_EQ(checkOf(report, "selectors.unknown").at("outcome"), "passed");
    EXPECT_EQ(checkOf(report, "selectors.formats-end").at("outcome"), "timed-out");
    EXPECT_EQ(checkOf(report, "selectors.formats-end").at("how"), "not over after 1 s");
    const auto& crash = checkOf(report, "selectors.supports8");
    EXPECT_EQ(crash.at("outcome"), "crashed");
    EXPECT_THAT(
        crash.at("how").get<std::string>(),
        MatchesRegex("access to memory that is not there \\(.*\\) in bad_module.prm at offset 0x\\w+"));
    EXPECT_THAT(crash.at("output").get<std::string>(), HasSubstr("the module says good-bye"));
    EXPECT_EQ(checkOf(report, "selectors.null-records").at("how"),
              "the process ended with exit code 7 during the check");
}

TEST_F(ValidateTest, ACrashIsToldWithTheCallsThatLedThere) {
    const ToolRun run = runTool({"validate", ORVANTIS_BAD_MODULE, "--jobs", "1", "--only",
                                 "selectors.supports8,files.missing", "--json", in("report.json"), "--html",
                                 in("report.html")});
    const auto report = nlohmann::json::parse(read("report.json"));
    const auto& abort = checkOf(report, "files.missing");
    EXPECT_THAT(abort.at("how").get<std::string>(),
                MatchesRegex("the process aborted itself.* in bad_module.prm at offset 0x\\w+"));
    for (const char* const id : {"selectors.supports8", "files.missing"}) {
        const auto calls = checkOf(report, id).at("calls").get<std::vector<std::string>>();
        EXPECT_THAT(calls, Contains(MatchesRegex("bad_module.prm\\+0x\\w+"))) << id;
        EXPECT_THAT(calls.back(), MatchesRegex("importer_host\\.?e?x?e?\\+0x\\w+")) << id;
        EXPECT_THAT(calls.front(), Not(MatchesRegex("importer_host.*"))) << id;
        EXPECT_EQ(std::count_if(calls.begin(), calls.end(),
                                [](const std::string& call) { return call.starts_with("importer_host"); }),
                  1);
        EXPECT_THAT(run.out, HasSubstr(calls.front() + "\n                 " + calls[1] + "\n"));
        EXPECT_THAT(read("report.html"), HasSubstr(calls.front() + "\n" + calls[1] + "\n"));
    }
}

#ifdef _WIN32
// A dump takes longer than the check did, and is written while the check is not over.
TEST_F(ValidateTest, ADumpIsWholeHoweverShortTheTimeOut) {
    const ToolRun run = runTool({"validate", ORVANTIS_BAD_MODULE, "--timeout", "0.1", "--jobs", "1",
                                 "--dumps", in("dumps"), "--only", "selectors.supports8", "--json"});
    const auto report = run.json();
    const auto& crash = checkOf(report, "selectors.supports8");
    EXPECT_EQ(crash.at("outcome"), "crashed") << crash;
    EXPECT_THAT(crash.at("dump").get<std::string>(), EndsWith("selectors.supports8-1.dmp"));
    EXPECT_EQ(read("dumps/selectors.supports8-1.dmp").substr(0, 4), "MDMP");
}
#endif

// What an importer loses with every load adds up within a process.
TEST_F(ValidateTest, AProcessMakesRoomForTheNextAfterAHundredAndFiftyChecks) {
    const ToolRun run = runTool(
        {"validate", ORVANTIS_BAD_MODULE, "--jobs", "1", "--only", "selectors.starts", "--repeat", "301"});
    EXPECT_EQ(run.out, "SUCCESS: 301 checks: 301 passed\n");
}

TEST_F(ValidateTest, ASessionThatEndsTheProcessCostsOneCheck) {
    const ToolRun run = runTool({"validate", ORVANTIS_BAD_MODULE, "--timeout", "2", "--jobs", "1", "--only",
                                 "session,suites.held,suites.returned", "--json"});
    EXPECT_EQ(run.code, 5);
    const auto report = run.json();
    EXPECT_THAT(checkOf(report, "session.standard").at("how").get<std::string>(),
                EndsWith(", in the standard session"));
    EXPECT_EQ(checkOf(report, "suites.held").at("skipped"),
              "needs the standard session, which ended the process of another check");
    EXPECT_EQ(report.at("counts").at("skipped"), 2);
}

TEST_F(ValidateTest, OurPluginPassesLevelFiveWithClipsOfTheToolsOwnMaking) {
    const ToolRun run = runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, "--json"});
    EXPECT_EQ(run.code, 0) << run.out << run.err;
    const auto report = run.json();
    EXPECT_EQ(report.at("result"), "success");
    EXPECT_GE(report.at("counts").at("passed"), 100);
    for (const auto& check : report.at("checks")) {
        const bool foreign = check.at("id").get<std::string>().starts_with("module.");
        EXPECT_TRUE(check.at("outcome") == "passed" || (foreign && check.at("outcome") == "skipped"))
            << check.dump(1);
    }
}

TEST_F(ValidateTest, PlaysTheClipThatIsNamed) {
    const ToolRun run = runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, soundClip(), "--only",
                                 "files.opens,frames.delivered,sound.splits,async.same-pixels"});
    EXPECT_EQ(run.out, "SUCCESS: 4 checks: 4 passed\n") << run.err;
    EXPECT_EQ(run.code, 0);
}

TEST_F(ValidateTest, ARefusedClipFailsOneCheckAndTheOthersAreSkipped) {
    const std::string clip = write("noise.avi", "no clip at all");
    const ToolRun run =
        runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, clip, "--only", "files.opens,sound.splits"});
    EXPECT_EQ(run.code, 5);
    EXPECT_THAT(
        run.out,
        HasSubstr("skipped   sound.splits: the plug-in opens none of the clips: name one that it plays\n"));
    EXPECT_THAT(run.out, HasSubstr("          clip   "));
    EXPECT_EQ(lastLine(run.out), "FAILURE: 2 checks: 1 failed, 0 passed, 1 skipped\n");
}

TEST_F(ValidateTest, WhatIsNoModuleEndsWithTheCodeForThat) {
    const ToolRun run =
        runTool({"validate", write("no.prm", "nothing"), "--only", "module.loads,selectors.starts"});
    EXPECT_EQ(run.code, 3);
    EXPECT_THAT(run.out, HasSubstr("skipped   selectors.starts: the plug-in does not load\n"));
    // The system's own words, which differ, and in which some systems leave a place for the name.
    const std::string seen = run.out.substr(run.out.find("': "));
    EXPECT_THAT(seen.substr(0, seen.find('\n')), HasSubstr("no.prm"));
    EXPECT_THAT(seen, Not(HasSubstr("%1")));
    EXPECT_EQ(runTool({"validate", in("missing.prm")}).code, 3);
    EXPECT_EQ(runTool({"validate", write("no.prm", "nothing"), "--only", "selectors.starts"}).code, 1);
}

TEST_F(ValidateTest, TheFileOfAModuleIsJudgedWithoutLoadingIt) {
    std::vector<std::uint8_t> bytes = simhost::tool::smallPe(
        {.machine = simhost::tool::PeFile::kMachineX86, .importerId = 7, .exports = {"xOther"}});
    constexpr std::size_t kImports = 0x80 + 24 + 112 + 8;  // where the header tells the place of the table
    const std::size_t table = bytes.size();
    bytes.resize(table + 100);
    const auto put = [&](std::size_t at, std::size_t value) {
        bytes[at] = static_cast<std::uint8_t>(value);
        bytes[at + 1] = static_cast<std::uint8_t>(value >> 8);
    };
    put(kImports, table);
    put(table + 12, table + 48);
    const std::string name = "no_such_library.dll";
    std::copy(name.begin(), name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(table + 48));
    const ToolRun run =
        runTool({"validate", write("bad.prm", bytes), "--json", "--only",
                 "module.machine,module.entry,module.resource,module.protection,module.imports"});
    const auto seen = [report = run.json()](const std::string& id) {
        const auto& check = checkOf(report, id);
        return check.at("outcome").get<std::string>() + ": " +
               (check.at("findings").empty() ? "" : check.at("findings")[0].at("seen").get<std::string>());
    };
    EXPECT_EQ(seen("module.machine"), "failed: a library of 64 bits for machine 332");
    EXPECT_EQ(seen("module.entry"), "failed: xOther");
    EXPECT_EQ(seen("module.resource"), "failed: there is none");
    EXPECT_EQ(seen("module.protection"), "warning: DYNAMIC_BASE (0x0040) is not set");
    EXPECT_THAT(seen("module.imports"), ::testing::StartsWith("failed: "));
}

TEST_F(ValidateTest, OfManyExportsTheFirstTenAreTold) {
    std::vector<std::string> names;
    for (int i = 0; i < 1000; ++i) {
        names.push_back("x" + std::to_string(i));
    }
    names[1] = std::string(200, 'y');
    const auto seen = [&](const std::vector<std::string>& exports) {
        const ToolRun run =
            runTool({"validate", write("many.prm", simhost::tool::smallPe({.exports = exports})), "--only",
                     "module.entry", "--json"});
        return run.json().at("checks")[0].at("findings")[0].at("seen").get<std::string>();
    };
    EXPECT_EQ(seen(names),
              "x0, " + std::string(80, 'y') + "..., x2, x3, x4, x5, x6, x7, x8, x9 and 990 more");
    names.resize(10);
    EXPECT_THAT(seen(names), EndsWith(", x8, x9"));
}

TEST_F(ValidateTest, AFileThatIsLargerThanAnyModuleIsNotRead) {
    const std::string file = write("huge.prm", simhost::tool::smallPe());
    std::filesystem::resize_file(file, (std::uintmax_t{512} << 20) + 1);
    const ToolRun run = runTool({"validate", file, "--only", "module.machine"});
    EXPECT_EQ(run.code, 1);
    EXPECT_THAT(run.out, HasSubstr("skipped   module.machine: the module is larger than 512 MiB\n"));
}

TEST_F(ValidateTest, AWrongWordIsToldWithTheNearestCheck) {
    const ToolRun run = runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, "--only", "frames.formt"});
    EXPECT_EQ(run.code, 2);
    EXPECT_EQ(run.err,
              "importer_host: there is no check and no group of checks 'frames.formt'\n  -> did you mean "
              "'frames.format'?\n");
}

TEST_F(ValidateTest, NoClipIsTakenForAReport) {
    const std::string clip = write("clip.mov", "a clip");
    const ToolRun run = runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, "--json", clip});
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(read("clip.mov"), "a clip");
}

TEST_F(ValidateTest, ThePluginBehindJsonIsNotTakenForItsFile) {
    const ToolRun run = runTool(
        {"validate", "--only", "files.opens", "--json", ORVANTIS_PLUGIN_UNDER_VALIDATION, soundClip()});
    EXPECT_EQ(run.code, 0) << run.out << run.err;
    EXPECT_EQ(run.json().at("plugin"), ORVANTIS_PLUGIN_UNDER_VALIDATION);
    EXPECT_EQ(run.json().at("clips"), nlohmann::json::array({soundClip()}));
}

TEST_F(ValidateTest, ReportsAreWrittenAndReplaced) {
    const std::vector<std::string> words = {"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION,
                                            "--only",   "selectors.starts",
                                            "--json",   in("r.json"),
                                            "--junit",  in("r.xml"),
                                            "--html",   in("r.html")};
    EXPECT_EQ(runTool(words).code, 0);
    EXPECT_EQ(runTool(words).code, 0);
    EXPECT_THAT(read("r.xml"), HasSubstr("<testcase classname=\"selectors\" name=\"starts\""));
    EXPECT_THAT(read("r.html"), HasSubstr("<li class=\"good\">SUCCESS: 1 check: 1 passed</li>"));
}

TEST_F(ValidateTest, TheCommandLineWinsOverTheConfiguration) {
    const std::string config = write("v.json", R"({"only": ["sound"], "seed": 5, "repeat": 2})");
    const ToolRun run = runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, "--config", config, "--only",
                                 "selectors.starts", "--json"});
    const auto report = run.json();
    EXPECT_EQ(report.at("seed"), 5);
    ASSERT_EQ(report.at("checks").size(), 2u);
    EXPECT_EQ(report.at("checks")[1].at("seed"), 6);
    EXPECT_EQ(report.at("checks")[1].at("id"), "selectors.starts");
}

TEST_F(ValidateTest, AConfigurationOfAnySizeIsRefused) {
    std::string text = R"({"level": 3})";
    EXPECT_EQ(runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, "--only", "module.loads", "--config",
                       write("small.json", text)})
                  .code,
              0);
    text.resize((std::size_t{1} << 20) + 1, ' ');
    const ToolRun run =
        runTool({"validate", ORVANTIS_PLUGIN_UNDER_VALIDATION, "--config", write("large.json", text)});
    EXPECT_EQ(run.code, 2);
    EXPECT_THAT(run.err, HasSubstr("the configuration file is larger than 1 MiB\n"));
}

TEST_F(ValidateTest, ExplainsACheck) {
    EXPECT_EQ(runTool({"validate", "--explain", "module.loads"}).out,
              "module.loads, level 1\n\nRule: The module loads and exports xImportEntry.\nWhy:  The host "
              "drops a module "
              "that it cannot load or enter, without a word to the user.\n\nTo run it alone: importer_host "
              "validate "
              "PLUGIN.prm --only module.loads\n");
}

// To write the page anew: importer_host validate --list --markdown, between its two marks.
TEST_F(ValidateTest, TheDocumentationListsTheChecksAsTheyAre) {
    const std::string page = orvantis::test::readFile(ORVANTIS_VALIDATOR_PAGE);
    const std::string mark = "<!-- checks -->\n";
    const std::size_t begin = page.find(mark);
    const std::size_t end = page.find(mark, begin + 1);
    ASSERT_NE(end, std::string::npos);
    EXPECT_EQ(page.substr(begin + mark.size(), end - begin - mark.size()),
              runTool({"validate", "--list", "--markdown"}).out);
}

TEST_F(ValidateTest, EveryCheckHasAnIdOfItsOwnAndALevel) {
    const auto checks = runTool({"validate", "--list", "--json"}).json().at("checks");
    std::set<std::string> ids;
    for (const auto& check : checks) {
        EXPECT_TRUE(ids.insert(check.at("id")).second) << check;
        const auto id = check.at("id").get<std::string>();
        EXPECT_TRUE(std::regex_match(id, std::regex("[a-z]+\\.[a-z0-9-]+"))) << id;
        EXPECT_THAT(check.at("rule").get<std::string>(), EndsWith("."));
        EXPECT_THAT(check.at("reason").get<std::string>(), EndsWith("."));
        EXPECT_GE(check.at("level"), 1);
        EXPECT_LE(check.at("level"), 10);
    }
    EXPECT_GE(ids.size(), 60u);
}

}  // namespace
