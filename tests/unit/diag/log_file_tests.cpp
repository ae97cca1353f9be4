// The log while it is on: where its file lies, how it is numbered, and the bytes of its lines.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "diag/diagnostic_log.h"
#include "diag/format.h"
#include "diag/log.h"
#include "tests/support/log_capture.h"
#include "tests/unit/diag/log_test_support.h"

namespace {

using namespace orvantis;
using namespace orvantis::test;
namespace fs = std::filesystem;

std::string localTimeText(const char* format) {
    const std::time_t now = std::time(nullptr);
    std::array<char, 64> text{};
#if defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#endif
    const std::size_t length = std::strftime(text.data(), text.size(), format, std::localtime(&now));
#if defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    return {text.data(), length};
}

class LogFile : public testing::Test {
 protected:
    LogFile() {
        startModuleLog();
        readLogSwitch();
    }
    ~LogFile() override { closeLog(); }

    // The only file's bytes, as they are on the disk at this moment.
    std::string bytes() const {
        const std::vector<fs::path> files = m_log.files();
        EXPECT_EQ(files.size(), 1u);
        return files.empty() ? std::string() : readFile(files.front());
    }

    LogCapture m_log;
};

TEST_F(LogFile, FirstLineCreatesTheNumberedFile) {
    ASSERT_TRUE(logEnabled());
    EXPECT_TRUE(fs::is_empty(m_log.profile()));
    const std::string before = localTimeText("%Y%m%d_%H%M%S");
    logMessage("first");
    const std::string after = localTimeText("%Y%m%d_%H%M%S");

    ASSERT_EQ(m_log.files().size(), 1u);
    const fs::path file = m_log.files().front();
    EXPECT_EQ(file.parent_path(), m_log.profile() / "orvantis" / "adobe");
    EXPECT_TRUE(std::regex_match(file.filename().string(),
                                 std::regex("orvantis_pr_importer_[0-9]{8}_[0-9]{6}_00\\.log")))
        << file;
    EXPECT_LE(before, stampOf(file));
    EXPECT_LE(stampOf(file), after);
    EXPECT_EQ(m_log.lines(), withOpening({"[T] [#] first"}));
}

TEST_F(LogFile, LinesEndInCarriageReturnAndLineFeed) {
    logMessage("one");
    logMessage("two %d", 2);
    closeLog();
    const std::string header = R"(\[[0-9]{4}-[0-9]{2}-[0-9]{2} [0-9]{2}:[0-9]{2}:[0-9]{2}\] \[[0-9]+\] )";
    EXPECT_TRUE(std::regex_match(
        bytes(), std::regex(header + "Log opened\r\n" + header + "Application: [^\r\n]+\r\n" + header +
                            "one\r\n" + header + "two 2\r\n" + header + "Log closed\r\n")))
        << bytes();
}

TEST_F(LogFile, HeaderHoldsTheLocalTimeAndTheThread) {
    const std::string before = localTimeText("[%Y-%m-%d %H:%M:%S]");
    logMessage("now");
    const std::string after = localTimeText("[%Y-%m-%d %H:%M:%S]");
    const std::string all = bytes();
    const std::string last = all.substr(all.rfind("\r\n", all.size() - 3) + 2);
    const std::string time = last.substr(0, 21);
    EXPECT_LE(before, time);
    EXPECT_LE(time, after);
    EXPECT_EQ(last.substr(21), " [" + std::to_string(thisThreadId()) + "] now\r\n");
}

TEST_F(LogFile, EveryLineIsOnTheDiskWhenTheCallReturns) {
    std::vector<std::string> expected = withOpening({});
    for (int i = 0; i < 20; ++i) {
        logMessage("line %d", i);
        expected.push_back("[T] [#] line " + std::to_string(i));
        EXPECT_EQ(m_log.lines(), expected);
    }
}

TEST_F(LogFile, MessageOfNoCharactersIsAHeaderAlone) {
    logMessage("%s", "");
    logMessage("next");
    EXPECT_EQ(m_log.lines(), withOpening({"[T] [#] ", "[T] [#] next"}));
}

TEST_F(LogFile, MessagesOfEveryLengthAreWrittenWhole) {
    std::vector<std::string> expected;
    for (std::size_t length = 0; length <= 300; ++length) {
        const std::string text(length, static_cast<char>('a' + length % 26));
        logMessage("%s", text.c_str());
        expected.push_back("[T] [#] " + text);
    }
    for (const std::size_t length : {1000u, 4095u, 4096u, 4097u, 10000u, 1000000u}) {
        const std::string text = std::string(length, 'x') + "end";
        logMessage("%s", text.c_str());
        expected.push_back("[T] [#] " + text);
    }
    EXPECT_EQ(m_log.lines(), withOpening(expected));
}

TEST_F(LogFile, LineBreaksInMessagesAreLinesOfTheFile) {
    logMessage("    Failed to parse avi: %s", "hdrl missing\n");
    logMessage("next");
    EXPECT_EQ(m_log.lines(),
              withOpening({"[T] [#]     Failed to parse avi: hdrl missing", "", "[T] [#] next"}));
}

TEST_F(LogFile, TextsOutsideAsciiKeepTheirBytes) {
    const std::string path = "C:\\\xC3\x84rger\\\xE6\x97\xA5\xE6\x9C\xAC\\\xF0\x9F\x8E\xAC.avi";
    logMessage("    path: '%s'", path.c_str());
    EXPECT_EQ(m_log.lines(), withOpening({"[T] [#]     path: '" + path + "'"}));
}

TEST_F(LogFile, ArgumentsAreNeverFormats) {
    logMessage("%s", "100% %s %n %5000d");
    EXPECT_EQ(m_log.lines(), withOpening({"[T] [#] 100% %s %n %5000d"}));
}

TEST_F(LogFile, FormatsAreThoseOfPrintf) {
    int place = 0;
    logMessage("[%s] (%d) %u %lld %.3f %ls %5.1f|%-4d|%04x", "imInit", -1, 4294967295u, -1LL << 40, 29.97,
               L"wide", 2.25, 7, 0xBEu);
    logMessage("%p", static_cast<const void*>(&place));
    EXPECT_EQ(m_log.lines().at(2),
              "[T] [#] [imInit] (-1) 4294967295 -1099511627776 29.970 wide   2.2|7   |00be");
    EXPECT_EQ(m_log.lines().at(3), "[T] [#] " + formatString("%p", static_cast<const void*>(&place)));
}

TEST_F(LogFile, MessageThatCannotBeFormattedIsAHeaderWithoutItsBlank) {
#ifdef _WIN32
    GTEST_SKIP() << "this runtime's printf leaves out what it cannot convert and never fails";
#else
    std::setlocale(LC_ALL, "C");
    // The text in front of the failing conversion is longer than the buffer that a failed message gets.
    const std::string front(200, 'x');
    logMessage("%s %ls", front.c_str(), L"\u20AC");
    logMessage("next");
    const std::vector<std::string> lines = m_log.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_THAT(lines[2], testing::MatchesRegex("\\[[-0-9]+ [:0-9]+\\] \\[[0-9]+\\]"));
    EXPECT_EQ(lines[3], "[T] [#] next");
#endif
}

TEST_F(LogFile, ClosingWritesTheLastLineAndALaterLineOpensANewFile) {
    logMessage("first file");
    closeLog();
    ASSERT_EQ(m_log.files().size(), 1u);
    EXPECT_EQ(m_log.lines(), withOpening({"[T] [#] first file", "[T] [#] Log closed"}));
    const fs::path first = m_log.files().front();

    logMessage("second file");
    closeLog();
    std::vector<fs::path> files = m_log.files();
    ASSERT_EQ(files.size(), 2u);
    files.erase(std::find(files.begin(), files.end(), first));
    EXPECT_EQ(logLines(readFile(files.front())), withOpening({"[T] [#] second file", "[T] [#] Log closed"}));
    EXPECT_EQ(logLines(readFile(first)), withOpening({"[T] [#] first file", "[T] [#] Log closed"}));
    if (stampOf(files.front()) == stampOf(first)) {
        EXPECT_THAT(files.front().filename().string(), testing::EndsWith("_01.log"));
    }
}

TEST_F(LogFile, ClosingTwiceWritesOneLastLine) {
    logMessage("line");
    closeLog();
    closeLog();
    EXPECT_EQ(m_log.lines(), withOpening({"[T] [#] line", "[T] [#] Log closed"}));
}

TEST_F(LogFile, ExistingFoldersAreUsed) {
    fs::create_directories(m_log.logFolder());
    writeFile(m_log.logFolder() / "other.txt", "kept");
    logMessage("line");
    EXPECT_EQ(m_log.files().size(), 2u);
    EXPECT_EQ(readFile(m_log.logFolder() / "other.txt"), "kept");
}

TEST_F(LogFile, WithoutAProfileFolderTheLogIsSilent) {
    m_log.redirection().setProfile(m_log.profile() / "nowhere");
    logMessage("unheard");
    logMessage("%s", std::string(10000, 'x').c_str());
    // The lookup belongs to the opening of the log; it is not repeated for later lines.
    m_log.redirection().setProfile(m_log.profile());
    logMessage("unheard");
    closeLog();
    EXPECT_TRUE(fs::is_empty(m_log.profile()));
}

TEST_F(LogFile, WhereNoFolderCanBeMadeTheLogIsSilent) {
    writeFile(m_log.profile() / "orvantis", "a file in the folder's place");
    logMessage("unheard");
    closeLog();
    EXPECT_EQ(readFile(m_log.profile() / "orvantis"), "a file in the folder's place");
    EXPECT_EQ(std::distance(fs::directory_iterator(m_log.profile()), fs::directory_iterator()), 1);
}

TEST_F(LogFile, ProfilePathsBeyondTheSystemsLimitLeaveTheLogSilent) {
    // The profile folder itself just fits, what would be appended to it does not.
    fs::path deep = m_log.profile();
    while (deep.string().size() < 200) {
        deep /= "0123456789";
    }
    deep /= std::string(254 - deep.string().size() - 1, 'p');
    ASSERT_EQ(deep.string().size(), 254u);
    fs::create_directories(deep);
    m_log.redirection().setProfile(deep);
    if (m_log.redirection().effectiveProfile() != deep) {
        GTEST_SKIP() << "this system does not take a profile folder of that length";
    }
    logMessage("unheard");
    closeLog();
    EXPECT_TRUE(fs::is_empty(deep));
}

TEST_F(LogFile, ProfileFoldersOutsideAsciiWork) {
    const fs::path profile = m_log.profile() / u8"J\u00FCrgen \u65E5\u672C \U0001F3AC";
    fs::create_directories(profile);
    m_log.redirection().setProfile(profile);
    ASSERT_EQ(m_log.redirection().effectiveProfile(), profile);
    logMessage("line");
    closeLog();
    const fs::path folder = profile / "orvantis" / "adobe";
    ASSERT_TRUE(fs::is_directory(folder));
    ASSERT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);
    EXPECT_EQ(logLines(readFile(fs::directory_iterator(folder)->path())),
              withOpening({"[T] [#] line", "[T] [#] Log closed"}));
}

