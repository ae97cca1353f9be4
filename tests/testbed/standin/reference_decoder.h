// What a decoded row must hold, worked out the slow way: bit field by bit field, in floating point.
//
// An independent account of the layouts and level rules in standin/README.md; it shares no code with the
// stand-in.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {

// One number in a row of pixels.
struct Field {
    std::size_t bitOffset;  // from the row's first bit; bytes and words count their lowest bit first
    unsigned bitCount;
    double exact;  // before rounding
};

struct ReferenceRequest {
    std::uint32_t layout;
    bool range0To32768;
    bool rec709;  // of the coded video
};

// Bytes that a row of the layout takes.
std::size_t referenceRowBytes(std::uint32_t layout, std::uint32_t width);

// Every bit of the output row of picture row `y`, in fields that cover it without a gap.
std::vector<Field> referenceRow(const TestType& type, const std::vector<std::uint8_t>& payload,
                                std::uint32_t width, std::uint32_t height, std::uint32_t y,
                                const ReferenceRequest& request);

// The first field in which a row differs by more than rounding, as text; empty when there is none.
std::string firstDifference(const std::vector<Field>& expected, const std::uint8_t* row,
                            std::size_t rowBytes);

}  // namespace orvantis::standin::test
