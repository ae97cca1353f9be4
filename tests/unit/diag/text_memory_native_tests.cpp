// Texts that there is no memory for: whoever asked is told, and the next one is made as usual.

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "diag/diagnostic_log.h"
#include "diag/format.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/support/environment.h"
#include "tests/support/temp_folder.h"

namespace orvantis {
namespace {

class TextMemory : public testing::Test {
 protected:
    void SetUp() override {
        if (!test::canCountAllocations()) {
            GTEST_SKIP() << "the sanitizer has operator new";
        }
    }
    void TearDown() override { test::failAllocation(-1, false); }

    const std::string m_long = std::string(200, 'x');
};

TEST_F(TextMemory, AFormattedTextIsMadeOrItThrows) {
    test::failAllocation(0, false);
    EXPECT_THROW(static_cast<void>(formatString("%s", m_long.c_str())), std::bad_alloc);
    EXPECT_EQ(formatString("%s", m_long.c_str()), m_long);
}

TEST_F(TextMemory, ALineOfTheLogIsWrittenOrItThrows) {
    const test::TempFolder folder;
    const test::ScopedEnvironment profile("ORVANTIS_TEST_PROFILE", folder.path().string());
    DiagnosticLog log("memory", false);
    ASSERT_TRUE(log.hasFile());
    test::failAllocation(0, false);
    EXPECT_THROW(log.writeLine("%s", m_long.c_str()), std::bad_alloc);
    EXPECT_NO_THROW(log.writeLine("%s", m_long.c_str()));
}

}  // namespace
}  // namespace orvantis
