// What is shown of a log.
#include "tool/log/log_printer.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tests/tool/log_text.h"

namespace simhost::tool {
namespace {

constexpr const char* kRefused =
    "22:10:09 5 ----------------------\n22:10:09 5 [imGetInfo8] (37)\n22:10:09 5 m_filePathUtf8: "
    "'C:\\\x1b[2J.avi'\n"
    "22:10:09 5 Avi has no video stream\n22:10:11 5     [imBadFile] (2)";

TEST(LogPrinting, AFailureIsMarkedAndExplained) {
    LogPrinter printer({});
    const std::string text = printer.text(LogItem(callOf(kRefused)));
    EXPECT_TRUE(text.starts_with("2026-11-15 22:10:09 [5] imGetInfo8 -> imBadFile (2)  FAILED  after 2 s\n"))
        << text;
    EXPECT_NE(text.find("\n    ! Avi has no video stream\n        = the file holds sound only"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find('\x1b'), std::string::npos) << "neither colours nor a name's control characters";
}

TEST(LogPrinting, ColoursAreOnlyForThoseWhoAsk) {
    LogPrinter printer({.colour = true});
    EXPECT_NE(printer.text(LogItem(callOf(kRefused))).find("\x1b[31m! Avi has no video stream\x1b[0m"),
              std::string::npos);
}

TEST(LogPrinting, RoutineIsExplainedOnceUnlessAllIsAskedFor) {
    const LogItem call(
        callOf("22:10:09 5 ----------------------\n22:10:09 5 [imGetInfo8] (37)\n"
               "22:10:09 5 VideoInfo::VideoInfo()\n22:10:09 5     [imNoErr] (0)"));
    LogPrinter once({});
    EXPECT_NE(once.text(call).find("are being analysed"), std::string::npos);
    EXPECT_EQ(once.text(call).find("are being analysed"), std::string::npos);
    LogPrinter all({.all = true});
    (void)all.text(call);
    EXPECT_NE(all.text(call).find("are being analysed"), std::string::npos);
}

TEST(LogPrinting, FailuresOnlyLeavesTheRestOut) {
    LogPrinter printer({.failuresOnly = true});
    EXPECT_EQ(printer.text(itemsOf(logText("22:10:08 1 Log opened"))[0]), "");
    const std::string text = printer.text(LogItem(callOf(kRefused)));
    EXPECT_EQ(text.find("m_filePathUtf8"), std::string::npos);
    EXPECT_NE(text.find("C:\\?[2J.avi"), std::string::npos) << "the file is told all the same";
    EXPECT_EQ(printer.json(itemsOf(logText("22:10:08 1 Log opened"))[0]), "");
}

TEST(LogPrinting, RowsOfTablesAreCounted) {
    const LogItem call(
        callOf("22:10:09 5 ----------------------\n22:10:09 5 [imInit] (0)\n"
               "22:10:09 5 YES  NO : BGRX32\n22:10:09 5  NO  NO : BGR24\n22:10:09 5     [imNoErr] (0)"));
    LogPrinter printer({});
    const std::string text = printer.text(call);
    EXPECT_NE(text.find("(2 rows)"), std::string::npos) << text;
    EXPECT_EQ(text.find("BGRX32"), std::string::npos);
    LogPrinter all({.all = true});
    EXPECT_NE(all.text(call).find("BGRX32"), std::string::npos);
}

TEST(LogPrinting, JsonHoldsTheCall) {
    const auto json = nlohmann::json::parse(LogPrinter({}).json(LogItem(callOf(kRefused))));
    EXPECT_EQ(json["type"], "call");
    EXPECT_EQ(json["name"], "imGetInfo8");
    EXPECT_EQ(json["selector"], 37);
    EXPECT_EQ(json["result"], 2);
    EXPECT_EQ(json["seconds"], 2);
    EXPECT_EQ(json["failed"], true);
    EXPECT_EQ(json["lines"][1]["severity"], "failure");
    EXPECT_EQ(json["lines"][1]["line"], 4);
}

TEST(LogPrinting, TextThatIsNoUtf8DoesNotStopJson) {
    LogSummary summary;
    summary.application = "C:\\\xFF.exe";
    EXPECT_TRUE(nlohmann::json::parse(LogPrinter::json(summary))["firstFailure"].is_null());
}

}  // namespace
}  // namespace simhost::tool
