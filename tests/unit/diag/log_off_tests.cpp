// The log while it is off, which is how nearly every user runs it. Each test needs a process whose log was
// never on.

#include <gtest/gtest.h>

#include <filesystem>

#include "diag/log.h"
#include "tests/support/log_capture.h"

namespace {

using namespace orvantis;
using orvantis::test::LogCapture;
namespace fs = std::filesystem;

class LogOff : public testing::Test {
 protected:
    void SetUp() override {
        if (logEnabled()) {
            GTEST_SKIP() << "another test of this process has switched the log on";
        }
    }

    void expectNothing() {
        startModuleLog();
        readLogSwitch();
        EXPECT_FALSE(logEnabled());
        logMessage("----------------------");
        logMessage("[%s] (%d)", "imInit", 0);
        closeLog();
        EXPECT_TRUE(fs::is_empty(m_log.profile()));
    }

    LogCapture m_log{LogCapture::Switch::kMissing};
};

TEST_F(LogOff, WithoutTheValueNothingIsCreated) {
    expectNothing();
}

TEST_F(LogOff, WithValueZeroNothingIsCreated) {
    m_log.redirection().setSwitch(0);
    expectNothing();
}

TEST_F(LogOff, UntilTheSwitchIsReadNothingIsCreated) {
    m_log.redirection().setSwitch(1);
    EXPECT_FALSE(logEnabled());
    startModuleLog();
    logMessage("unheard");
    closeLog();
    EXPECT_FALSE(logEnabled());
    EXPECT_TRUE(fs::is_empty(m_log.profile()));
}

TEST_F(LogOff, ArgumentsAreNotLookedAt) {
    // Formatting this argument would crash.
    logMessage("%s", reinterpret_cast<const char*>(std::uintptr_t{1}));
    EXPECT_TRUE(fs::is_empty(m_log.profile()));
}

TEST_F(LogOff, ClosingIsHarmless) {
    closeLog();
    closeLog();
    EXPECT_TRUE(fs::is_empty(m_log.profile()));
}

}  // namespace
