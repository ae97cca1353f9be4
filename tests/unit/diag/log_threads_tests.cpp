// The log under many threads: lines stay whole, one file is opened, closing takes no line from under its
// writer.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "diag/format.h"
#include "diag/log.h"
#include "tests/support/latch.h"
#include "tests/support/log_capture.h"
#include "tests/unit/diag/log_test_support.h"

namespace {

using namespace orvantis;
using namespace orvantis::test;

constexpr int kThreads = 8;

std::string messageOf(int thread, int line) {
    // Long and of changing length, so that a line written in parts would meet others.
    return formatString("thread %d line %d ", thread, line) +
           std::string(static_cast<std::size_t>(20 + (thread * 131 + line * 37) % 400),
                       static_cast<char>('a' + thread));
}

void logFromAllThreads(int lines) {
    Latch start(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, lines, &start] {
            start.arriveAndWait();
            for (int i = 0; i < lines; ++i) {
                logMessage("%s", messageOf(t, i).c_str());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(LogThreads, LinesNeverMixAndTheFirstLinesOpenOneFile) {
    constexpr int kLines = 200;
    LogCapture log;
    startModuleLog();
    readLogSwitch();
    logFromAllThreads(kLines);
    closeLog();

    // lines() throws when there are two files.
    const std::vector<std::string> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u + kThreads * kLines + 1u);
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 2), withOpening({}));
    EXPECT_EQ(lines.back(), "[T] [#] Log closed");
    int next[kThreads] = {};
    for (std::size_t i = 2; i + 1 < lines.size(); ++i) {
        int thread = -1;
        ASSERT_EQ(std::sscanf(lines[i].c_str(), "[T] [#] thread %d", &thread), 1) << lines[i];
        ASSERT_TRUE(thread >= 0 && thread < kThreads);
        EXPECT_EQ(lines[i], "[T] [#] " + messageOf(thread, next[thread]));
        ++next[thread];
    }
    EXPECT_THAT(next, testing::Each(kLines));
}

TEST(LogThreads, EachThreadHasItsOwnNumber) {
    LogCapture log;
    startModuleLog();
    readLogSwitch();
    // All threads live at once, so no number is given out twice.
    Latch logged(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&logged] {
            logMessage("I am %u", thisThreadId());
            logged.arriveAndWait();
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    closeLog();
    ASSERT_EQ(log.files().size(), 1u);
    const std::string bytes = readFile(log.files().front());
    std::set<std::uint32_t> numbers;
    for (std::size_t at = 0; at < bytes.size(); at = bytes.find('\n', at) + 1) {
        const std::string line = bytes.substr(at, bytes.find('\r', at) - at);
        unsigned said = 0;
        if (const std::size_t text = line.find("I am "); text != std::string::npos) {
            ASSERT_EQ(std::sscanf(line.c_str() + text, "I am %u", &said), 1);
            EXPECT_EQ(threadOfLine(line), said);
            numbers.insert(said);
        }
    }
    EXPECT_EQ(numbers.size(), std::size_t{kThreads});
}

TEST(LogThreads, ClosingAmongWritersLosesNoLine) {
    constexpr int kLines = 100;
    LogCapture log;
    startModuleLog();
    readLogSwitch();
    std::thread closer([] {
        for (int i = 0; i < 20; ++i) {
            closeLog();
            std::this_thread::yield();
        }
    });
    logFromAllThreads(kLines);
    closer.join();
    closeLog();

    std::multiset<std::string> found;
    for (const std::filesystem::path& file : log.files()) {
        const std::vector<std::string> lines = logLines(readFile(file));
        ASSERT_GE(lines.size(), 3u);
        EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 2), withOpening({}));
        EXPECT_EQ(lines.back(), "[T] [#] Log closed");
        found.insert(lines.begin() + 2, lines.end() - 1);
    }
    std::multiset<std::string> expected;
    for (int t = 0; t < kThreads; ++t) {
        for (int i = 0; i < kLines; ++i) {
            expected.insert("[T] [#] " + messageOf(t, i));
        }
    }
    EXPECT_EQ(found, expected);
}

}  // namespace
