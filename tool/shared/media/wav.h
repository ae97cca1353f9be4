// WAV files of 32-bit float samples with a channel mask. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace simhost::tool {

/// Everything of the file before its samples: RIFF, WAVEFORMATEXTENSIBLE, fact, and the head of the data
/// chunk. Nothing when samples and header would not fit the format's 32-bit sizes.
std::optional<std::vector<std::uint8_t>> wavHeader(std::uint32_t channels, std::uint32_t sampleRate,
                                                   std::uint32_t channelMask, std::uint64_t sampleFrames);

/// The mask of the host's channel labels. 0, which means "no loudspeakers given", when a label has no speaker
/// or the channels do not stand in the order of the mask's bits, as a WAV file must have them.
std::uint32_t channelMask(std::span<const std::uint32_t> labels) noexcept;

/// The host's name of a label without its prefix, or "Unknown".
const char* channelLabelName(std::uint32_t label) noexcept;

}  // namespace simhost::tool
