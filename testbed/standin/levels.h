// How sample values of one depth become sample values of another, as tables that are built once a
// decompression.
//
// Called by: the conversion plan. Pure; any thread; the tables are allocated, so never once a frame.

#pragma once

#include <cstdint>
#include <vector>

namespace orvantis::standin {

// One entry for each value of `bits` bits.
using LevelTable = std::vector<std::uint16_t>;

// Full-range samples (RGB and alpha) to full range of `outBits` bits. Deeper: the bits are repeated (8 to 10
// bits: v << 2 | v >> 6), so black and white stay exact. Shallower: round(v x outMax / max). Never more than
// twice as deep.
LevelTable fullRangeLevels(unsigned bits, unsigned outBits);

// Full-range samples to 0..32768: round(v x 32768 / max).
LevelTable levels0To32768(unsigned bits);

// Limited-range samples keep their level: 8 to 10 bits is v x 4; 10 to 8 bits is (v + 2) / 4, at most 255.
LevelTable limitedRangeLevels(unsigned bits, unsigned outBits);

}  // namespace orvantis::standin
