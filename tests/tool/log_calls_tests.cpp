// Calls put together from the lines of several threads.
#include "tool/shared/logs/log_calls.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

#include "tests/tool/log_text.h"

namespace simhost::tool {
namespace {

TEST(LoggedCalls, SelectorAndAnswerAreOneCallWithItsTimeAndFile) {
    const LoggedCall call = callOf(
        "22:10:09 5 ----------------------\n22:10:09 5 [imOpenFile8] (39)\n"
        "22:10:09 5 OrvantisImporter::OrvantisImporter()\n22:10:09 5 m_filePathUtf8: ''\n22:10:09 5 "
        "m_streamIndex:  -1\n"
        "22:10:10 5 Open: 'C:\\it's\\a.avi', stream: 0\n22:10:12 5     [imNoErr] (0)");
    EXPECT_EQ(call.line, 2U);
    EXPECT_EQ(call.name, "imOpenFile8");
    EXPECT_EQ(call.selector, 39);
    EXPECT_EQ(call.thread, 5U);
    EXPECT_EQ(call.end, LoggedCall::End::kAnswered);
    EXPECT_EQ(call.resultName, "imNoErr");
    EXPECT_EQ(call.result, 0);
    EXPECT_EQ(call.seconds, 3);
    EXPECT_EQ(call.file, "C:\\it's\\a.avi");
    EXPECT_EQ(call.lines.size(), 4U);
    EXPECT_FALSE(call.failed);
}

TEST(LoggedCalls, ThreadsAreKeptApart) {
    const auto items =
        itemsOf(logText("22:10:09 1 ----------------------\n22:10:09 2 ----------------------\n"
                        "22:10:09 1 [imGetSourceVideo] (47)\n22:10:09 2 [imImportAudio7] (25)\n"
                        "22:10:09 3 Decompress failed: Orvantis error (7): damaged: decompress()\n"
                        "22:10:09 2 fill    : 0\n22:10:09 1 inFrameTime: 0\n"
                        "22:10:11 2     [imNoErr] (0)\n22:10:12 1     [imBadCompression] (8)"));
    ASSERT_EQ(items.size(), 3U);
    EXPECT_EQ(std::get<ReadLine>(items[0]).severity, Severity::kFailure);
    const auto& audio = std::get<LoggedCall>(items[1]);
    EXPECT_EQ(audio.name, "imImportAudio7");
    EXPECT_EQ(audio.seconds, 2);
    ASSERT_EQ(audio.lines.size(), 1U);
    EXPECT_EQ(audio.lines[0].entry.text, "fill    : 0");
    const auto& video = std::get<LoggedCall>(items[2]);
    EXPECT_EQ(video.name, "imGetSourceVideo");
    EXPECT_EQ(video.seconds, 3);
    EXPECT_TRUE(video.failed);
}

TEST(LoggedCalls, IndentedLinesThatAreNoAnswersStayLines) {
    const LoggedCall call = callOf(
        "22:10:09 5 ----------------------\n22:10:09 5 [imGetInfo8] (37)\n22:10:09 5 Decode formats:\n"
        "22:10:09 5     PrPixelFormat_YUYV_422_8u_601 [yuy2]\n22:10:09 5     wFormatTag:      1\n"
        "22:10:09 5     [imIterateStreams] (18)");
    EXPECT_EQ(call.lines.size(), 3U);
    EXPECT_EQ(call.result, 18);
    EXPECT_FALSE(call.failed);
}

TEST(LoggedCalls, BackgroundCallsHaveAnswersOfTheirOwnForm) {
    const LoggedCall flush = callOf(
        "22:10:09 5 ----------------------\n22:10:09 5 [OnFlush]\n22:10:09 5     OnFlush: [aiNoError] (0)");
    EXPECT_EQ(flush.name, "OnFlush");
    EXPECT_FALSE(flush.selector.has_value());
    EXPECT_EQ(flush.end, LoggedCall::End::kAnswered);
    EXPECT_FALSE(flush.failed);

    // The second code is the one that tells what happened.
    const LoggedCall frame = callOf(
        "22:10:09 5 ----------------------\n22:10:09 5 [OnGetFrame]\n22:10:09 5 REQUEST: Requesting: 3, "
        "frameTime: 0\n"
        "22:10:09 5     OnGetFrame: [aiUnknownError] (2), [imFileReadFailed] (33)");
    EXPECT_EQ(frame.resultName, "imFileReadFailed");
    EXPECT_EQ(frame.result, 33);
    EXPECT_TRUE(frame.failed);
    EXPECT_EQ(frame.lines.size(), 1U);
}

TEST(LoggedCalls, AnEscapedExceptionEndsTheCall) {
    const auto items = itemsOf(
        logText("22:10:09 5 ----------------------\n22:10:09 5 [imGetSourceVideo] (47)\n"
                "22:10:09 5 FATAL: Unhandled exception during [imGetSourceVideo] (47): m_videoInfo is NULL\n"
                "22:10:09 5 Module destroy"));
    ASSERT_EQ(items.size(), 2U);
    const auto& call = std::get<LoggedCall>(items[0]);
    EXPECT_EQ(call.end, LoggedCall::End::kEscaped);
    EXPECT_EQ(call.result, 99);
    EXPECT_TRUE(call.failed);
    ASSERT_EQ(call.lines.size(), 1U);
    EXPECT_NE(call.lines[0].explanation, "");

    const LoggedCall async = callOf(
        "22:10:09 5 ----------------------\n22:10:09 5 [OnGetFrame]\n"
        "22:10:09 5 xAsyncImportEntry: FATAL: Unhandled exception during aiGetFrame (3): outFrame is NULL");
    EXPECT_EQ(async.end, LoggedCall::End::kEscaped);
    EXPECT_TRUE(async.failed);
}

TEST(LoggedCalls, ACallWithoutAnswerIsAFailure) {
    const auto items = itemsOf(logText(
        "22:10:09 5 ----------------------\n22:10:09 5 [imGetInfo8] (37)\n22:10:20 5 ----------------------\n"
        "22:10:20 5 [imCloseFile] (9)\n22:10:20 5 OrvantisImporter::~OrvantisImporter()"));
    ASSERT_EQ(items.size(), 2U);
    EXPECT_EQ(std::get<LoggedCall>(items[0]).end, LoggedCall::End::kNoAnswer);
    EXPECT_TRUE(std::get<LoggedCall>(items[0]).failed);
    EXPECT_EQ(std::get<LoggedCall>(items[1]).end, LoggedCall::End::kOpen);
    EXPECT_TRUE(std::get<LoggedCall>(items[1]).failed);
}

TEST(LoggedCalls, ManyLinesAreBoundedButFailuresAreKept) {
    std::string lines = "22:10:09 5 ----------------------\n22:10:09 5 [imImportAudio7] (25)\n";
    for (std::size_t i = 0; i < LoggedCall::kMostLines + 10; ++i) {
        lines += "22:10:09 5 reading : 0, 1, 2\n";
    }
    lines += "22:10:09 5 importAudio: read error: 3, read: 1\n22:10:09 5     [imNoErr] (0)";
    const LoggedCall call = callOf(lines);
    EXPECT_EQ(call.lines.size(), LoggedCall::kMostLines + 1);
    EXPECT_EQ(call.linesLeftOut, 10U);
    EXPECT_TRUE(call.failed);
}

LogSummary summaryOf(std::string_view lines) {
    LogSummary summary;
    for (const LogItem& item : itemsOf(logText(lines))) {
        summary.add(item);
    }
    return summary;
}

TEST(LogSummaries, CountCallsFilesAndFailures) {
    const LogSummary summary = summaryOf(
        "22:10:08 1 Log opened\n22:10:08 1 Application: C:\\host.exe\n"
        "22:10:09 1 ----------------------\n22:10:09 1 [imOpenFile8] (39)\n22:10:09 1 Open: 'C:\\a.avi', "
        "stream: 0\n"
        "22:10:09 1     [imNoErr] (0)\n"
        "22:10:09 1 ----------------------\n22:10:10 1 [imGetInfo8] (37)\n22:10:10 1 m_filePathUtf8: "
        "'C:\\a.avi'\n"
        "22:10:10 1 Avi has no video stream\n22:10:10 1     [imBadFile] (2)\n"
        "22:10:11 2 a line of the future\n22:10:12 1 Module destroy\n22:10:12 1 Log closed");
    EXPECT_EQ(summary.application, "C:\\host.exe");
    EXPECT_EQ(summary.calls, 2U);
    EXPECT_EQ(summary.failedCalls, 1U);
    EXPECT_EQ(summary.failures, 1U);
    EXPECT_EQ(summary.unknownLines, 1U);
    EXPECT_EQ(summary.threads.size(), 2U);
    EXPECT_TRUE(summary.closed);
    EXPECT_EQ(summary.firstStamp, "2026-11-15 22:10:08");
    EXPECT_EQ(summary.lastStamp, "2026-11-15 22:10:12");
    ASSERT_EQ(summary.files.size(), 1U);
    EXPECT_EQ(summary.files.at("C:\\a.avi").calls, 2U);
    EXPECT_EQ(summary.files.at("C:\\a.avi").failures, 1U);
    ASSERT_TRUE(summary.firstFailure.has_value());
    EXPECT_EQ(summary.firstFailure->what, "Avi has no video stream");
    EXPECT_EQ(summary.firstFailure->line, 10U);
}

TEST(LogSummaries, ALogWithoutItsLastLineIsNotClosed) {
    EXPECT_FALSE(summaryOf("22:10:08 1 Log opened\n22:10:12 1 Module destroy").closed);
    EXPECT_FALSE(summaryOf("").closed);
}

// A whole log of the plug-in: a clip of two streams whose first is AC-3 sound, described and closed.
TEST(LogSummaries, EveryLineOfARealLogIsUnderstood) {
    std::ifstream stream(ORVANTIS_TOOL_TEST_FOLDER "/compressed_sound_log.txt", std::ios::binary);
    const std::string text((std::istreambuf_iterator<char>(stream)), std::istreambuf_iterator<char>());
    LogSummary summary;
    for (const LogItem& item : itemsOf(text)) {
        summary.add(item);
    }
    // That the host is told no layout of a silent placeholder is no failure.
    EXPECT_EQ(summary.unknownLines, 0U);
    EXPECT_EQ(summary.calls, 26U);
    EXPECT_EQ(summary.failedCalls, 4U);
    EXPECT_TRUE(summary.closed);
    EXPECT_EQ(summary.application, "C:\\Program Files\\Adobe\\host.exe");
    ASSERT_TRUE(summary.firstFailure.has_value());
    EXPECT_TRUE(summary.firstFailure->what.starts_with("Avi unsupported audio stream format: "));
    EXPECT_EQ(summary.files.at("C:\\clips\\compressed-first.avi").failures, 4U);
}

}  // namespace
}  // namespace simhost::tool
