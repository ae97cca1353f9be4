// Four-character codes of RIFF files: kept and compared as the 32-bit little-endian words that the file
// holds.
#pragma once

#include <cstdint>

namespace orvantis {

/// The word of a four-letter literal: riffCode("LIST") has 'L' in its lowest byte.
constexpr std::uint32_t riffCode(const char (&text)[5]) noexcept {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 8 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 16 |
           static_cast<std::uint32_t>(static_cast<unsigned char>(text[3])) << 24;
}

static_assert(riffCode("RIFF") == 0x46464952);

}  // namespace orvantis
