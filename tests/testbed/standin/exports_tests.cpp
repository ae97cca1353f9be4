// The built library through its exported functions, as a program that imports them sees it.

#include <gtest/gtest.h>

#include "tests/testbed/standin/reference_decoder.h"
#include "tests/testbed/standin/standin_test_support.h"
#include "video/orvantis_common64.h"

namespace orvantis::standin::test {
namespace {

TEST(Exports, DecodeAFrame) {
    const TestType& type = testType("O8RG");
    const auto format = formatData("O8RG", 5, 3);
    const auto payload = randomPayload(type, 5, 3, 1);
    std::uint32_t handle = 0;
    ASSERT_EQ(orvantis_library_init(), 0);
    ASSERT_EQ(orvantis_open(&handle), 0);
    EXPECT_NE(handle, 0U);

    OrvantisFrameFormat coded = request(0, 0, 0, 0);
    EXPECT_EQ(orvantis_decompress_query(handle, format.data(), format.size(), nullptr, &coded), 0);
    EXPECT_EQ(coded.type, 101U);

    const OrvantisFrameFormat output = request(2, 1);
    OrvantisFrameFormat produced{};
    EXPECT_EQ(orvantis_decompress_begin(handle, format.data(), format.size(), &output, &produced), 0);
    EXPECT_EQ(produced.width, 5U);
    const OutputRows rows(20, 3, 24);
    EXPECT_EQ(orvantis_decompress(handle, payload.data(), payload.size(), &rows.buffer()), 0);
    for (std::uint32_t row = 0; row < 3; ++row) {
        EXPECT_EQ(
            firstDifference(referenceRow(type, payload, 5, 3, 2 - row, {2, false, true}), rows.row(row), 20),
            "");
    }
    EXPECT_EQ(rows.damagedBytes(), 0U);
    EXPECT_EQ(orvantis_decompress_end(handle), 0);

    std::uint32_t value = 32;
    EXPECT_EQ(orvantis_get_param(handle, 9, &value, 4), 0);
    EXPECT_EQ(value, 1U);
    EXPECT_STREQ(orvantis_get_string(1, 2), "BGRA32");
    EXPECT_EQ(orvantis_compress_query(), 1022);
    EXPECT_EQ(orvantis_close(handle), 0);
    EXPECT_EQ(orvantis_library_close(), 0);
    EXPECT_EQ(orvantis_library_close(), 1001);
}

// A DLL with its own C runtime has its own copy of the environment; a test must reach it all the same.
TEST(Exports, SeeTheEnvironmentAsItIsAtInit) {
    std::uint32_t handle = 0;
    ASSERT_EQ(orvantis_library_init(), 0);
    EXPECT_EQ(orvantis_open(&handle), 0);
    EXPECT_EQ(orvantis_close(handle), 0);
    setProcessEnvironment("ORVANTIS_STANDIN_FAIL", "open:1=4321");
    EXPECT_EQ(orvantis_open(&handle), 0);  // not before the next init
    EXPECT_EQ(orvantis_close(handle), 0);
    ASSERT_EQ(orvantis_library_init(), 0);
    EXPECT_EQ(orvantis_open(&handle), 4321);
    EXPECT_EQ(orvantis_open(&handle), 0);
    EXPECT_EQ(orvantis_close(handle), 0);
    setProcessEnvironment("ORVANTIS_STANDIN_FAIL", "");
    ASSERT_EQ(orvantis_library_init(), 0);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(orvantis_library_close(), 0);
    }
}

TEST(Exports, WriteTheirTraceToAFileWhoseNameIsNotAscii) {
    const TemporaryFile file;
    setProcessEnvironment("ORVANTIS_STANDIN_LOG", file.utf8Path());
    ASSERT_EQ(orvantis_library_init(), 0);
    EXPECT_EQ(orvantis_library_close(), 0);
    setProcessEnvironment("ORVANTIS_STANDIN_LOG", "");
    ASSERT_EQ(orvantis_library_init(), 0);
    EXPECT_EQ(orvantis_library_close(), 0);
    EXPECT_EQ(file.lines(),
              (std::vector<std::string>{"#1 T1 library_init() = 0", "#2 T1 library_close() = 0"}));
}

}  // namespace
}  // namespace orvantis::standin::test
