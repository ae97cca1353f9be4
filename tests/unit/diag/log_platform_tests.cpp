// What the log asks of the system, in which order, and what it makes of the answers.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "diag/diagnostic_log.h"
#include "diag/log.h"
#include "tests/support/latch.h"
#include "tests/unit/diag/fake_log_platform.h"

namespace {

using namespace orvantis;
using orvantis::test::FakeLogPlatform;
using orvantis::test::fakeLogPlatform;
using orvantis::test::Latch;
using testing::ElementsAre;
using testing::IsEmpty;

class LogPlatform : public testing::Test {
 protected:
    LogPlatform() {
        m_system = FakeLogPlatform();
        m_system.time.tm_year = 126;
        m_system.time.tm_mon = 10;
        m_system.time.tm_mday = 15;
        m_system.time.tm_hour = 22;
        m_system.time.tm_min = 10;
        m_system.time.tm_sec = 9;
        m_system.thread = 5312;
        m_system.application = "C:\\Host\\host.exe";
    }

    FakeLogPlatform& m_system = fakeLogPlatform();
};

const std::string kOpened = "[2026-11-15 22:10:09] [5312] Log opened\n";
const std::string kApplication = "[2026-11-15 22:10:09] [5312] Application: C:\\Host\\host.exe\n";

TEST_F(LogPlatform, OpeningAsksInOrderAndWritesTwoLines) {
    DiagnosticLog log("orvantis_pr_importer", false);
    EXPECT_THAT(m_system.calls,
                ElementsAre("profile", "append orvantis", "make home/orvantis", "append adobe",
                            "make home/orvantis/adobe", "read 0",
                            "create home/orvantis/adobe/orvantis_pr_importer_20261115_221009#0"));
    EXPECT_EQ(m_system.file, kOpened + kApplication);
    EXPECT_EQ(m_system.console, "");
    log.writeLine("[%s] (%d)", "imInit", 0);
    EXPECT_EQ(m_system.file, kOpened + kApplication + "[2026-11-15 22:10:09] [5312] [imInit] (0)\n");
}

TEST_F(LogPlatform, LargestHeaderLeavesTheMessageWhole) {
    m_system.thread = 4294967295u;
    m_system.time.tm_year = 9999 - 1900;
    DiagnosticLog log("name", false);
    m_system.file.clear();
    const std::string text(500, 'x');
    log.writeLine("%s", text.c_str());
    EXPECT_EQ(m_system.file, "[9999-11-15 22:10:09] [4294967295] " + text + "\n");
}

TEST_F(LogPlatform, WithoutAProfileFolderNothingElseIsAskedOrWritten) {
    m_system.hasProfile = false;
    DiagnosticLog log("name", true);
    log.writeLine("unheard");
    EXPECT_THAT(m_system.calls, ElementsAre("profile"));
    EXPECT_FALSE(log.hasFile());
    EXPECT_EQ(m_system.file, "");
    EXPECT_EQ(m_system.console, "");
}

TEST_F(LogPlatform, AFolderThatDoesNotFitLeavesTheLogSilent) {
    for (const std::size_t fitting : {0u, 1u}) {
        m_system.foldersThatFit = fitting;
        m_system.calls.clear();
        DiagnosticLog log("name", false);
        log.writeLine("unheard");
        EXPECT_FALSE(log.hasFile());
        EXPECT_EQ(m_system.calls.back(), fitting == 0 ? "append orvantis" : "append adobe");
        EXPECT_EQ(m_system.file, "");
    }
}

TEST_F(LogPlatform, WhenAllThousandNumbersAreTakenNothingIsCreated) {
    m_system.takenNumbers = 1000;
    DiagnosticLog log("name", false);
    log.writeLine("unheard");
    EXPECT_FALSE(log.hasFile());
    ASSERT_EQ(m_system.calls.size(), 5u + 1000u);
    for (std::size_t number = 0; number < 1000; ++number) {
        EXPECT_EQ(m_system.calls[5 + number], "read " + std::to_string(number));
    }
    EXPECT_EQ(m_system.file, "");
}

TEST_F(LogPlatform, TheLastNumberIsUsedWhenItIsTheOnlyFreeOne) {
    m_system.takenNumbers = 999;
    const DiagnosticLog log("name", false);
    EXPECT_TRUE(log.hasFile());
    EXPECT_EQ(m_system.calls.back(), "create home/orvantis/adobe/name_20261115_221009#999");
}

TEST_F(LogPlatform, AFailedCreateGoesOnToTheNextNumber) {
    m_system.takenNumbers = 1;
    m_system.refusedNumbers = 3;
    const DiagnosticLog log("n", false);
    EXPECT_TRUE(log.hasFile());
    m_system.calls.erase(m_system.calls.begin(), m_system.calls.begin() + 5);
    const std::string base = "create home/orvantis/adobe/n_20261115_221009#";
    EXPECT_THAT(m_system.calls,
                ElementsAre("read 0", "read 1", base + "1", "read 2", base + "2", "read 3", base + "3"));
}

TEST_F(LogPlatform, AfterThousandFailedCreatesTheLogIsSilent) {
    m_system.refusedNumbers = 1000;
    DiagnosticLog log("name", false);
    log.writeLine("unheard");
    EXPECT_FALSE(log.hasFile());
    EXPECT_EQ(m_system.calls.size(), 5u + 2000u);
    EXPECT_EQ(m_system.file, "");
}

TEST_F(LogPlatform, TheConsoleGetsEveryLineOfTheFile) {
    DiagnosticLog log("name", true);
    EXPECT_EQ(m_system.calls.back(), "console");
    EXPECT_EQ(m_system.console, kOpened + kApplication);
    log.writeLine("line");
    EXPECT_EQ(m_system.console, kOpened + kApplication + "[2026-11-15 22:10:09] [5312] line\n");
    EXPECT_EQ(m_system.file, m_system.console);
}

TEST_F(LogPlatform, TheConsoleWorksWithoutAFile) {
    m_system.takenNumbers = 1000;
    DiagnosticLog log("name", true);
    log.writeLine("line");
    EXPECT_EQ(m_system.console, kOpened + kApplication + "[2026-11-15 22:10:09] [5312] line\n");
    EXPECT_EQ(m_system.file, "");
}

TEST_F(LogPlatform, OneLineIsWrittenAtATime) {
    DiagnosticLog log("name", false);
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    m_system.onWrite = [&] {
        const int now = ++inside;
        most = std::max(most.load(), now);
        std::this_thread::yield();  // an invitation to whoever is not kept out
        --inside;
    };
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&log] {
            for (int i = 0; i < 100; ++i) {
                log.writeLine("line");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    m_system.onWrite = nullptr;
    EXPECT_EQ(most, 1);
    std::string expected = kOpened + kApplication;
    for (int i = 0; i < 400; ++i) {
        expected += "[2026-11-15 22:10:09] [5312] line\n";
    }
    EXPECT_EQ(m_system.file, expected);
}

TEST_F(LogPlatform, UnknownApplicationIsAnEmptyPath) {
    m_system.application.clear();
    const DiagnosticLog log("name", false);
    EXPECT_EQ(m_system.file, kOpened + "[2026-11-15 22:10:09] [5312] Application: \n");
}

TEST_F(LogPlatform, AnOverlongNameIsCutWithItsStamp) {
    const std::string name(200, 'n');
    const DiagnosticLog log(name, false);
    EXPECT_EQ(m_system.calls.back(), "create home/orvantis/adobe/" + name.substr(0, 127) + "#0");
}

TEST_F(LogPlatform, TheModuleAsksTheSystemForNothingUntilItsFirstLine) {
    if (logEnabled()) {
        GTEST_SKIP() << "another run of this process has switched the log on";
    }
    startModuleLog();
    logMessage("unheard");
    EXPECT_THAT(m_system.calls, IsEmpty());
    m_system.switchValue = 1;
    readLogSwitch();
    EXPECT_THAT(m_system.calls, ElementsAre("switch"));
    logMessage("line");
    EXPECT_EQ(m_system.calls.back(), "create home/orvantis/adobe/orvantis_pr_importer_20261115_221009#0");
    logMessage("line");
    closeLog();
    const std::string line = "[2026-11-15 22:10:09] [5312] line\n";
    EXPECT_EQ(m_system.file,
              kOpened + kApplication + line + line + "[2026-11-15 22:10:09] [5312] Log closed\n");
}

// Ends the process while another thread is in the middle of a line and will never come back, as a thread that
// the system has ended by force.
void endWhileAThreadHoldsTheLog() {
    // Neither is destroyed, because the thread is still there when static objects are; the mutex stays
    // locked.
    static Latch& writing = *new Latch(1);
    static std::mutex& never = *new std::mutex;
    never.lock();
    startModuleLog();
    readLogSwitch();
    fakeLogPlatform().onWrite = [] {
        writing.countDown();
        never.lock();
    };
    std::thread([] { logMessage("line"); }).detach();
    writing.wait();
    std::exit(17);
}

TEST_F(LogPlatform, TheEndOfTheModuleDoesNotWaitForAThreadThatIsGone) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    m_system.switchValue = 1;
    EXPECT_EXIT(endWhileAThreadHoldsTheLog(), testing::ExitedWithCode(17), "");
}

// The same at the end of the process, as the system tells the module of it: the lines come, without the lock.
void endProcessWhileAThreadHoldsTheLog() {
    startModuleLog();
    readLogSwitch();
    logMessage("before");
    noteProcessEnd();
    fakeLogPlatform().onUnlockedWrite = [] {
        if (fakeLogPlatform().file.ends_with("Log closed\n")) {
            (void)std::fputs(fakeLogPlatform().file.c_str(), stderr);
        }
    };
    endWhileAThreadHoldsTheLog();
}

TEST_F(LogPlatform, TheEndOfTheProcessIsLoggedPastAThreadThatIsGone) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    m_system.switchValue = 1;
    EXPECT_EXIT(endProcessWhileAThreadHoldsTheLog(), testing::ExitedWithCode(17),
                "\\[5312\\] line\n.*\\[5312\\] Module destroy\n.*\\[5312\\] Log closed\n");
}

