// The tables at the end of the process: whatever still decodes then has a row in its hand.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

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

}  // namespace
}  // namespace orvantis
