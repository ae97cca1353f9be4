// The tables at the end of the process: whatever still decodes then has a row in its hand.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <new>
#include <vector>

#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/fake_host/fake_host.h"
#include "video/format_tables.h"

namespace orvantis {
namespace {

/// Reads the tables when static objects are destroyed, behind those that were made later.
struct LateReader {
    ~LateReader() {
        std::uint32_t rows = 0;
        for (const FormatInfo& row : FormatInfos()) {
            rows += row.orvType != 0 ? 1U : 0U;
        }
        (void)std::fprintf(stderr, "%u rows", rows);
    }
};

void readAtTheEnd() {
    static const LateReader reader;
    test::FakeHost host;
    // Different answers, so that the tables are none that another test has built.
    host.answer = [](test::FakeHost::Question, std::uint32_t pixelFormat) { return pixelFormat % 3 == 0; };
    buildFormatTables(host.basicSuite());
    std::exit(17);
}

TEST(FormatTablesEnd, TheTablesOutliveEverythingThatReadsThem) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_EXIT(readAtTheEnd(), testing::ExitedWithCode(17), "17 rows");
}

TEST(FormatTablesEnd, ManyDifferentAnswersEachHaveTheirRows) {
    std::vector<const FormatInfo*> tables;
    for (std::uint32_t divisor = 2; divisor < 20; ++divisor) {
        test::FakeHost host;
        host.answer = [&](test::FakeHost::Question, std::uint32_t pixelFormat) {
            return (pixelFormat >> 8) % divisor == 0;
        };
        for (int build = 0; build < 2; ++build) {
            buildFormatTables(host.basicSuite());
            for (const FormatInfo& row : FormatInfos()) {
                EXPECT_EQ(row.isTopLeft(), (row.pixelFormat >> 8) % divisor == 0);
            }
            if (build == 0) {
                tables.push_back(FormatInfos().data());
            }
            EXPECT_EQ(FormatInfos().data(), tables.back());
        }
    }
    for (std::uint32_t divisor = 2; divisor < 20; ++divisor) {
        const FormatInfo& first = tables[divisor - 2][0];
        EXPECT_EQ(first.isTopLeft(), (first.pixelFormat >> 8) % divisor == 0) << "changed by a later build";
    }
}

std::size_t bytesOfATable() {
    return sizeof(FormatInfo) * FormatInfos().size();
}

// Builds the tables with the bits of `number` for answers while nothing larger than a table can be allocated.
// Whether that went well; `kept` becomes what was not given back.
bool buildsInLittleMemory(std::uint32_t number, std::size_t& kept) {
    test::startCounting();
    bool built = true;
    {
        test::FakeHost host;
        host.asked.reserve(FormatInfos().size());
        host.answer = [&](test::FakeHost::Question, std::uint32_t) {
            const bool isTopLeft = (number & 1U) != 0;
            number >>= 1;
            return isTopLeft;
        };
        test::failAllocationsFrom(bytesOfATable() + 1);
        try {
            buildFormatTables(host.basicSuite());
        } catch (const std::bad_alloc&) {
            built = false;
        }
        test::failAllocationsFrom(0);
    }
    kept = test::counted().current;
    return built;
}

// The list of tables becomes longer than a table, so that in the end it cannot grow.
TEST(FormatTablesEnd, ATableThatIsNotKeptIsGivenBack) {
    if (!test::canCountAllocations()) {
        GTEST_SKIP() << "the sanitizer has the operators";
    }
    std::uint32_t failed = 0;
    for (std::uint32_t number = 0x1000; number < 0x1100; ++number) {
        std::size_t kept = 0;
        if (!buildsInLittleMemory(number, kept)) {
            ++failed;
            EXPECT_LT(kept, bytesOfATable()) << number;
        }
    }
    EXPECT_GT(failed, 0U);
}

}  // namespace
}  // namespace orvantis