void endProcessWithTheLogOff() {
    startModuleLog();
    readLogSwitch();
    logMessage("unheard");
    noteProcessEnd();
    (void)std::atexit([] { (void)std::fputs(fakeLogPlatform().file.empty() ? "silent" : "lines", stderr); });
    std::exit(17);
}

TEST_F(LogPlatform, TheEndOfTheProcessIsSilentWhileTheLogIsOff) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(endProcessWithTheLogOff(), testing::ExitedWithCode(17), "silent");
}

TEST_F(LogPlatform, LastLinesAreLikeOthers) {
    m_system.utc = 1'000'000;
    DiagnosticLog log("name", true);
    m_system.file.clear();
    m_system.console.clear();
    log.writeLast("Module destroy");
    EXPECT_EQ(m_system.file, "[2026-11-15 22:10:09] [5312] Module destroy\n");
    EXPECT_EQ(m_system.console, m_system.file);
    // The clock goes on; the local time is not asked for again.
    m_system.time = std::tm{};
    m_system.utc += 2 * 3600 + 51;
    m_system.file.clear();
    log.writeLast("later");
    EXPECT_EQ(m_system.file, "[2026-11-16 00:11:00] [5312] later\n");
}

// The same, but the thread goes on with its line once the process has begun to end.
void endWhileAThreadIsWriting() {
    static Latch& writing = *new Latch(1);
    static Latch& ending = *new Latch(1);
    static bool first = true;
    startModuleLog();
    readLogSwitch();
    fakeLogPlatform().onWrite = [] {
        if (std::exchange(first, false)) {
            writing.countDown();
            ending.wait();
        }
        if (fakeLogPlatform().file.ends_with("Log closed\n")) {
            (void)std::fputs(fakeLogPlatform().file.c_str(), stderr);
        }
    };
    std::thread([] { logMessage("line"); }).detach();
    writing.wait();
    // Registered after the module's own handler and therefore called before it.
    (void)std::atexit([] { ending.countDown(); });
    std::exit(17);
}

TEST_F(LogPlatform, TheEndOfTheModuleWaitsForALineThatIsBeingWritten) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    m_system.switchValue = 1;
    EXPECT_EXIT(endWhileAThreadIsWriting(), testing::ExitedWithCode(17),
                "line\n.*Module destroy\n.*Log closed");
}

}  // namespace
