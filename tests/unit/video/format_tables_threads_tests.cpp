// Format tables built on several threads at once: a table in force is whole, whichever thread has built it.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <span>
#include <thread>
#include <vector>

#include "host/suites.h"
#include "tests/support/latch.h"
#include "video/format_tables.h"

namespace orvantis {
namespace {

// Each thread asks a host of its own: which formats it says to have their top row first.
thread_local std::uint32_t t_topLeft = 0;
thread_local std::uint32_t t_asked = 0;

host::prSuiteError answerTopLeft(std::uint32_t, std::int32_t* answer) {
    *answer = static_cast<std::int32_t>(t_topLeft >> t_asked++ & 1);
    return 0;
}

const host::ImageProcessingSuite& answeringSuite() {
    static const host::ImageProcessingSuite suite = [] {
        host::ImageProcessingSuite made{};
        made.FormatIsOriginTopLeft = &answerTopLeft;
        return made;
    }();
    return suite;
}

host::SPErr lendSuite(const char*, std::int32_t, const void** suite) {
    *suite = &answeringSuite();
    return 0;
}

host::SPErr takeSuiteBack(const char*, std::int32_t) {
    return 0;
}

constexpr host::SPBasicSuite kLender = {&lendSuite, &takeSuiteBack, nullptr, nullptr,
                                        nullptr,    nullptr,        nullptr};

TEST(FormatTablesThreads, ATableThatIsInForceIsWholeWhoeverBuildsOne) {
    constexpr int kThreads = 4;
    constexpr std::uint32_t kAnswersOfOne = 4;  // more different ones in all than have a place beforehand
    test::Latch start(kThreads);
    std::atomic<int> mixtures = 0;
    std::vector<std::thread> threads;
    for (std::uint32_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            start.arriveAndWait();
            for (std::uint32_t round = 0; round < 40; ++round) {
                // The same bits once more in the upper half of the rows tell a mixture.
                const std::uint32_t answers = 1 + t * kAnswersOfOne + round % kAnswersOfOne;
                t_topLeft = answers | answers << 8;
                t_asked = 0;
                buildFormatTables(&kLender);
                const std::span<const FormatInfo> rows = FormatInfos();
                for (std::size_t i = 0; i < 8; ++i) {
                    mixtures += rows[i].isTopLeft() != rows[i + 8].isTopLeft() ? 1 : 0;
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(mixtures, 0);
}

}  // namespace
}  // namespace orvantis
