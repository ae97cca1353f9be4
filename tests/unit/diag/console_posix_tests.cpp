// The console of a log that was built with it: every line that goes to the file goes there too. Here a file
// stands in for the console window.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/log_capture.h"
#include "tests/unit/diag/log_test_support.h"

namespace {

using namespace orvantis::test;

TEST(Console, GetsTheLinesOfTheFileWithPlainLineEnds) {
    LogCapture log;
    const TempFolder folder;
    const ScopedEnvironment console("ORVANTIS_TEST_CONSOLE", (folder / "console").string());
    ASSERT_EQ(ChildProcess(siblingProgram("diag_console_child"), {"unused"}).wait(), 0);
    EXPECT_EQ(log.lines(), withOpening(siblingProgram("diag_console_child"),
                                       {"[T] [#] hello console", "[T] [#] second", "[T] [#] Module destroy",
                                        "[T] [#] Log closed"}));
    std::string file = readFile(log.files().front());
    file.erase(std::remove(file.begin(), file.end(), '\r'), file.end());
    EXPECT_EQ(readFile(folder / "console"), file);
}

TEST(Console, IsNotUsedWhileTheLogIsOff) {
    LogCapture log(LogCapture::Switch::kMissing);
    const TempFolder folder;
    const ScopedEnvironment console("ORVANTIS_TEST_CONSOLE", (folder / "console").string());
    ASSERT_EQ(ChildProcess(siblingProgram("diag_console_child"), {"unused"}).wait(), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "console"));
}

TEST(Console, IsNotUsedWithoutAProfileFolder) {
    LogCapture log;
    log.redirection().setProfile(log.profile() / "nowhere");
    const TempFolder folder;
    const ScopedEnvironment console("ORVANTIS_TEST_CONSOLE", (folder / "console").string());
    ASSERT_EQ(ChildProcess(siblingProgram("diag_console_child"), {"unused"}).wait(), 0);
    EXPECT_FALSE(std::filesystem::exists(folder / "console"));
}

TEST(Console, IsNotUsedByTheOrdinaryBuild) {
    LogCapture log;
    const TempFolder folder;
    const ScopedEnvironment console("ORVANTIS_TEST_CONSOLE", (folder / "console").string());
    ASSERT_EQ(ChildProcess(siblingProgram("diag_log_child"), {"module", "1"}).wait(), 0);
    EXPECT_EQ(log.files().size(), 1u);
    EXPECT_FALSE(std::filesystem::exists(folder / "console"));
}

}  // namespace
