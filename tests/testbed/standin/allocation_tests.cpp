// Decoding must not allocate: benchmarks and the plug-in's own allocation tests count on it.

#include <gtest/gtest.h>

#include "standin/library.h"
#include "tests/support/allocation_meter/allocation_meter.h"
#include "tests/testbed/standin/reference_decoder.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {
namespace {

TEST(StandinSteadyState, TheCounterCounts) {
    orvantis::test::startCounting();
    const std::vector<int> some(100);
    EXPECT_GE(orvantis::test::counted().calls, 1U);
}

class DecodingEveryType : public testing::TestWithParam<TestType> {};

TEST_P(DecodingEveryType, AllocatesNothingInAnyLayout) {
    OpenLibrary open;
    const TestType& type = GetParam();
    const auto format = formatData(type.tag, 33, 7);
    const auto payload = randomPayload(type, 33, 7, 5);
    int decoded = 0;
    for (const std::uint32_t layout : deliverableLayouts()) {
        const OrvantisFrameFormat output = fittingRequest(layout);
        OrvantisFrameFormat produced{};
        if (open.library.decompressBegin(open.handle, format.data(), format.size(), &output, &produced) !=
            0) {
            continue;
        }
        const std::size_t rowBytes = referenceRowBytes(layout, 33);
        const OutputRows rows(rowBytes, 7, static_cast<std::int32_t>(rowBytes));
        orvantis::test::startCounting();
        for (int frame = 0; frame < 3; ++frame) {
            decoded +=
                open.library.decompress(open.handle, payload.data(), payload.size(), &rows.buffer()) == 0;
        }
        EXPECT_EQ(orvantis::test::counted().calls, 0U) << "layout " << layout;
        EXPECT_EQ(open.library.decompressEnd(open.handle), 0);
    }
    EXPECT_GE(decoded, 7 * 3);
}

INSTANTIATE_TEST_SUITE_P(StandinSteadyState, DecodingEveryType, testing::ValuesIn(allTypes()), TagOfParam());

}  // namespace
}  // namespace orvantis::standin::test
