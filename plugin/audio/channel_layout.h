// Which loudspeaker each channel of a stream feeds, in the host's channel labels. Pure functions.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "audio/wave_format.h"

namespace orvantis {

/// As many channels as the host's record has labels for, and as a stream may have.
inline constexpr std::uint32_t kMaxAudioChannels = 32;

/// How many channels of a stream can have a label.
std::uint32_t labelledChannels(const WaveFormatExtensible& format) noexcept;

/// The host's name of a kPrAudioChannelLabel_ value, "Unknown_Channel_Label" for any other. For the log.
/// Static.
const char* channelLabelName(std::uint32_t label) noexcept;

/// The label of one bit of a WAVE speaker mask; Discrete for a bit that names no loudspeaker.
std::uint32_t channelLabelFromSpeakerBit(std::uint32_t speakerBit) noexcept;

/// The labels that are known of a stream: the first `count` entries. There may be fewer than channels, or
/// none.
struct ChannelLabels {
    std::array<std::uint32_t, kMaxAudioChannels> labels{};
    std::size_t count = 0;
};
ChannelLabels channelLabelsOf(const WaveFormatExtensible& format) noexcept;

}  // namespace orvantis
