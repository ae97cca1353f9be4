// One host suite: how often the host is asked and what is given back, however often its holder asks.
#include "suites/suite_ref.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "host/result_codes.h"
#include "tests/support/captured_log.h"
#include "tests/support/latch.h"

namespace orvantis {
namespace {

using Lines = std::vector<std::string>;

constexpr int kTable = 0;  // stands for the suite's table
Lines g_calls;
bool g_refuses = false;

host::SPErr acquireSuite(const char* name, std::int32_t version, const void** suite) {
    g_calls.push_back(std::string("+ ") + name + ' ' + std::to_string(version));
    if (g_refuses) {
        return host::kSuiteFailed;
    }
    *suite = &kTable;
    return 0;
}

host::SPErr releaseSuite(const char* name, std::int32_t version) {
    g_calls.push_back(std::string("- ") + name + ' ' + std::to_string(version));
    return 0;
}

constexpr host::SPBasicSuite kBasic = {&acquireSuite, &releaseSuite, nullptr, nullptr,
                                       nullptr,       nullptr,       nullptr};

// How many are inside the host's function, and have been.
std::mutex g_mutex;
std::condition_variable g_entered;
int g_acquisitions = 0;

// Gives another thread the time to ask meanwhile.
host::SPErr acquireSlowly(const char*, std::int32_t, const void** suite) {
    std::unique_lock lock(g_mutex);
    ++g_acquisitions;
    g_entered.notify_all();
    (void)g_entered.wait_for(lock, std::chrono::milliseconds(20), [] { return g_acquisitions > 1; });
    *suite = &kTable;
    return 0;
}

host::SPErr releaseQuietly(const char*, std::int32_t) {
    return 0;
}

constexpr host::SPBasicSuite kSlowBasic = {&acquireSlowly, &releaseQuietly, nullptr, nullptr,
                                           nullptr,        nullptr,         nullptr};

class SuiteRefTest : public testing::Test {
 protected:
    SuiteRefTest() {
        g_calls.clear();
        g_refuses = false;
    }
    Lines linesAboutReleases() {
        Lines found;
        for (const std::string& line : m_log.lines()) {
            if (line.starts_with("Releasing suite: ")) {
                found.push_back(line);
            }
        }
        return found;
    }

    test::CapturedLog m_log;
};

TEST_F(SuiteRefTest, ReleasingTwiceReleasesOnce) {
    {
        SuiteRef suite(&kBasic, "Some Suite", 7);
        suite.acquire();
        ASSERT_TRUE(suite.held());
        suite.release();
        EXPECT_FALSE(suite.held());
        suite.release();
        EXPECT_EQ(g_calls, (Lines{"+ Some Suite 7", "- Some Suite 7"}));
    }
    EXPECT_EQ(g_calls, (Lines{"+ Some Suite 7", "- Some Suite 7"})) << "nor does its end release it again";
    EXPECT_EQ(linesAboutReleases(), Lines{"Releasing suite: r: 0, v: 7, n: 'Some Suite'"});
}

TEST_F(SuiteRefTest, AcquiringAHeldSuiteAsksTheHostNoSecondTime) {
    {
        SuiteRef suite(&kBasic, "Some Suite", 7);
        suite.acquire();
        suite.acquire();
        EXPECT_EQ(suite.get(), &kTable);
        suite.acquire();
    }
    EXPECT_EQ(g_calls, (Lines{"+ Some Suite 7", "- Some Suite 7"})) << "the host counts, and one came back";
}

TEST_F(SuiteRefTest, AReleasedSuiteIsAcquiredAnewByItsNextUse) {
    {
        SuiteRef suite(&kBasic, "Some Suite", 7);
        EXPECT_EQ(suite.get(), &kTable);
        EXPECT_EQ(suite.get(), &kTable);
        suite.release();
        EXPECT_EQ(suite.get(), &kTable);
    }
    EXPECT_EQ(g_calls, (Lines{"+ Some Suite 7", "- Some Suite 7", "+ Some Suite 7", "- Some Suite 7"}));
}

TEST_F(SuiteRefTest, ARefusedSuiteIsNeverReleasedAndAskedForAtEachUse) {
    {
        g_refuses = true;
        SuiteRef suite(&kBasic, "Some Suite", 7);
        suite.acquire();
        EXPECT_FALSE(suite.held());
        try {
            (void)suite.get();
            FAIL() << "no suite";
        } catch (const std::runtime_error& error) {
            EXPECT_STREQ(error.what(), "Could not acquire suite: 'Some Suite', ver: 7");
        }
        g_refuses = false;
        EXPECT_EQ(suite.get(), &kTable);
    }
    EXPECT_EQ(g_calls, (Lines{"+ Some Suite 7", "+ Some Suite 7", "+ Some Suite 7", "- Some Suite 7"}));
}

TEST_F(SuiteRefTest, TwoTasksThatMissASuiteAtOnceAcquireItOnce) {
    for (int round = 0; round < 5; ++round) {
        g_acquisitions = 0;
        SuiteRef suite(&kSlowBasic, "Some Suite", 7);
        test::Latch start(2);
        const auto use = [&] {
            start.arriveAndWait();
            EXPECT_EQ(suite.get(), &kTable);
        };
        std::thread other(use);
        use();
        other.join();
        ASSERT_EQ(g_acquisitions, 1) << "the host counts, and one comes back; round " << round;
    }
}

}  // namespace
}  // namespace orvantis
