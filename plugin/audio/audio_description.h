// What the host's Properties window says about an audio stream. Pure.
#pragma once

#include <cstdint>
#include <string>

#include "audio/wave_format.h"

namespace orvantis {

/// Of a usable stream: "\n" between lines, four blanks ahead of each, no break at the end. `sampleType` is
/// the host's code.
std::string audioDescription(const WaveFormatExtensible& format, std::uint32_t sampleType,
                             std::uint64_t sampleFrames);

}  // namespace orvantis