TEST(LogName, WithoutModuleStartIsTheShortOne) {
    TempFolder profile;
    LogRedirection redirection(profile.path());
    DiagnosticLog log("orvantis_pr", false);
    EXPECT_TRUE(log.hasFile());
    const fs::path file = fs::directory_iterator(profile / "orvantis/adobe")->path();
    EXPECT_TRUE(
        std::regex_match(file.filename().string(), std::regex("orvantis_pr_[0-9]{8}_[0-9]{6}_00\\.log")));
}

class NumberedFile : public testing::Test {
 protected:
    std::string create() {
        const FilePtr file = createNumberedFile(m_folder.path().native(), "base_20261115_221009");
        if (file == nullptr) {
            return {};
        }
        EXPECT_GE(std::fputs("new", file.get()), 0);
        for (const fs::directory_entry& entry : fs::directory_iterator(m_folder.path())) {
            if (entry.is_regular_file() && !m_taken.contains(entry.path())) {
                m_taken.insert(entry.path());
                return entry.path().filename().string();
            }
        }
        return "?";
    }

    void take(const std::string& number) {
        const fs::path path = m_folder / ("base_20261115_221009_" + number + ".log");
        writeFile(path, "taken");
        m_taken.insert(path);
    }

    TempFolder m_folder;
    std::set<fs::path> m_taken;
};

