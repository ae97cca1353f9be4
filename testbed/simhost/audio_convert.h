// The converters of the host's audio suite: interleaved signed little-endian integers to one float buffer a
// channel. Full scale of the integer is 1.0: 8-bit v/128, 16-bit v/32768, 24-bit v/8388608, 32-bit
// v/2147483648. Every quotient is exact but for the rounding of 32-bit values to 24 significant bits. Pure
// functions; any thread.
#pragma once

#include <cstdint>

namespace simhost {

/// `bytesPerSample` is 1 to 4. Reads channels × frames samples, writes `frames` floats of each of the
/// `channels` buffers.
void uninterleaveAndConvert(unsigned bytesPerSample, const unsigned char* source, float** destination,
                            std::uint32_t channels, std::uint32_t frames) noexcept;

}  // namespace simhost
