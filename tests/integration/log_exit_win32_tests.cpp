// The log of a process that ends while other threads are writing to it.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/support/child_process.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"

namespace {

TEST(LogExit, EndsWithItsLastLinesWhereverTheOtherThreadsWere) {
    const auto child = (orvantis::test::thisProgram().parent_path() / "log_exit_child")
                           .replace_extension(orvantis::test::thisProgram().extension());
    constexpr int kRuns = 30;
    int destroyed = 0;
    int closed = 0;
    for (int run = 0; run < kRuns; ++run) {
        const orvantis::test::LogCapture capture;
        ASSERT_EQ(orvantis::test::ChildProcess(child, {}).wait(), 7);
        ASSERT_EQ(capture.files().size(), 1U);
        const std::string text = orvantis::test::readFile(capture.files().front());
        // A module that waits for a thread that is gone gives up in the end, without these lines: that all
        // are there also tells that nobody waited.
        destroyed += text.find("] Module destroy\r\n") != std::string::npos ? 1 : 0;
        closed += text.ends_with("] Log closed\r\n") ? 1 : 0;
    }
    EXPECT_EQ(destroyed, kRuns);
    EXPECT_EQ(closed, kRuns);
}

}  // namespace