TEST_F(NumberedFile, NumbersStartAtZeroWithTwoDigits) {
    EXPECT_EQ(create(), "base_20261115_221009_00.log");
    EXPECT_EQ(create(), "base_20261115_221009_01.log");
    EXPECT_EQ(create(), "base_20261115_221009_02.log");
}

TEST_F(NumberedFile, TheFirstFreeNumberIsTaken) {
    take("00");
    take("01");
    take("03");
    EXPECT_EQ(create(), "base_20261115_221009_02.log");
    EXPECT_EQ(create(), "base_20261115_221009_04.log");
    EXPECT_EQ(readFile(m_folder / "base_20261115_221009_00.log"), "taken");
    EXPECT_EQ(readFile(m_folder / "base_20261115_221009_03.log"), "taken");
}

TEST_F(NumberedFile, FromHundredOnNumbersHaveThreeDigits) {
    for (int number = 0; number < 99; ++number) {
        take(formatString("%02d", number));
    }
    EXPECT_EQ(create(), "base_20261115_221009_99.log");
    EXPECT_EQ(create(), "base_20261115_221009_100.log");
}

TEST_F(NumberedFile, TheLastNumberIs999) {
    for (int number = 0; number < 999; ++number) {
        take(formatString("%02d", number));
    }
    EXPECT_EQ(create(), "base_20261115_221009_999.log");
    EXPECT_EQ(create(), "");
    EXPECT_FALSE(fs::exists(m_folder / "base_20261115_221009_1000.log"));
}

TEST_F(NumberedFile, WhatCannotBeCreatedIsPassedOver) {
    fs::create_directory(m_folder / "base_20261115_221009_00.log");
    EXPECT_EQ(create(), "base_20261115_221009_01.log");
}

TEST_F(NumberedFile, MissingFolderGivesNoFile) {
    EXPECT_EQ(createNumberedFile((m_folder / "missing").native(), "base"), nullptr);
}

}  // namespace
