// The life of a log over a whole process, seen from outside: a child logs, this process reads.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "diag/log.h"
#include "tests/support/child_process.h"
#include "tests/support/log_capture.h"
#include "tests/unit/diag/log_test_support.h"

namespace {

using namespace orvantis;
using namespace orvantis::test;
namespace fs = std::filesystem;

int runChild(const std::vector<std::string>& arguments) {
    return ChildProcess(siblingProgram("diag_log_child"), arguments).wait();
}

std::vector<std::string> childLines(std::vector<std::string> more) {
    return withOpening(siblingProgram("diag_log_child"), std::move(more));
}

TEST(LogProcess, EndsWithModuleDestroyAndLogClosed) {
    LogCapture log;
    ASSERT_EQ(runChild({"module", "3"}), 0);
    EXPECT_EQ(log.lines(), childLines({"[T] [#] line 0", "[T] [#] line 1", "[T] [#] line 2",
                                       "[T] [#] Module destroy", "[T] [#] Log closed"}));
}

TEST(LogProcess, ModuleDestroyAloneOpensTheLogOfAProcessThatLoggedNothingElse) {
    LogCapture log;
    ASSERT_EQ(runChild({"module", "0"}), 0);
    EXPECT_EQ(log.lines(), childLines({"[T] [#] Module destroy", "[T] [#] Log closed"}));
}

TEST(LogProcess, WithoutTheSwitchAWholeProcessLeavesNothing) {
    LogCapture log(LogCapture::Switch::kMissing);
    ASSERT_EQ(runChild({"module", "3"}), 0);
    EXPECT_TRUE(fs::is_empty(log.profile()));
}

TEST(LogProcess, ModuleInitIsSilentBecauseTheSwitchIsNotReadYet) {
    LogCapture log;
    ASSERT_EQ(runChild({"silent"}), 0);
    EXPECT_TRUE(fs::is_empty(log.profile()));
}

TEST(LogProcess, ACrashLosesNoLine) {
    LogCapture log;
    ASSERT_EQ(runChild({"crash"}), 3);
    EXPECT_EQ(log.lines(), childLines({"[T] [#] last words"}));
}

TEST(LogProcess, TwoProcessesOfTheSameSecondWriteNumbersZeroAndOne) {
    // A second may pass between the two; then the pair is tried again.
    for (int attempt = 0; attempt < 20; ++attempt) {
        LogCapture log;
        startModuleLog();
        readLogSwitch();
        logMessage("first process");
        ASSERT_EQ(log.files().size(), 1u);
        const fs::path ours = log.files().front();
        ASSERT_EQ(runChild({"module", "1"}), 0);
        logMessage("first process again");
        closeLog();

        std::vector<fs::path> files = log.files();
        ASSERT_EQ(files.size(), 2u);
        if (stampOf(files[0]) != stampOf(files[1])) {
            continue;
        }
        EXPECT_EQ(files[0], ours);
        EXPECT_EQ(files[0].filename().string(), "orvantis_pr_importer_" + stampOf(ours) + "_00.log");
        EXPECT_EQ(files[1].filename().string(), "orvantis_pr_importer_" + stampOf(ours) + "_01.log");
        EXPECT_EQ(
            logLines(readFile(files[0])),
            withOpening({"[T] [#] first process", "[T] [#] first process again", "[T] [#] Log closed"}));
        EXPECT_EQ(logLines(readFile(files[1])),
                  childLines({"[T] [#] line 0", "[T] [#] Module destroy", "[T] [#] Log closed"}));
        return;
    }
    FAIL() << "no two processes started within one second";
}

}  // namespace
