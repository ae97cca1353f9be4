// Interleaved 32-bit float samples to one buffer per channel. Called by the audio import for float streams;
// pure.
#pragma once

#include <cstddef>
#include <cstdint>

namespace orvantis {

/// Copies `frames` sample frames of `channelCount` floats each, at most kMaxAudioChannels, from `source` (no
/// alignment needed) to the channel buffers: element f of channels[c] becomes source float f * channelCount +
/// c. Every bit stays, those of NaNs too. A null channel buffer is left out. The buffers hold `frames` floats
/// and do not overlap the source or each other.
void deinterleaveFloat(const std::byte* source, float* const* channels, std::uint32_t channelCount,
                       std::size_t frames) noexcept;

}  // namespace orvantis
