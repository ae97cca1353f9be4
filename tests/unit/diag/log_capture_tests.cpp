// The reader of log files that other tests rely on must not accept what a log would not write.

#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace orvantis::test;
using Lines = std::vector<std::string>;

TEST(LogLines, MaskTimeAndThread) {
    EXPECT_EQ(
        logLines("[2026-11-15 22:10:09] [5312] Log opened\r\n[2026-11-15 22:10:10] [7]     indented\r\n"),
        (Lines{"[T] [#] Log opened", "[T] [#]     indented"}));
}

TEST(LogLines, OtherHeadersStayAsTheyAre) {
    for (const char* line :
         {"", "text", "[2026-11-15 22:10:09] [] x", "[2026-11-15T22:10:09] [1] x",
          "[2026-11-15 22:10:09] [1]", "[2026-11-15 22:10:09] [1]x", "[2026-11-15 22:10:09]"}) {
        EXPECT_EQ(maskedLine(line), line);
        EXPECT_EQ(threadOfLine(line), 0u);
    }
}

TEST(LogLines, ThreadNumberIsRead) {
    EXPECT_EQ(threadOfLine("[2026-11-15 22:10:09] [4294967295] x"), 4294967295u);
}

TEST(LogLines, OtherLineEndsAreRefused) {
    EXPECT_THROW(logLines("a\nb\r\n"), std::runtime_error);
    EXPECT_THROW(logLines("a\rb\r\n"), std::runtime_error);
    EXPECT_THROW(logLines("a\r\nb"), std::runtime_error);
    EXPECT_THROW(logLines("a\r\r\n"), std::runtime_error);
    EXPECT_EQ(logLines(""), Lines{});
}

TEST(LogCaptureFiles, SeveralFilesAreRefusedAndNewLinesComeOnce) {
    LogCapture log;
    EXPECT_EQ(log.lines(), Lines{});
    std::filesystem::create_directories(log.logFolder());
    writeFile(log.logFolder() / "a.log", "1\r\n2\r\n");
    EXPECT_EQ(log.takeLines(), (Lines{"1", "2"}));
    EXPECT_EQ(log.takeLines(), Lines{});
    writeFile(log.logFolder() / "a.log", "1\r\n2\r\n3\r\n");
    EXPECT_EQ(log.takeLines(), Lines{"3"});
    writeFile(log.logFolder() / "b.log", "");
    EXPECT_THROW(log.lines(), std::runtime_error);
}

// Another thread may be writing while a test reads.
TEST(LogCaptureFiles, ALineThatIsBeingWrittenComesWholeWithALaterCall) {
    LogCapture log;
    std::filesystem::create_directories(log.logFolder());
    const std::filesystem::path file = log.logFolder() / "a.log";
    writeFile(file, "1\r\n2");
    EXPECT_EQ(log.takeLines(), Lines{"1"});
    EXPECT_EQ(log.takeLines(), Lines{});
    writeFile(file, "1\r\n23\r");
    EXPECT_EQ(log.takeLines(), Lines{});
    writeFile(file, "1\r\n23\r\n4\r\n");
    EXPECT_EQ(log.takeLines(), (Lines{"23", "4"}));
}

// The cost of a look must not grow with the log: what was taken may even be gone.
TEST(LogCaptureFiles, WhatWasTakenIsNotReadAgain) {
    LogCapture log;
    std::filesystem::create_directories(log.logFolder());
    const std::filesystem::path file = log.logFolder() / "a.log";
    writeFile(file, "1\r\n");
    EXPECT_EQ(log.takeLines(), Lines{"1"});
    writeFile(file, "\n!\r2\r\n");  // no log would hold these three bytes
    EXPECT_EQ(log.takeLines(), Lines{"2"});
    EXPECT_EQ(log.takeBytes(), "");
}

}  // namespace
