// What the validator chooses, says and writes, without a process.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/tool/small_pe.h"
#include "tool/shared/base/tool_error.h"
#include "tool/validate/base/check.h"
#include "tool/validate/base/protected_fields.h"
#include "tool/validate/base/session_watch.h"
#include "tool/validate/run/job.h"
#include "tool/validate/run/made_clips.h"
#include "tool/validate/run/patience.h"
#include "tool/validate/run/plan.h"
#include "tool/validate/run/report.h"

namespace simhost::tool::validate {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const Registered kTestSteady({"frames.steady", 3, "Frames are steady.", "The host compares them.",
                              [](Trial&) {}});

std::vector<Check> someChecks() {
    return {{"module.loads", 1, "It loads.", "Or nothing.", {}},
            {"frames.a", 3, "A.", "Why A.", {}},
            {"frames.b", 6, "B.", "Why B.", {}},
            {"cost.c", 10, "C.", "Why C.", {}}};
}

std::vector<std::string> idsOf(const ValidateOptions& options) {
    std::vector<std::string> out;
    for (const PlannedCheck& planned : plannedChecks(options, someChecks())) {
        out.push_back(planned.id + "@" + std::to_string(planned.seed));
    }
    return out;
}

TEST(ValidatePlan, TheLevelChooses) {
    EXPECT_THAT(idsOf({}), ElementsAre("module.loads@1", "frames.a@1"));
    EXPECT_THAT(idsOf({.level = 10}), ElementsAre("module.loads@1", "frames.a@1", "frames.b@1", "cost.c@1"));
}

TEST(ValidatePlan, OnlyAndSkipTakeIdsAndGroupsWhateverTheLevel) {
    EXPECT_THAT(idsOf({.only = {"frames"}}), ElementsAre("frames.a@1", "frames.b@1"));
    EXPECT_THAT(idsOf({.only = {"frames", "cost.c"}, .skip = {"frames.a"}}),
                ElementsAre("frames.b@1", "cost.c@1"));
    EXPECT_THAT(idsOf({.level = 10, .skip = {"frames", "cost"}}), ElementsAre("module.loads@1"));
}

TEST(ValidatePlan, RepeatingTakesTheNextSeed) {
    EXPECT_THAT(idsOf({.seed = 7, .repeat = 2, .only = {"cost"}}), ElementsAre("cost.c@7", "cost.c@8"));
}

TEST(ValidatePlan, TheOrderByLotIsTheSameForASeed) {
    ValidateOptions options{.level = 10, .seed = 3, .randomise = true};
    const auto first = idsOf(options);
    EXPECT_EQ(first, idsOf(options));
    EXPECT_THAT(first,
                ::testing::UnorderedElementsAre("module.loads@3", "frames.a@3", "frames.b@3", "cost.c@3"));
    bool other = false;
    for (options.seed = 4; options.seed < 12; ++options.seed) {
        const auto plan = plannedChecks(options, someChecks());
        other |= plan[0].id != first[0].substr(0, first[0].find('@'));
    }
    EXPECT_TRUE(other);
}

TEST(ValidatePlan, AWordThatNamesNothingIsRefused) {
    try {
        (void)plannedChecks({.skip = {"frame.a"}}, someChecks());
        FAIL();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.code(), kUsage);
        EXPECT_STREQ(error.what(), "there is no check and no group of checks 'frame.a'");
        EXPECT_EQ(error.advice(), "did you mean 'frames.a'?");
    }
}

TEST(ValidateConfiguration, IsTakenWhereTheCommandLineIsSilent) {
    ValidateOptions options{.level = 9};
    applyConfiguration(options,
                       R"({"level": 2, "seed": 4, "skip": ["cost"], "clips": ["a.avi"], "timeout": 1.5})",
                       "there", {"level"});
    EXPECT_EQ(options.level, 9);
    EXPECT_EQ(options.seed, 4u);
    EXPECT_THAT(options.skip, ElementsAre("cost"));
    EXPECT_EQ(options.timeout, 1.5);
    ASSERT_EQ(options.clips.size(), 1u);
    EXPECT_THAT(options.clips[0], ::testing::AnyOf("there/a.avi", "there\\a.avi"));
}

