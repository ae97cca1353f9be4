// What the doctor concludes.
#include "tool/doctor/doctor_checks.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/tool/small_pe.h"

namespace simhost::tool {
namespace {

const std::vector<PluginFolder> kFolders = {{"C:\\Plug-ins", FolderSource::kRegistry, true}};

LibraryFile plugin(const SmallPe& what = {}) {
    return {"C:\\Plug-ins\\ImporterOrvantis.prm", parsePe(smallPe(what))};
}

LibraryFile codec(SmallPe what = {}) {
    if (what.exports == SmallPe{}.exports) {
        what.exports.assign(codecFunctions().begin(), codecFunctions().end());
    }
    return {"C:\\Windows\\System32\\orvantis_common64.dll", parsePe(smallPe(what))};
}

std::vector<Check> codecChecks(std::vector<LibraryFile> found) {
    return checkCodec({std::move(found), 5, ""});
}

std::vector<Check> copies(std::vector<LibraryFile> files, const std::string& version = "1.2.3") {
    return checkCopies(files, kFolders, version);
}

TEST(DoctorFolders, NoneIsAFault) {
    const std::vector<PluginFolder> usual = {{"C:\\Usual", FolderSource::kUsual, false}};
    const auto checks = checkFolders(usual);
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].state, CheckState::kBad);
}

TEST(DoctorFolders, ARegisteredFolderThatIsGoneIsTold) {
    const std::vector<PluginFolder> folders = {{"C:\\Gone", FolderSource::kRegistry, false},
                                               {"C:\\There", FolderSource::kUsual, true}};
    const auto checks = checkFolders(folders);
    ASSERT_EQ(checks.size(), 2U);
    EXPECT_EQ(checks[0].state, CheckState::kWarning);
    EXPECT_EQ(checks[1].state, CheckState::kGood);
}

TEST(DoctorCopies, OneSoundCopyIsGood) {
    const auto checks = copies({plugin()});
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].state, CheckState::kGood);
    EXPECT_NE(checks[0].found.find("version 1.2.3.4"), std::string::npos);
    EXPECT_EQ(checks[0].advice, "");
}

TEST(DoctorCopies, NoneIsAFaultWithAPlaceToPutIt) {
    const auto checks = copies({});
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].state, CheckState::kBad);
    EXPECT_NE(checks[0].advice.find("C:\\Plug-ins"), std::string::npos);
}

TEST(DoctorCopies, SeveralOfOneVersionAreAWarning) {
    const auto checks = copies({plugin(), plugin()});
    ASSERT_EQ(checks.size(), 3U);
    EXPECT_EQ(checks[0].state, CheckState::kWarning);
}

TEST(DoctorCopies, SeveralOfDifferentVersionsAreAFault) {
    const auto checks = copies({plugin(), plugin({.version = 0x00010002'00030005})});
    ASSERT_EQ(checks.size(), 3U);
    EXPECT_EQ(checks[0].state, CheckState::kBad);
    EXPECT_EQ(checks[0].found, "2 copies with different versions: the host may take an old one");
    EXPECT_NE(checks[1].found.find("1.2.3.4"), std::string::npos);
    EXPECT_NE(checks[2].found.find("1.2.3.5"), std::string::npos);
}

TEST(DoctorCopies, AnotherVersionIsAWarningAlsoWhenItOnlyBeginsAlike) {
    EXPECT_EQ(copies({plugin()}, "1.2.4")[0].state, CheckState::kWarning);
    EXPECT_EQ(copies({plugin()}, "1.2")[0].state, CheckState::kGood);
    EXPECT_EQ(copies({plugin()}, "1.2.3.40")[0].state, CheckState::kWarning);
}

TEST(DoctorCopies, WhatTheHostCannotLoadIsAFault) {
    EXPECT_EQ(copies({plugin({.machine = PeFile::kMachineX86})})[0].state, CheckState::kBad);
    EXPECT_EQ(copies({plugin({.importerId = 1})})[0].state, CheckState::kBad);
    EXPECT_EQ(copies({plugin({.exports = {"another"}})})[0].state, CheckState::kBad);
    EXPECT_EQ(copies({LibraryFile{"C:\\text.prm", {}}})[0].state, CheckState::kBad);
}

TEST(DoctorCodec, WithAllFunctionsIsGood) {
    const auto checks = codecChecks({codec()});
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].state, CheckState::kGood);
    EXPECT_EQ(codecFunctions().size(), 11U);
}

TEST(DoctorCodec, NoneIsAFault) {
    const auto checks = codecChecks({});
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].state, CheckState::kBad);
    EXPECT_NE(checks[0].found.find("none of the 5 folders"), std::string::npos);
}

