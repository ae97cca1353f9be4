#include "audio/channel_layout.h"

#include <algorithm>

#include "host/audio_codes.h"

namespace orvantis {

namespace {

std::uint32_t speakerMask(const WaveFormatExtensible& format) noexcept {
    if (format.wFormatTag == kWaveFormatExtensible) {
        return format.dwChannelMask;
    }
    // Without a mask only stereo and 5.1 have an order that everybody keeps: that of the mask bits. All bits
    // set makes the walk take the lowest ones.
    const std::uint32_t channels = labelledChannels(format);
    return channels == 2 || channels == 6 ? 0xFFFFFFFFu : 0u;
}

}  // namespace

std::uint32_t labelledChannels(const WaveFormatExtensible& format) noexcept {
    return std::min<std::uint32_t>(format.nChannels, kMaxAudioChannels);
}

const char* channelLabelName(std::uint32_t label) noexcept {
    switch (label) {
        case host::kPrAudioChannelLabel_Discrete:
            return "kPrAudioChannelLabel_Discrete";
        case host::kPrAudioChannelLabel_FrontLeft:
            return "kPrAudioChannelLabel_FrontLeft";
        case host::kPrAudioChannelLabel_FrontRight:
            return "kPrAudioChannelLabel_FrontRight";
        case host::kPrAudioChannelLabel_FrontCenter:
            return "kPrAudioChannelLabel_FrontCenter";
        case host::kPrAudioChannelLabel_LowFrequency:
            return "kPrAudioChannelLabel_LowFrequency";
        case host::kPrAudioChannelLabel_BackLeft:
            return "kPrAudioChannelLabel_BackLeft";
        case host::kPrAudioChannelLabel_BackRight:
            return "kPrAudioChannelLabel_BackRight";
        case host::kPrAudioChannelLabel_BackCenter:
            return "kPrAudioChannelLabel_BackCenter";
        case host::kPrAudioChannelLabel_FrontLeftOfCenter:
            return "kPrAudioChannelLabel_FrontLeftOfCenter";
        case host::kPrAudioChannelLabel_FrontRightOfCenter:
            return "kPrAudioChannelLabel_FrontRightOfCenter";
        case host::kPrAudioChannelLabel_SideLeft:
            return "kPrAudioChannelLabel_SideLeft";
        case host::kPrAudioChannelLabel_SideRight:
            return "kPrAudioChannelLabel_SideRight";
        case host::kPrAudioChannelLabel_TopCenter:
            return "kPrAudioChannelLabel_TopCenter";
        case host::kPrAudioChannelLabel_TopFrontLeft:
            return "kPrAudioChannelLabel_TopFrontLeft";
        case host::kPrAudioChannelLabel_TopFrontRight:
            return "kPrAudioChannelLabel_TopFrontRight";
        case host::kPrAudioChannelLabel_TopFrontCenter:
            return "kPrAudioChannelLabel_TopFrontCenter";
        case host::kPrAudioChannelLabel_TopBackLeft:
            return "kPrAudioChannelLabel_TopBackLeft";
        case host::kPrAudioChannelLabel_TopBackRight:
            return "kPrAudioChannelLabel_TopBackRight";
        case host::kPrAudioChannelLabel_TopBackCenter:
            return "kPrAudioChannelLabel_TopBackCenter";
        case host::kPrAudioChannelLabel_FrontLeftWide:
            return "kPrAudioChannelLabel_FrontLeftWide";
        case host::kPrAudioChannelLabel_FrontRightWide:
            return "kPrAudioChannelLabel_FrontRightWide";
        case host::kPrAudioChannelLabel_LeftHeight:
            return "kPrAudioChannelLabel_LeftHeight";
        case host::kPrAudioChannelLabel_RightHeight:
            return "kPrAudioChannelLabel_RightHeight";
        case host::kPrAudioChannelLabel_RearSurroundLeft:
            return "kPrAudioChannelLabel_RearSurroundLeft";
        case host::kPrAudioChannelLabel_RearSurroundRight:
            return "kPrAudioChannelLabel_RearSurroundRight";
        case host::kPrAudioChannelLabel_LFE2:
            return "kPrAudioChannelLabel_LFE2";
        case host::kPrAudioChannelLabel_LeftTotal:
            return "kPrAudioChannelLabel_LeftTotal";
        case host::kPrAudioChannelLabel_RightTotal:
            return "kPrAudioChannelLabel_RightTotal";
        case host::kPrAudioChannelLabel_Ambisonic_W:
            return "kPrAudioChannelLabel_Ambisonic_W";
        case host::kPrAudioChannelLabel_Ambisonic_X:
            return "kPrAudioChannelLabel_Ambisonic_X";
        case host::kPrAudioChannelLabel_Ambisonic_Y:
            return "kPrAudioChannelLabel_Ambisonic_Y";
        case host::kPrAudioChannelLabel_Ambisonic_Z:
            return "kPrAudioChannelLabel_Ambisonic_Z";
        default:
            return "Unknown_Channel_Label";
    }
}

std::uint32_t channelLabelFromSpeakerBit(std::uint32_t speakerBit) noexcept {
    // By loudspeaker, not by rank: the host numbers some of them in another order than the mask.
    switch (speakerBit) {
        case 0x1:
            return host::kPrAudioChannelLabel_FrontLeft;
        case 0x2:
            return host::kPrAudioChannelLabel_FrontRight;
        case 0x4:
            return host::kPrAudioChannelLabel_FrontCenter;
        case 0x8:
            return host::kPrAudioChannelLabel_LowFrequency;
        case 0x10:
            return host::kPrAudioChannelLabel_BackLeft;
        case 0x20:
            return host::kPrAudioChannelLabel_BackRight;
        case 0x40:
            return host::kPrAudioChannelLabel_FrontLeftOfCenter;
        case 0x80:
            return host::kPrAudioChannelLabel_FrontRightOfCenter;
        case 0x100:
            return host::kPrAudioChannelLabel_BackCenter;
        case 0x200:
            return host::kPrAudioChannelLabel_SideLeft;
        case 0x400:
            return host::kPrAudioChannelLabel_SideRight;
        case 0x800:
            return host::kPrAudioChannelLabel_TopCenter;
        case 0x1000:
            return host::kPrAudioChannelLabel_TopFrontLeft;
        case 0x2000:
            return host::kPrAudioChannelLabel_TopFrontCenter;
        case 0x4000:
            return host::kPrAudioChannelLabel_TopFrontRight;
        case 0x8000:
            return host::kPrAudioChannelLabel_TopBackLeft;
        case 0x10000:
            return host::kPrAudioChannelLabel_TopBackCenter;
        case 0x20000:
            return host::kPrAudioChannelLabel_TopBackRight;
        default:
            return host::kPrAudioChannelLabel_Discrete;
    }
}

ChannelLabels channelLabelsOf(const WaveFormatExtensible& format) noexcept {
    const std::uint32_t channels = labelledChannels(format);
    const std::uint32_t mask = speakerMask(format);
    ChannelLabels result;
    for (unsigned bit = 0; bit < 32 && result.count < channels; ++bit) {
        const std::uint32_t speakerBit = 1u << bit;
        if ((mask & speakerBit) != 0) {
            result.labels[result.count++] = channelLabelFromSpeakerBit(speakerBit);
        }
    }
    return result;
}

}  // namespace orvantis
