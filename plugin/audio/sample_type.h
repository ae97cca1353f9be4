// The host's code for the kind of samples that a stream holds, and its name for the log and the Properties
// window.
#pragma once

#include <cstdint>

namespace orvantis {

/// The host's sample-type code. `formatCode` is kWaveFormatPcm or kWaveFormatIeeeFloat; every pair that the
/// importer cannot deliver, float of other than 32 bits included, gives kPrAudioSampleType_Other.
std::uint32_t audioSampleTypeFromFormat(std::uint32_t formatCode, std::uint32_t bitsPerSample) noexcept;

/// "16 bit" and so on; "Unknown sample type" for a code that audioSampleTypeFromFormat does not use for
/// samples. Static.
const char* audioSampleTypeName(std::uint32_t sampleType) noexcept;

}  // namespace orvantis
