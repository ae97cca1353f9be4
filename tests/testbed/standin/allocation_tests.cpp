// Decoding must not allocate: benchmarks and the plug-in's own allocation tests count on it.

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "standin/library.h"
#include "tests/testbed/standin/reference_decoder.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace {

std::atomic<long> g_allocations = 0;

void* allocate(std::size_t size) {
    ++g_allocations;
    void* memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

// The whole test program counts; the array forms and the sized forms end up here by themselves.
void* operator new(std::size_t size) {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace orvantis::standin::test {
namespace {

TEST(StandinSteadyState, TheCounterCounts) {
    const long before = g_allocations;
    const std::vector<int> some(100);
    EXPECT_GE(g_allocations, before + 1);
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
        const long before = g_allocations;
        for (int frame = 0; frame < 3; ++frame) {
            decoded +=
                open.library.decompress(open.handle, payload.data(), payload.size(), &rows.buffer()) == 0;
        }
        EXPECT_EQ(g_allocations, before) << "layout " << layout;
        EXPECT_EQ(open.library.decompressEnd(open.handle), 0);
    }
    EXPECT_GE(decoded, 7 * 3);
}

INSTANTIATE_TEST_SUITE_P(StandinSteadyState, DecodingEveryType, testing::ValuesIn(allTypes()), TagOfParam());

}  // namespace
}  // namespace orvantis::standin::test