TEST(ValidateConfiguration, WhatItCannotSayIsRefused) {
    const auto messageOf = [](const std::string& text) {
        ValidateOptions options;
        try {
            applyConfiguration(options, text, "", {});
        } catch (const ToolError& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    EXPECT_EQ(messageOf("[]"), "the configuration file is no JSON object");
    EXPECT_EQ(messageOf("{"), "the configuration file is no JSON object");
    EXPECT_EQ(messageOf(R"({"levle": 3})"), "the configuration file says 'levle', which is no option there");
    EXPECT_EQ(messageOf(R"({"level": "x"})"), "the configuration file has a wrong value for 'level'");
    EXPECT_EQ(messageOf(R"({"level": 11})"), "the configuration file has a wrong value for 'level'");
    EXPECT_EQ(messageOf(R"({"timeout": 0})"), "the configuration file has a wrong value for 'timeout'");
    EXPECT_EQ(messageOf(R"({"level": 7} )"), "");
}

// As on the command line: no number is cut to fit, and none turns round.
TEST(ValidateConfiguration, NumbersHaveTheLimitsOfTheCommandLine) {
    const auto taken = [](const std::string& text) {
        ValidateOptions options;
        try {
            applyConfiguration(options, text, "", {});
        } catch (const ToolError&) {
            return false;
        }
        return true;
    };
    for (const char* const right :
         {R"({"level": 1})", R"({"level": 10})", R"({"seed": 0})", R"({"seed": 18446744073709551615})",
          R"({"repeat": 1})", R"({"repeat": 1000000})", R"({"jobs": 1})", R"({"jobs": 64})",
          R"({"timeout": 0.1})", R"({"timeout": 86400})"}) {
        EXPECT_TRUE(taken(right)) << right;
    }
    for (const char* const wrong :
         {R"({"level": 0})", R"({"level": 2.5})", R"({"seed": -1})", R"({"seed": 1.5})", R"({"repeat": 0})",
          R"({"repeat": -1})", R"({"repeat": 1000001})", R"({"jobs": 0})", R"({"jobs": 65})",
          R"({"timeout": 0.01})", R"({"timeout": 86401})", R"({"timeout": "1"})"}) {
        EXPECT_FALSE(taken(wrong)) << wrong;
    }
}

CheckResult failedResult() {
    CheckResult out;
    out.id = "frames.steady";
    out.outcome = Outcome::kFailed;
    out.seed = 9;
    out.seconds = 0.25;
    out.findings.push_back(
        {false, "imGetSourceVideo, frame 3", "imSourceVideoRec.outFrame", "a b.avi", "another <picture>"});
    return out;
}

CheckResult plainResult(const std::string& id, Outcome outcome, const std::string& reason = {}) {
    CheckResult out;
    out.id = id;
    out.outcome = outcome;
    out.seed = 9;
    out.reason = reason;
    return out;
}

Validation someValidation() {
    Validation out;
    out.plugin = "My Importer.prm";
    out.clips = {"a b.avi"};
    out.seed = 9;
    out.versions = "importer_host 1, Test";
    out.results = {plainResult("module.x", Outcome::kPassed), failedResult(),
                   plainResult("frames.crash", Outcome::kCrashed, "it fell"),
                   plainResult("sound.y", Outcome::kSkipped, "no sound")};
    return out;
}

TEST(ValidateReport, AFailureSaysAllThatIsNeededToFindAndRepeatIt) {
    EXPECT_EQ(resultText(someValidation(), failedResult()),
              "FAILED    frames.steady\n"
              "          rule   Frames are steady.\n"
              "          why    The host compares them.\n"
              "          call   imGetSourceVideo, frame 3\n"
              "          field  imSourceVideoRec.outFrame\n"
              "          clip   a b.avi\n"
              "          seen   another <picture>\n"
              "          again  importer_host validate \"My Importer.prm\" \"a b.avi\" --only frames.steady "
              "--seed 9\n");
    EXPECT_EQ(resultText(someValidation(), plainResult("a.b", Outcome::kSkipped, "why not")),
              "skipped   a.b: why not\n");
    EXPECT_EQ(resultText(someValidation(), plainResult("a.b", Outcome::kPassed)), "passed    a.b\n");
    CheckResult crash = plainResult("a.b", Outcome::kCrashed, "it fell in x at offset 0x1");
    crash.output = "one\r\ntwo\n";
    crash.calls = {"x+0x1", "y+0x22"};
    EXPECT_EQ(resultText({.plugin = "p"}, crash),
              "CRASHED   a.b\n          how    it fell in x at offset 0x1\n"
              "          calls  x+0x1\n                 y+0x22\n"
              "          said   one\n                 two\n"
              "          again  importer_host validate p --only a.b --seed 9\n");
    EXPECT_EQ(againText({.plugin = "p", .libraryFolder = "a b"}, crash),
              "importer_host validate p --library-folder \"a b\" --only a.b --seed 9");
}

TEST(ValidateReport, WhatIsSkippedForOneReasonIsToldTogether) {
    const auto skipped = [](const char* id, const char* reason) {
        return plainResult(id, Outcome::kSkipped, reason);
    };
    EXPECT_EQ(skippedText({plainResult("a.x", Outcome::kPassed)}), "");
    EXPECT_EQ(skippedText({skipped("a.b", "no sound"), skipped("c.d", "no frame"), skipped("e.f", "no sound"),
                           skipped("c.d", "no frame")}),
              "skipped   2 checks: no sound\n          a.b, e.f\nskipped   c.d: no frame\n");
}

std::string summaryOf(const std::vector<Outcome>& outcomes) {
    std::vector<CheckResult> results;
    for (const Outcome outcome : outcomes) {
        results.push_back(plainResult("a.b", outcome));
    }
    return summaryText(countOutcomes(results));
}

TEST(ValidateReport, TheLastLineTellsTheResultAndTheCounts) {
    using enum Outcome;
    EXPECT_EQ(summaryOf({kPassed}), "SUCCESS: 1 check: 1 passed");
    EXPECT_EQ(summaryOf({kPassed, kWarning, kSkipped}),
              "SUCCESS: 3 checks: 1 passed, 1 with a warning, 1 skipped");
    EXPECT_EQ(summaryOf({kPassed, kFailed, kCrashed, kTimedOut, kWarning, kWarning}),
              "FAILURE: 6 checks: 1 failed, 1 crashed, 1 timed out, 1 passed, 2 with warnings");
    EXPECT_EQ(summaryOf({kTimedOut}), "FAILURE: 1 check: 1 timed out, 0 passed");
    EXPECT_EQ(summaryOf({kSkipped}), "FAILURE: 1 check: 0 passed, 1 skipped; nothing was checked");
    EXPECT_EQ(summaryOf({}), "FAILURE: 0 checks: 0 passed; nothing was checked");
}

TEST(ValidateReport, Json) {
    const auto report = nlohmann::json::parse(jsonReport(someValidation()));
    EXPECT_EQ(report.at("result"), "failure");
    EXPECT_EQ(report.at("counts"),
              nlohmann::json::parse(R"({"passed": 1, "warning": 0, "failed": 1, "crashed": 1,
        "timed-out": 0, "skipped": 1})"));
    const auto& failed = report.at("checks")[1];
    EXPECT_EQ(failed,
              nlohmann::json::parse(R"({"id": "frames.steady", "outcome": "failed", "seed": 9, "level": 3,
        "rule": "Frames are steady.", "reason": "The host compares them.", "seconds": 0.25,
        "findings": [{"warning": false, "call": "imGetSourceVideo, frame 3", "field": "imSourceVideoRec.outFrame",
                      "clip": "a b.avi", "seen": "another <picture>"}],
        "again": "importer_host validate \"My Importer.prm\" \"a b.avi\" --only frames.steady --seed 9"})"));
    EXPECT_EQ(report.at("checks")[2].at("how"), "it fell");
    EXPECT_EQ(report.at("checks")[3].at("skipped"), "no sound");
}

TEST(ValidateReport, JUnit) {
    const std::string report = junitReport(someValidation());
    EXPECT_THAT(
        report,
        HasSubstr("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites tests=\"4\" failures=\"1\" "
                  "errors=\"1\" skipped=\"1\" time=\"0.250\">\n"));
    EXPECT_THAT(report,
                HasSubstr("    <testcase classname=\"module\" name=\"x\" time=\"0.000\"></testcase>\n"));
    EXPECT_THAT(report, HasSubstr("<testcase classname=\"frames\" name=\"steady\" time=\"0.250\"><failure "
                                  "message=\"another &lt;picture&gt;\">FAILED    frames.steady\n"));
    EXPECT_THAT(report, HasSubstr("<error type=\"crashed\" message=\"it fell\">"));
    EXPECT_THAT(report,
                HasSubstr("<skipped message=\"no sound\"/></testcase>\n  </testsuite>\n</testsuites>\n"));
}

TEST(ValidateReport, Page) {
    const std::string page = htmlReport(someValidation());
    EXPECT_THAT(page, HasSubstr("<h1>My Importer.prm</h1>"));
    EXPECT_THAT(
        page,
        HasSubstr("<li class=\"bad\">FAILURE: 4 checks: 1 failed, 1 crashed, 1 passed, 1 skipped</li>"));
    EXPECT_THAT(page, HasSubstr("<dd>another &lt;picture&gt;</dd>"));
    EXPECT_THAT(page, HasSubstr("--only frames.steady --seed 9</pre>"));
    EXPECT_THAT(page, HasSubstr("<td data-name=\"Rule\">"));
    EXPECT_THAT(page, HasSubstr("\ntd[data-name=Rule]{white-space:normal}\n"));
    EXPECT_EQ(page.find("<script"), std::string::npos);
}

TEST(ValidateJob, ComesBackAsItWasSent) {
    Job job;
    job.setting.plugin = "p \"q\"";
    job.setting.clips = {{"a", true}, {"b", false}};
    job.setting.lostPhases = {"standard session"};
    job.checks = {{"a.b", 0xFFFFFFFFFFFFFFFFu}};
    job.results = "r";
    const Job back = parseJob(jobText(job));
    EXPECT_EQ(back.setting.plugin, "p \"q\"");
    ASSERT_EQ(back.setting.clips.size(), 2u);
    EXPECT_TRUE(back.setting.clips[0].made);
    EXPECT_FALSE(back.setting.clips[1].made);
    EXPECT_THAT(back.setting.lostPhases, ElementsAre("standard session"));
    ASSERT_EQ(back.checks.size(), 1u);
    EXPECT_EQ(back.checks[0].seed, 0xFFFFFFFFFFFFFFFFu);
    EXPECT_THROW((void)parseJob("{}"), ToolError);
}

TEST(ValidateJob, EventsAreTakenAsFarAsTheyAreWhole) {
    std::string text = eventLine({JobEvent::Kind::kBegin, {}, {}}) +
                       eventLine({JobEvent::Kind::kPhase, "p", {}}) +
                       eventLine({JobEvent::Kind::kEnd, {}, failedResult()}) + "{\"beg";
    const auto events = takeEvents(text);
    EXPECT_EQ(text, "{\"beg");
    ASSERT_EQ(events.size(), 3u);
    EXPECT_EQ(events[1].phase, "p");
    EXPECT_EQ(events[2].result.outcome, Outcome::kFailed);
    ASSERT_EQ(events[2].result.findings.size(), 1u);
    EXPECT_EQ(events[2].result.findings[0].seen, "another <picture>");
    EXPECT_EQ(events[2].result.findings[0].field, "imSourceVideoRec.outFrame");
}

// Seconds that count after 600 slices of a tenth of a second.
double usedInAMinute(double worked, double idle) {
    Patience patience;
    for (int i = 0; i < 600; ++i) {
        patience.add({.clock = 0.1, .worked = worked, .idle = idle});
    }
    return patience.used();
}

TEST(ValidatePatience, OnAFreeMachineTheClockCounts) {
    EXPECT_NEAR(usedInAMinute(0.1, 0.1), 60, 0.01);      // computes
    EXPECT_NEAR(usedInAMinute(0.0001, 0.19), 60, 0.01);  // looks every now and then whether it may go on
    EXPECT_NEAR(usedInAMinute(0, 0.2), 60, 0.01);        // waits for what never comes
}

TEST(ValidatePatience, OnABusyMachineTheWorkCounts) {
    EXPECT_NEAR(usedInAMinute(0.02, 0), 12, 0.01);  // a fifth of a processor
    EXPECT_NEAR(usedInAMinute(0.001, 0), 6, 0.01);  // a hundredth: still a tenth of the clock
    EXPECT_NEAR(usedInAMinute(0.3, 0), 60, 0.01);   // several threads are no more than the clock
    EXPECT_NEAR(usedInAMinute(0, 0), 60, 0.01);     // waits for what never comes
}

TEST(ValidatePatience, AShareThatIsSpareByChanceIsNone) {
    EXPECT_NEAR(usedInAMinute(0.005, 0.01), 6, 0.01);
    EXPECT_NEAR(usedInAMinute(0.005, 0.011), 60, 0.01);
}

TEST(ValidatePatience, WhatWaitsAndThenWorksHasLostNothing) {
    Patience patience;
    patience.add({.clock = 50, .worked = 0, .idle = 0});
    EXPECT_EQ(patience.used(), 50);
    patience.add({.clock = 1, .worked = 0.5, .idle = 0});
    EXPECT_EQ(patience.used(), 5.5);
}

TEST(ValidatePatience, BeginsAnewWithEachCheck) {
    Patience patience;
    patience.add({.clock = 50, .worked = 50, .idle = 50});
    patience.restart();
    EXPECT_EQ(patience.used(), 0);
}

TEST(ValidateTrial, DrawsTheSameForASeedAndACheckWhateverRanBefore) {
    const TrialSetting setting;
    Trial first(setting, "a.b", 4);
    Trial again(setting, "a.b", 4);
    Trial other(setting, "a.b", 5);
    const std::uint64_t drawn = first.draw(1u << 30);
    EXPECT_EQ(again.draw(1u << 30), drawn);
    EXPECT_NE(other.draw(1u << 30), drawn);
}

TEST(ValidateTrial, APhaseThatEndedAProcessIsNotTriedAgain) {
    std::vector<std::string> told;
    TrialSetting setting;
    setting.atPhase = [&](const std::string& name) { told.push_back(name); };
    Trial(setting, "a.b", 1).phase("walk", [] {});
    EXPECT_THAT(told, ElementsAre("walk", ""));
    setting.lostPhases = {"walk"};
    Trial trial(setting, "a.b", 1);
    EXPECT_THROW(trial.phase("walk", [] { FAIL(); }), Skipped);
}

TEST(ValidateTrial, TheSameIsToldOnce) {
    const TrialSetting setting;
    Trial trial(setting, "a.b", 1);
    trial.fail({.call = "imGetInfo8", .seen = "0"});
    trial.fail({.call = "imGetInfo8", .seen = "0"});
    trial.fail({.call = "imGetInfo8", .seen = "1"});
    ASSERT_EQ(trial.findings().size(), 2u);
    EXPECT_EQ(trial.findings()[1].seen, "1");
}

TEST(ValidateTrial, AFileOfItsOwnIsCalledByItsName) {
    TrialSetting setting;
    setting.workFolder = "/tmp/run/work";
    Trial trial(setting, "a.b", 1);
    trial.fail({.clip = trial.freshPath("cut-off.avi")});
    trial.fail({.clip = "/clips/9-a.avi"});
    EXPECT_EQ(trial.findings()[0].clip, "cut-off.avi, a file of the check");
    EXPECT_EQ(trial.findings()[1].clip, "/clips/9-a.avi");
}

TEST(ValidateRules, WhatEveryHostSeesIsToldOfTheHostOfTodayAlone) {
    const Violation behind{Rule::kRecordsBounds, "imGetInfo8", "offset 1", "imFileInfoRec8"};
    const Violation other{Rule::kRecordsBounds, "imAnalysis", "offset 2", "imAnalysisRec", "buffer"};
    const Violation foreign{Rule::kSoundChannels, "imGetInfo8", "99"};
    const auto told = findingsOf({{behind, "a.avi", "default"},
                                  {foreign, "a.avi", "default"},
                                  {behind, "a.avi", "older"},
                                  {other, "a.avi", "older"},
                                  {other, "b.avi", "negative-rows"}},
                                 Rule::kRecordsBounds);
    EXPECT_THAT(
        told,
        ElementsAre(
            Finding{.call = "imGetInfo8", .field = "imFileInfoRec8", .clip = "a.avi", .seen = "offset 1"},
            Finding{.call = "imAnalysis, host profile older",
                    .field = "imAnalysisRec.buffer",
                    .clip = "a.avi",
                    .seen = "offset 2"},
            Finding{.call = "imAnalysis, host profile negative-rows",
                    .field = "imAnalysisRec.buffer",
                    .clip = "b.avi",
                    .seen = "offset 2"}));
}

TEST(ValidateFields, AWrittenFieldIsNamed) {
    const TrialSetting setting;
    Trial trial(setting, "a.b", 1);
    Answer<host::imFileInfoRec8> answer;
    answer.before = filledRecord<host::imFileInfoRec8>(7);
    answer.record = answer.before;
    answer.record.hasVideo = 1;
    checkProtectedFields(trial, "imGetInfo8", "clip", answer);
    EXPECT_FALSE(trial.hasFindings());
    answer.record.vidInfo.importerID = 5;
    checkProtectedFields(trial, "imGetInfo8", "clip", answer);
    ASSERT_EQ(trial.findings().size(), 1u);
    EXPECT_EQ(trial.findings()[0].field, "imFileInfoRec8.vidInfo.importerID");
}

TEST(ValidateModuleFile, ProtectionsAndImportsAreReadFromTheHeaders) {
    std::vector<std::uint8_t> bytes = smallPe();
    constexpr std::size_t kOptional = 0x80 + 24;
    const std::size_t table = bytes.size();
    bytes.resize(table + 64);
    const auto put = [&](std::size_t at, std::size_t value) {
        bytes[at] = static_cast<std::uint8_t>(value);
        bytes[at + 1] = static_cast<std::uint8_t>(value >> 8);
    };
    EXPECT_EQ(parsePe(bytes).value().protections, 0);
    EXPECT_THAT(parsePe(bytes).value().imports, ::testing::IsEmpty());
    put(kOptional + 70, PeFile::kRandomBase | PeFile::kNoExecute);
    put(kOptional + 112 + 8, table);
    put(table + 12, table + 48);  // one row, and zeros behind it
    const std::string name = "some.dll";
    std::copy(name.begin(), name.end(), bytes.begin() + static_cast<std::ptrdiff_t>(table + 48));
    EXPECT_EQ(parsePe(bytes).value().protections, PeFile::kRandomBase | PeFile::kNoExecute);
    EXPECT_THAT(parsePe(bytes).value().imports, ElementsAre("some.dll"));
    put(table + 12, 0xFFFF);  // leads to nowhere
    EXPECT_THAT(parsePe(bytes).value().imports, ElementsAre(""));
}

TEST(ValidateClips, AMadeFileIsAnAviWithItsIndex) {
    const auto bytes = madeAvi({"TEST", 24, 2, 1, 25, 1, {{1, 2, 3}, {4}}}, {1, 100, 16});
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_EQ(text.substr(0, 4), "RIFF");
    EXPECT_EQ(text.substr(8, 8), "AVI LIST");
    EXPECT_EQ(static_cast<std::uint8_t>(text[4]) + 256u * static_cast<std::uint8_t>(text[5]) + 8,
              bytes.size());
    const std::size_t movi = text.find("movi");
    ASSERT_NE(movi, std::string::npos);
    EXPECT_EQ(text.substr(movi + 4, 4), "00db");
    EXPECT_EQ(text.substr(movi + 16, 4), "01wb");  // three bytes of picture, and one that fills up
    const std::size_t index = text.find("idx1");
    ASSERT_NE(index, std::string::npos);
    EXPECT_EQ(bytes.size() - index, 8u + 4 * 16);
}

}  // namespace
}  // namespace simhost::tool::validate
