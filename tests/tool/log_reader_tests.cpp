// Lines of the log and their headers, from text in any pieces.
#include "tool/shared/logs/log_reader.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/tool/log_text.h"

namespace simhost::tool {
namespace {

TEST(LogLine, HeaderAndTextAreTakenApart) {
    const auto entry = parseLogLine("[2026-11-15 22:10:09] [5312]     [imNoErr] (0)");
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->stamp, "2026-11-15 22:10:09");
    EXPECT_EQ(entry->thread, 5312U);
    EXPECT_EQ(entry->text, "    [imNoErr] (0)");
}

TEST(LogLine, MessagesMayBeEmpty) {
    EXPECT_EQ(parseLogLine("[2026-11-15 22:10:09] [5312] ")->text, "");
    EXPECT_EQ(parseLogLine("[2026-11-15 22:10:09] [5312]")->text, "");
}

TEST(LogLine, OtherTextIsNoLine) {
    for (const char* text :
         {"", "Log opened", "[2026-11-15 22:10:09]", "[2026-11-15 22:10:09] [", "[2026-11-15 22:10:09] []",
          "[2026-11-15 22:10:09] [12", "[2026-11-15 22:10:09] [x] a", "[2026-11-15 22.10.09] [5] a",
          "[2026-11-15 22:10:09] [99999999999] a", "2026-11-15 22:10:09] [5312] a"}) {
        EXPECT_FALSE(parseLogLine(text).has_value()) << text;
    }
}

std::int64_t secondsBetween(const std::string& from, const std::string& to) {
    return parseLogLine("[" + to + "] [1] a")->seconds - parseLogLine("[" + from + "] [1] a")->seconds;
}

TEST(LogLine, SecondsGoOnOverMidnightMonthsAndLeapDays) {
    EXPECT_EQ(secondsBetween("2026-11-15 22:10:09", "2026-11-15 22:10:09"), 0);
    EXPECT_EQ(secondsBetween("2026-11-15 23:59:58", "2026-11-16 00:00:03"), 5);
    EXPECT_EQ(secondsBetween("2026-12-31 23:59:59", "2027-01-01 00:00:00"), 1);
    EXPECT_EQ(secondsBetween("2028-02-28 00:00:00", "2028-03-01 00:00:00"), 2 * 86400);
    EXPECT_EQ(secondsBetween("2027-02-28 00:00:00", "2027-03-01 00:00:00"), 86400);
    EXPECT_EQ(secondsBetween("2026-01-01 00:00:00", "2027-01-01 00:00:00"), 365 * 86400);
}

TEST(LogReading, EntriesDoNotDependOnWhereTheTextIsCut) {
    const std::string text =
        logText("22:10:09 1 Log opened\n22:10:09 1 Application: C:\\host.exe\n22:10:10 2 x");
    for (std::size_t piece = 1; piece <= text.size(); ++piece) {
        LogReader reader;
        std::string all;
        for (std::size_t at = 0; at < text.size(); at += piece) {
            reader.feed(std::string_view(text).substr(at, piece));
        }
        reader.flush(true);
        while (const auto entry = reader.next()) {
            all +=
                std::to_string(entry->line) + " " + std::to_string(entry->thread) + " " + entry->text + "\n";
        }
        ASSERT_EQ(all, "1 1 Log opened\n2 1 Application: C:\\host.exe\n3 2 x\n") << piece;
    }
}

// The text of the AVI reader ends in a line end of its own, and may have several lines.
TEST(LogReading, HeadlessLinesBelongToTheEntryBefore) {
    const auto entries = entriesOf(
        "[2026-11-15 22:10:09] [1] Failed to parse avi: stream[0]: strf missing in strl\r\navih "
        "missing\r\n\r\n"
        "[2026-11-15 22:10:09] [1]     [imBadFile] (2)\r\n");
    ASSERT_EQ(entries.size(), 2U);
    EXPECT_EQ(entries[0].text, "Failed to parse avi: stream[0]: strf missing in strl\navih missing");
    EXPECT_EQ(entries[0].line, 1U);
    EXPECT_EQ(entries[1].line, 4U);
}

TEST(LogReading, AnEntryIsGivenOnlyWhenNothingCanFollowIt) {
    LogReader reader;
    reader.feed("[2026-11-15 22:10:09] [1] one\n");
    EXPECT_FALSE(reader.next().has_value());
    reader.feed("[2026-11-15 22:10:09] [1] two\n[2026-11-15 22:1");
    EXPECT_EQ(reader.next()->text, "one");
    EXPECT_FALSE(reader.next().has_value());
    reader.flush(false);
    EXPECT_EQ(reader.next()->text, "two");
    reader.feed("0:09] [1] three\n");
    reader.flush(false);
    EXPECT_EQ(reader.next()->text, "three");
}

TEST(LogReading, LinesOfAnotherFileAreCounted) {
    LogReader reader;
    reader.feed("name,value\n1,2\n\n");
    reader.flush(true);
    EXPECT_FALSE(reader.next().has_value());
    EXPECT_EQ(reader.lines(), 3U);
    EXPECT_EQ(reader.foreignLines(), 3U);
}

TEST(LogReading, LongTextIsCutToItsBound) {
    LogReader reader;
    reader.feed("[2026-11-15 22:10:09] [1] ");
    for (int i = 0; i < 300; ++i) {
        reader.feed(std::string(1000, 'a'));
    }
    reader.feed("\n" + std::string(200'000, 'b') + "\n" + std::string(200'000, 'c'));
    reader.flush(true);
    const auto entry = reader.next();
    ASSERT_TRUE(entry.has_value());
    EXPECT_LE(entry->text.size(), LogReader::kMostText);
    EXPECT_TRUE(entry->text.starts_with("aaaa"));
    EXPECT_EQ(reader.lines(), 3U);
}

TEST(LogNames, OnlyLogsHaveThem) {
    EXPECT_TRUE(isLogName("orvantis_pr_importer_20261115_221009_00.log"));
    EXPECT_TRUE(isLogName("orvantis_pr_importer_20261115_221009_999.log"));
    for (const char* name :
         {"", "orvantis_pr_importer_.log", "orvantis_pr_importer_20261115_221009.log",
          "orvantis_pr_importer_20261115_221009_0.log", "orvantis_pr_importer_20261115_221009_0a.log",
          "orvantis_pr_importer_20261115_221009_0000.log", "orvantis_pr_importer_20261115_221009_00.txt",
          "orvantis_pr_importer_20261115x221009_00.log", "another_20261115_221009_00.log"}) {
        EXPECT_FALSE(isLogName(name)) << name;
    }
}

TEST(LogNames, TheNewestHasTheLastStampAndThenTheHighestNumber) {
    const auto newest = [](std::vector<std::string> names) { return newestLogName(names); };
    const std::string p = "orvantis_pr_importer_";
    EXPECT_EQ(newest({}), "");
    EXPECT_EQ(newest({"z.txt"}), "");
    EXPECT_EQ(newest({p + "20261115_221009_00.log", p + "20261116_000000_00.log",
                      p + "20261115_235959_07.log", "z.log"}),
              p + "20261116_000000_00.log");
    EXPECT_EQ(
        newest({p + "20261115_221009_99.log", p + "20261115_221009_100.log", p + "20261115_221009_08.log"}),
        p + "20261115_221009_100.log");
}

}  // namespace
}  // namespace simhost::tool