TEST(DoctorCodec, TheOneOf32BitProgramsIsNamedWhenItIsAlone) {
    const std::string narrow = "C:\\Windows\\SysWOW64\\orvantis_common64.dll";
    const auto checks = checkCodec({{}, 5, narrow});
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].state, CheckState::kBad);
    EXPECT_NE(checks[0].found.find(narrow), std::string::npos);
    EXPECT_EQ(checkCodec({{codec()}, 5, narrow})[0].state, CheckState::kGood);
}

TEST(DoctorCodec, EveryMissingFunctionIsAFaultAndNamed) {
    for (const char* missing : codecFunctions()) {
        SmallPe what{.exports = {"another"}};
        for (const char* function : codecFunctions()) {
            if (function != missing) {
                what.exports.emplace_back(function);
            }
        }
        const auto checks = codecChecks({codec(what)});
        EXPECT_EQ(checks[0].state, CheckState::kBad);
        EXPECT_TRUE(checks[0].found.ends_with(std::string("lacks ") + missing)) << checks[0].found;
    }
}

TEST(DoctorCodec, TheFirstOnThePathDecides) {
    EXPECT_EQ(codecChecks({codec({.machine = PeFile::kMachineX86}), codec()})[0].state, CheckState::kBad);
    const auto checks = codecChecks({codec(), codec()});
    ASSERT_EQ(checks.size(), 2U);
    EXPECT_EQ(checks[0].state, CheckState::kGood);
    EXPECT_EQ(checks[1].state, CheckState::kWarning);
}

TEST(DoctorCodec, BesideThePluginItIsOfNoUse) {
    const std::vector<std::string> beside = {"C:\\Plug-ins\\orvantis_common64.dll"};
    EXPECT_EQ(checkCodecBeside(beside, false)[0].state, CheckState::kWarning);
    EXPECT_NE(checkCodecBeside(beside, false)[0].advice, checkCodecBeside(beside, true)[0].advice);
    EXPECT_TRUE(checkCodecBeside({}, true).empty());
}

// A command that asks back is answered by nobody who pasted it.
TEST(DoctorLog, NamesTheWholeCommandForOnAndOff) {
    EXPECT_EQ(
        checkLogSwitch(LogSetting::kOff).found,
        R"(off; to switch it on: reg add HKCU\Software\Orvantis /v EnableAdobeLog /t REG_DWORD /d 1 /f)");
    EXPECT_EQ(checkLogSwitch(LogSetting::kOn).advice,
              "switch it off when you are done: reg add HKCU\\Software\\Orvantis /v EnableAdobeLog /t "
              "REG_DWORD /d 0 /f");
}

TEST(DoctorReports, CountFaultsOnly) {
    std::vector<Check> checks(3, Check{CheckState::kGood, "a", "b", ""});
    checks.push_back({CheckState::kWarning, "a", "b", "c"});
    EXPECT_EQ(badChecks(checks), 0U);
    checks.resize(6, Check{CheckState::kBad, "a", "b", "c"});
    EXPECT_EQ(badChecks(checks), 2U);
}

TEST(DoctorReports, TextHasTheAdviceBelow) {
    EXPECT_EQ(checkText({CheckState::kBad, "loading", "no", "do"}, false),
              "FAIL  loading: no\n      -> do\n");
    EXPECT_EQ(checkText({CheckState::kGood, "loading", "yes", ""}, true),
              "\x1b[32mok  \x1b[0m  loading: yes\n");
}

TEST(DoctorReports, JsonHoldsStatesAndCounts) {
    const std::vector<Check> checks = {{CheckState::kBad, "n", "f \xFF", "a"},
                                       checkLogSwitch(LogSetting::kOff)};
    const auto json = nlohmann::json::parse(checksJson(checks, nullptr));
    EXPECT_EQ(json["checks"][0]["state"], "bad");
    EXPECT_EQ(json["bad"], 1);
    EXPECT_EQ(json["good"], 1);
}

}  // namespace
}  // namespace simhost::tool
