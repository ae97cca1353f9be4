#include "standin/levels.h"

#include <algorithm>

namespace orvantis::standin {
namespace {

std::uint32_t maxOf(unsigned bits) {
    return (1U << bits) - 1;
}

template <class Level>
LevelTable makeTable(unsigned bits, Level level) {
    LevelTable table(std::size_t{1} << bits);
    for (std::uint32_t value = 0; value <= maxOf(bits); ++value) {
        table[value] = static_cast<std::uint16_t>(level(value));
    }
    return table;
}

// round(value x outMax / max), halves up
LevelTable proportional(unsigned bits, std::uint32_t outMax) {
    const std::uint32_t max = maxOf(bits);
    return makeTable(bits, [=](std::uint32_t value) { return (value * outMax + max / 2) / max; });
}

}  // namespace

LevelTable fullRangeLevels(unsigned bits, unsigned outBits) {
    if (outBits < bits) {
        return proportional(bits, maxOf(outBits));
    }
    const unsigned up = outBits - bits;
    return makeTable(bits, [=](std::uint32_t value) { return value << up | value >> (bits - up); });
}

LevelTable levels0To32768(unsigned bits) {
    return proportional(bits, 32768);
}

LevelTable limitedRangeLevels(unsigned bits, unsigned outBits) {
    if (outBits >= bits) {
        return makeTable(bits, [=](std::uint32_t value) { return value << (outBits - bits); });
    }
    const unsigned down = bits - outBits;
    return makeTable(bits, [=](std::uint32_t value) {
        return std::min((value + (1U << (down - 1))) >> down, maxOf(outBits));
    });
}

}  // namespace orvantis::standin
